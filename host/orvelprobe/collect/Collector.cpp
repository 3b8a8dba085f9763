#include "collect/Collector.h"

#include <cutils/properties.h>
#include <media/stagefright/MediaErrors.h>
#include <standin/LooperControl.h>

#include <charconv>

#include "collect/FileFacts.h"
#include "collect/Session.h"
#include "collect/Warnings.h"
#include "framework/MemoryLimit.h"
#include "framework/PluginPath.h"
#include "process/OutputFile.h"

namespace orvel::probe {
namespace {

constexpr size_t kMaxNotes = 6;

// A double with the shortest text of the float: 0.9f is 0.9 in the output, not 0.8999999761581421.
double shortest(float value) {
    char text[32] = {};
    std::to_chars(text, text + sizeof(text) - 1, value);
    return strtod(text, nullptr);
}

Json toJson(const host::FormatView& format) {
    Json json = Json::object();
    const auto toValue = [](const auto& held) -> Json {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, float>) {
            return shortest(held);
        } else if constexpr (std::is_same_v<Held, host::FormatBytes>) {
            return {{"size", held.size()}, {"hex", hexText(held.data(), held.size())}};
        } else {
            return held;
        }
    };
    for (const host::FormatEntry& entry : format.entries())
        json[entry.key] = std::visit(toValue, entry.value);
    return json;
}

}  // namespace

void Session::fail(int code, const std::string& text) {
    if (mError.empty()) mError = text;
    mExit = std::max(mExit, code);
}

void Session::failUnless(android::status_t status, const std::string& what) {
    if (status != android::OK) fail(kExitFailed, what + " cannot be had: " + statusText(status));
}

std::string Session::noTrackText(size_t index) const {
    const size_t count = mCounts.size();
    return "there is no track " + std::to_string(index) +
           (count == 0   ? "; it has no tracks"
            : count == 1 ? "; its only track is 0"
                         : "; its tracks are 0 to " + std::to_string(count - 1));
}

void Session::run(const std::string& file) {
    mTree["file"] = file;
    try {
        const host::MemoryLimit limit;  // not for what the report grows to
        open(file);
    } catch (const host::SourceError& error) {
        std::string text = error.what();
        if (text.rfind(file + ": ", 0) == 0) text.erase(0, file.size() + 2);  // heads the page
        fail(kExitUsage, text);
    } catch (const std::exception& error) {
        fail(kExitUsage, error.what());
    }
    mState.step = Step::Output;
    if (!mError.empty()) mTree["error"] = mError;
    more()["exit"] = mExit;
    mSender.send(mTree, true);
    mState.step = Step::Close;
}

void Session::open(const std::string& file) {
    mState.step = Step::LoadPlugin;
    mLog.trace();
    more()["noPlugin"] = true;
    mPlugin.emplace(host::findPlugin(mOptions.pluginPath));
    more().update({{"noPlugin", false}, {"plugin", mPlugin->path()}});
    mSource.emplace(file, mOptions.source, [this](off64_t offset, ssize_t length, off64_t result) {
        mLog.addRead(offset, length, result);
    });
    more()["opened"] = true;
    if (!sniffAndCreate(false)) return;
    describe();
    if (mOutputs.count("cover")) writeCover();
    more()["exit"] = mExit;
    if (mOptions.read || !mOptions.seeks.empty()) mSender.send(mTree, false);
    if (!mOptions.seeks.empty()) seek();
    if (mOptions.seeks.empty() ? mOptions.read : !mOptions.htmlPath.empty() && reopen()) read();
    more()["notes"] = mLog.notes(kMaxNotes);
    const host::ObservedSource& source = mSource->top();
    Json warnings = warningsOf(mTree, {claimedBytes(mSource->file()), source.failures(),
                                       source.failedAt(), source.failure()});
    if (warnings.empty()) return;
    mTree["warnings"] = std::move(warnings);
    mExit = std::max<int>(mExit, kExitAttention);
}

bool Session::sniffAndCreate(bool again) {
    mState.step = Step::Sniff;
    mSniffBegin = std::chrono::steady_clock::now();
    host::SniffResult result = mPlugin->sniff(mSource->top());
    const bool taken = result.taken();
    if (!again) {
        mTree["taken"] = taken;
        explain();
    } else if (!taken) {
        fail(kExitFailed, "the plug-in declined the file when it was opened again");
    }
    return taken && create(std::move(result));
}

bool Session::create(host::SniffResult result) {
    mState.step = Step::Create;
    mTree["confidence"] = shortest(result.confidence());
    mExtractor = mPlugin->create(mSource->top(), std::move(result));
    if (!mExtractor) fail(kExitFailed, "the plug-in took the file, but made no extractor for it");
    return mExtractor.has_value();
}

// What the seeks did to the extractor, and the read would do to the seeks, is kept apart.
bool Session::reopen() {
    mPlayer.reset();
    mExtractor.reset();
    return sniffAndCreate(true);
}

void Session::explain() {
    const Json trace = mLog.endTrace();
    const bool taken = mTree["taken"];
    off64_t bytes = -1;
    mSource->file().getSize(&bytes);
    char mask[PROPERTY_VALUE_MAX];
    property_get(kMaskProperty, mask, "0");
    SniffCase sniffed{trace, taken, mask, bytes, ""};
    if (!taken) {
        const PluginLog::Pause pause;
        sniffed.foreignFormat = foreignFormat(mSource->file());
        mExit = kExitAttention;
    }
    mTree["reason"] = sniffReason(sniffed);
    mTree["fileBytes"] = sniffed.fileBytes;
    if (needsWideSniff(sniffed)) explainMask(sniffed);
    if (!mOptions.explain) return;
    mTree["explain"] = {{"verdict", (taken ? "taken: " : "declined: ") + textOf(mTree, "reason")}};
    mTree["explain"].update(trace);
}

// Should the plug-in fail over the second offer, what is sent before it stands.
void Session::explainMask(const SniffCase& narrow) {
    mTree["reason"] = maskReason(narrow.mask, nullptr);
    more()["exit"] = mExit;
    mSender.send(mTree, true);
    mState.step = Step::SniffAgain;
    const std::string mask = std::to_string(kAllContainers);
    property_set(kMaskProperty, mask.c_str());
    mLog.trace();
    const bool taken = mPlugin->sniff(mSource->top()).taken();
    const Json trace = mLog.endTrace();
    const SniffCase wide{trace, taken, mask, narrow.fileBytes, narrow.foreignFormat};
    mTree["reason"] = maskReason(narrow.mask, &wide);
}

void Session::describe() {
    mState.step = Step::Describe;
    mTree["extractor"] = mExtractor->name();
    host::Format format;
    failUnless(mExtractor->fileFormat(&format), "the file's format");
    mTree["format"] = toJson(format);
    tracks() = Json::array();
    mCounts.resize(mExtractor->countTracks());
    more()["trackCount"] = mCounts.size();
    int64_t durationUs = -1;
    for (size_t i = 0; i < mCounts.size(); i++) {
        host::Format track;
        failUnless(mExtractor->trackFormat(i, 0, &track),
                   "the format of track " + std::to_string(i));
        durationUs = std::max(durationUs, track.int64(host::kKeyDurationUs).value_or(-1));
        if (mOptions.wants(i)) tracks().push_back({{"index", i}, {"format", toJson(track)}});
    }
    if (durationUs >= 0) mTree["durationUs"] = mState.durationUs = durationUs;
    for (const size_t wanted : mOptions.tracks)
        if (wanted >= mCounts.size()) fail(kExitUsage, noTrackText(wanted));
    for (const int codec : mLog.skippedCodecs())
        mTree["skipped"].push_back(codecJson(codec));
    const Json lists = editListsThatMatter(mSource->file());
    if (!lists.empty()) mTree["editLists"] = lists;
}

void Session::writeCover() {
    const std::string cover = bytesOf(mTree["format"], "albumart");
    if (cover.empty()) return fail(kExitUsage, "there is no album art to write");
    writeAll(mOutputs.at("cover"), cover);
    more()["written"].push_back(
            {{"output", "cover"}, {"text", "album art, " + sizeText(cover.size())}});
}

int collect(const Options& options, const OutputFds& outputs, const std::string& file,
            ChildState& state, ReportSender& sender) {
    int exitCode = kExitFine;
    {
        Session session(options, outputs, state, sender);
        session.run(file);
        exitCode = session.exitCode();
    }
    // The process is about to end: no thread may still be inside the plug-in.
    standin::waitForLooperThreads();
    return exitCode;
}

}  // namespace orvel::probe
