#include "collect/PluginLog.h"

#include <android/log.h>
#include <standin/LogControl.h>

#include "Words.h"

namespace orvel::probe {
namespace {

constexpr size_t kMaxSteps = 20000;  // a source that gives a byte a read makes millions
constexpr size_t kMaxDifferentNotes = 64;

// Logged as warnings or errors on every ordinary run, or told otherwise: the end of the file or of
// its subtitles, a cover that is no video track, the picture's MIME type, which no key table holds,
// and the codecs of skipped streams.
constexpr const char* kRoutine[] = {"reach end of file",
                                    "subtitle index out of range!",
                                    "in readDataSource, end of stream",
                                    "This is a attached picture",
                                    "key is 0x616c414d",
                                    "Estimating duration from bitrate",
                                    "Unknown codec_id:"};

thread_local bool tPaused = false;

bool isRoutine(const char* text) {
    return std::any_of(std::begin(kRoutine), std::end(kRoutine),
                       [text](const char* part) { return strstr(text, part) != nullptr; });
}

// Of an android_LogPriority, from ANDROID_LOG_UNKNOWN on.
std::string letterOf(int priority) {
    return std::string(1, "??VDIWEF"[std::clamp<int>(priority, 0, ANDROID_LOG_FATAL)]);
}

}  // namespace

PluginLog::PluginLog() {
    standin::setLogHook(onLine, this, ANDROID_LOG_WARN);
}

PluginLog::~PluginLog() {
    standin::setLogHook(nullptr, nullptr);
}

void PluginLog::trace() {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mTracing = true;
        mSteps = Json::array();
        mOmitted = 0;
    }
    standin::setLogHook(onLine, this, ANDROID_LOG_UNKNOWN);
}

Json PluginLog::endTrace() {
    // FFmpeg has a line for each entry of an index, which takes longer to write than to make.
    standin::setLogHook(onLine, this, ANDROID_LOG_WARN);
    const std::lock_guard<std::mutex> lock(mMutex);
    mTracing = false;
    return {{"steps", std::move(mSteps)}, {"omitted", mOmitted}};
}

void PluginLog::add(Json step, bool always) {
    if (!mTracing) return;
    if (always || mSteps.size() < kMaxSteps) {
        mSteps.push_back(std::move(step));
    } else {
        mOmitted++;
    }
}

void PluginLog::addRead(off64_t offset, ssize_t length, off64_t result) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!mTracing) return;
    if (length < 0) return add({{"size", result}}, false);
    add({{"read", {{"offset", offset}, {"length", length}, {"result", result}}}}, false);
}

void PluginLog::onLine(void* cookie, int priority, const char* tag, const char* text) {
    if (tPaused) return;
    auto* self = static_cast<PluginLog*>(cookie);
    const std::lock_guard<std::mutex> lock(self->mMutex);
    if (self->mTracing) {
        // The decision itself is logged in a few dozen lines at most, under these tags.
        const bool always = strcmp(tag, "FFmpegObject") == 0 || strcmp(tag, "Parser2Creater") == 0;
        self->add({{"log", {{"priority", letterOf(priority)}, {"tag", tag}, {"text", text}}}},
                  always);
    }
    int codec = 0;
    if (sscanf(text, "Unknown codec_id:%d", &codec) == 1) self->mSkipped.push_back(codec);
    if (priority >= ANDROID_LOG_WARN && !isRoutine(text))
        self->note(std::string(tag) + ": " + text);
}

void PluginLog::note(const std::string& line) {
    if (!mNotes.contains(line) && mNotes.size() >= kMaxDifferentNotes) return;
    mNotes[line] = intOf(mNotes, line.c_str()) + 1;
}

PluginLog::Pause::Pause() {
    tPaused = true;
}

PluginLog::Pause::~Pause() {
    tPaused = false;
}

Json PluginLog::notes(size_t maxLines) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    Json lines = Json::array();
    int64_t more = 0;
    for (const auto& [line, count] : mNotes.items()) {
        if (lines.size() == maxLines) {
            more += count.get<int64_t>();
        } else {
            lines.push_back(line + (count == 1 ? "" : " (" + countText(count, "time") + ")"));
        }
    }
    if (more > 0) lines.push_back("and " + countText(more, "line") + " more");
    return lines;
}

std::vector<int> PluginLog::skippedCodecs() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mSkipped;
}

}  // namespace orvel::probe
