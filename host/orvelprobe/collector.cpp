#include "collector.h"

#include <media/stagefright/MediaErrors.h>
#include <standin/looper_control.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <map>
#include <optional>
#include <vector>

#include "extract.h"
#include "framework/FileSource.h"
#include "framework/Player.h"
#include "framework/Plugin.h"
#include "log_capture.h"
#include "md5.h"
#include "plugin_path.h"
#include "second_sniff.h"
#include "sniff_reason.h"
#include "sniff_trace.h"
#include "source.h"
#include "text.h"
#include "verifier.h"
#include "verify_output.h"

namespace orvel::probe {
namespace {

constexpr size_t kMaxNotes = 6;
constexpr uint64_t kSamplesAfterSeek = 1;  // unless --limit says otherwise

std::string tracksText(size_t count) {
    if (count == 0) return "it has no tracks";
    return count == 1 ? "its only track is 0" : "its tracks are 0 to " + std::to_string(count - 1);
}

bool isVideo(const FormatReport& format) {
    return strncasecmp(format.text(host::kKeyMime).c_str(), "video/", 6) == 0;
}

}  // namespace

// Everything that is open for the file, in an order in which the members can be destroyed.
class Collector::Session {
  public:
    Session(const Options& options, ChildState& state, Report& report)
        : mOptions(options), mState(state), mReport(report) {}

    void run(const std::function<void(const Report&)>& beforeReading);

  private:
    bool sniffAndCreate();
    bool create(host::SniffResult result);
    bool reopen();
    void explain();
    void describe();
    void writeCover();
    void read();
    void seek();
    void seekTrack(const SeekRequest& request, size_t position, SeekTrackReport* report);
    void openWriters();
    void closeWriters();
    void noteReadEnd(const TrackReport& track, bool started);
    void count(size_t track, const host::Buffer& buffer, int64_t timeUs);
    void plot(TrackReport& track, const host::Buffer& buffer, int64_t timeUs);
    Sample toSample(const host::Buffer& buffer);
    TrackReport& trackReport(size_t index);
    std::vector<size_t> selected() const;

    const Options& mOptions;
    ChildState& mState;
    Report& mReport;

    LogCapture mLog;
    SniffTrace mTrace;
    Md5Hasher mMd5;
    std::optional<host::Plugin> mPlugin;
    std::optional<Source> mSource;
    std::optional<host::Extractor> mExtractor;
    std::optional<host::Player> mPlayer;
    int64_t mBytesRead = 0;  // of samples, in the read
    std::map<size_t, std::unique_ptr<SampleWriter>> mWriters;
    std::optional<Verifier> mVerifier;
};

Collector::Collector(const Options& options, ChildState& state)
    : mOptions(options), mState(state) {}

Collector::~Collector() {
    mSession.reset();
    // The process is about to end: no thread may still be inside the plug-in.
    standin::waitForLooperThreads();
}

const Report& Collector::run(const std::string& file,
                             const std::function<void(const Report&)>& beforeReading) {
    mReport.file = file;
    mReport.listSamples = mOptions.samples;
    try {
        mSession = std::make_unique<Session>(mOptions, mState, mReport);
        mSession->run(beforeReading);
    } catch (const host::SourceError& error) {
        std::string text = error.what();
        if (text.rfind(file + ": ", 0) == 0) text.erase(0, file.size() + 2);  // it heads the page
        mReport.fail(kExitUsage, text);
    } catch (const std::exception& error) {
        mReport.fail(kExitUsage, error.what());
    }
    return mReport;
}

void Collector::Session::run(const std::function<void(const Report&)>& beforeReading) {
    mState.step = Step::LoadPlugin;
    mLog.setTrace(&mTrace);
    try {
        mPlugin.emplace(findPlugin(mOptions.pluginPath));
    } catch (const std::exception&) {
        mState.noPlugin = true;
        throw;
    }
    mSource.emplace(mReport.file, mOptions.source);
    mReport.opened = true;
    if (sniffAndCreate()) {
        describe();
        if (!mOptions.coverPath.empty()) writeCover();
        if (mOptions.read || !mOptions.seeks.empty()) beforeReading(mReport);
        if (!mOptions.seeks.empty()) seek();
        if (mOptions.seeks.empty() ? mOptions.read : mOptions.plots() && reopen()) read();
        mReport.notes = mLog.warnings(kMaxNotes);
    }
}

bool Collector::Session::sniffAndCreate() {
    mState.step = Step::Sniff;
    // Sniffed and opened over the same source: what the trace notes later is dropped.
    host::SniffResult result = mPlugin->sniff(mSource->traced(mTrace));
    mLog.setTrace(nullptr);
    mReport.taken = result.taken();
    explain();
    if (!result.taken()) {
        mReport.exitCode = kExitDeclined;
        return false;
    }
    mReport.confidence = result.confidence();
    return create(std::move(result));
}

bool Collector::Session::create(host::SniffResult result) {
    mState.step = Step::Create;
    mSource->coverage().reset();
    mExtractor = mPlugin->create(mSource->top(), std::move(result));
    if (!mExtractor) {
        mReport.fail(kExitFailed, "the plug-in took the file, but made no extractor for it");
        return false;
    }
    return true;
}

// What the seeks did to the extractor, and the read would do to the seeks, is kept apart.
bool Collector::Session::reopen() {
    mPlayer.reset();
    mExtractor.reset();
    mState.step = Step::Sniff;
    host::SniffResult result = mPlugin->sniff(mSource->top());
    if (!result.taken()) {
        mReport.fail(kExitFailed, "the plug-in declined the file when it was opened again");
        return false;
    }
    return create(std::move(result));
}

void Collector::Session::explain() {
    ExplainReport trace = mTrace.take();
    const SniffCase sniffed{trace, mReport.taken, mOptions.containerMask(), mSource->fileBytes()};
    std::optional<WideSniff> wide;
    if (needsWideSniff(sniffed)) {
        mState.step = Step::SniffAgain;
        wide = sniffWithEveryContainer(*mPlugin, mSource->top(), sniffed.fileBytes, mLog);
    }
    mReport.reason = sniffReason(sniffed, wide);
    if (mReport.reason.empty()) mReport.reason = "the plug-in left no reason";
    if (mOptions.explain) mReport.explain = std::move(trace);
}

void Collector::Session::describe() {
    mState.step = Step::Describe;
    mReport.extractor = mExtractor->name();
    host::Format format;
    const android::status_t status = mExtractor->fileFormat(&format);
    if (status != android::OK) {
        mReport.fail(kExitFailed, "the file's format cannot be had: " + statusText(status));
    }
    mReport.format.entries = format.entries();
    const size_t tracks = mExtractor->countTracks();
    for (size_t i = 0; i < tracks; i++) {
        if (!mOptions.wants(i)) continue;
        host::Format trackFormat;
        const android::status_t trackStatus = mExtractor->trackFormat(i, 0, &trackFormat);
        if (trackStatus != android::OK) {
            mReport.fail(kExitFailed, "the format of track " + std::to_string(i) +
                                              " cannot be had: " + statusText(trackStatus));
        }
        TrackReport& track = mReport.tracks.emplace_back();
        track.index = i;
        track.format.entries = trackFormat.entries();
        const int64_t* durationUs = track.format.find<int64_t>(host::kKeyDurationUs);
        if (durationUs) mState.durationUs = std::max<int64_t>(mState.durationUs, *durationUs);
    }
    for (const size_t wanted : mOptions.tracks) {
        if (wanted < tracks) continue;
        mReport.fail(kExitUsage,
                     "there is no track " + std::to_string(wanted) + "; " + tracksText(tracks));
    }
}

void Collector::Session::writeCover() {
    const auto* cover = mReport.format.find<host::FormatBytes>("albumart");
    if (!cover) {
        mReport.fail(kExitUsage, "there is no album art to write to " + mOptions.coverPath);
        return;
    }
    writeFile(mOptions.coverPath, cover->data(), cover->size());
    mReport.written.push_back(mOptions.coverPath + ": album art, " + sizeText(cover->size()));
}

std::vector<size_t> Collector::Session::selected() const {
    std::vector<size_t> indices;
    for (const TrackReport& track : mReport.tracks)
        indices.push_back(track.index);
    return indices;
}

TrackReport& Collector::Session::trackReport(size_t index) {
    return *std::find_if(mReport.tracks.begin(), mReport.tracks.end(),
                         [index](const TrackReport& track) { return track.index == index; });
}

Sample Collector::Session::toSample(const host::Buffer& buffer) {
    Sample sample;
    sample.timeUs = buffer.timeUs().value_or(0);
    sample.size = buffer.size();
    sample.sync = buffer.isSync().value_or(false);
    if (mOptions.json) sample.md5 = mMd5.of(buffer.data(), buffer.size());
    sample.targetTimeUs = buffer.targetTimeUs();
    return sample;
}

void Collector::Session::count(size_t track, const host::Buffer& buffer, int64_t timeUs) {
    mState.track = track;
    mState.timeUs = timeUs;
    mState.bytes.fetch_add(buffer.size(), std::memory_order_relaxed);
    mState.samples.fetch_add(1, std::memory_order_relaxed);
}

void Collector::Session::plot(TrackReport& track, const host::Buffer& buffer, int64_t timeUs) {
    constexpr size_t kMaxBytes = std::numeric_limits<uint32_t>::max();
    track.plot.push_back({timeUs, static_cast<uint32_t>(std::min(buffer.size(), kMaxBytes)),
                          buffer.isSync().value_or(false)});
    mBytesRead += static_cast<int64_t>(buffer.size());
    mReport.sourceAhead.push_back(static_cast<int64_t>(mSource->coverage().bytes()) - mBytesRead);
}

void Collector::Session::openWriters() {
    for (const auto& [index, path] : mOptions.extract) {
        const auto track =
                std::find_if(mReport.tracks.begin(), mReport.tracks.end(),
                             [i = index](const auto& other) { return other.index == i; });
        if (track == mReport.tracks.end()) {
            mReport.fail(kExitUsage, "there is no track " + std::to_string(index) +
                                             " to extract; " +
                                             tracksText(mExtractor->countTracks()));
            continue;
        }
        try {
            mWriters[index] = makeSampleWriter(track->format, path);
        } catch (const ExtractError& error) {
            mReport.fail(kExitUsage, "track " + std::to_string(index) +
                                             " cannot be extracted: " + error.what());
        }
    }
}

void Collector::Session::closeWriters() {
    for (auto& [index, writer] : mWriters) {
        try {
            if (!writer) continue;
            writer->finish();
            mReport.written.push_back(mOptions.extract.at(index) + ": track " +
                                      std::to_string(index) + ", " + writer->form());
        } catch (const ExtractError& error) {
            mReport.fail(kExitUsage, error.what());
        }
    }
    mWriters.clear();
}

void Collector::Session::read() {
    openWriters();
    if (mOptions.verify) {
        mVerifier.emplace(mReport.file, mReport.tracks, mExtractor->countTracks());
    }
    mState.step = Step::StartTracks;
    mPlayer.emplace(*mExtractor, selected());
    mState.step = Step::Read;
    for (TrackReport& track : mReport.tracks)
        track.read.emplace();

    host::Player::Options how;
    // With seeks, it is about the samples after each of them.
    if (mOptions.limit > 0 && mOptions.seeks.empty()) how.limitPerTrack = mOptions.limit;
    const auto onSample = [this](size_t index, const host::Buffer& buffer) {
        TrackReport& track = trackReport(index);
        ReadReport& read = *track.read;
        const int64_t timeUs = buffer.timeUs().value_or(0);
        read.firstUs = read.count == 0 ? timeUs : std::min(read.firstUs, timeUs);
        read.lastUs = read.count == 0 ? timeUs : std::max(read.lastUs, timeUs);
        read.count++;
        read.bytes += buffer.size();
        if (buffer.isSync().value_or(false)) read.syncCount++;
        if (mOptions.samples) track.samples.push_back(toSample(buffer));
        if (mOptions.plots()) plot(track, buffer, timeUs);
        count(index, buffer, timeUs);
        if (mVerifier)
            mVerifier->sample(static_cast<size_t>(&track - mReport.tracks.data()), buffer);
        const auto writer = mWriters.find(index);
        if (writer != mWriters.end() && writer->second) {
            try {
                writer->second->sample(buffer.data(), buffer.size(), timeUs);
            } catch (const ExtractError& error) {
                mReport.fail(kExitUsage, "track " + std::to_string(index) +
                                                 " cannot be extracted: " + error.what());
                writer->second.reset();
            }
        }
        return true;
    };
    const auto begin = std::chrono::steady_clock::now();
    const auto results = mPlayer->play(how, onSample);
    mReport.readSeconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    closeWriters();
    for (size_t position = 0; position < results.size(); position++) {
        TrackReport& track = trackReport(results[position].index);
        track.read->end = results[position].status;
        noteReadEnd(track, mPlayer->track(position) != nullptr);
        if (mVerifier) mVerifier->end(position, track.read->end);
    }
    if (!mVerifier) return;
    mReport.verify = mVerifier->take();
    const size_t differences = mReport.verify->differences.size();
    if (differences == 0) return;
    mReport.fail(kExitFailed,
                 countText(differences, "difference") + " to " + mReport.verify->library +
                         ", the first: " + differenceText(mReport.verify->differences[0]));
}

void Collector::Session::noteReadEnd(const TrackReport& track, bool started) {
    const ReadReport& read = *track.read;
    if (read.end == android::OK || read.end == android::ERROR_END_OF_STREAM) return;
    std::string text = "track " + std::to_string(track.index);
    if (!started) {
        text += " could not be started: " + statusText(read.end);
    } else {
        text += ": reading ended with " + statusText(read.end) + " after " +
                countText(read.count, "sample");
        if (read.count > 0) text += ", the latest at " + secondsText(read.lastUs);
    }
    mReport.fail(kExitFailed, text + "; try --log debug for what the plug-in says");
}

void Collector::Session::seek() {
    mState.step = Step::StartTracks;
    mPlayer.emplace(*mExtractor, selected());
    mState.step = Step::Seek;
    for (const SeekRequest& request : mOptions.seeks) {
        SeekReport& seek = mReport.seeks.emplace_back();
        seek.timeUs = request.timeUs;
        seek.mode = request.mode;
        for (const TrackReport& track : mReport.tracks)
            seek.tracks.push_back({track.index, 0, {}});
        for (const bool videoNow : {true, false}) {
            for (size_t i = 0; i < seek.tracks.size(); i++) {
                if (isVideo(mReport.tracks[i].format) == videoNow) {
                    seekTrack(request, i, &seek.tracks[i]);
                }
            }
        }
    }
}

// A track's samples are read before the next track is sought: that seek may move all of them.
void Collector::Session::seekTrack(const SeekRequest& request, size_t position,
                                   SeekTrackReport* report) {
    host::Track* track = mPlayer->track(position);
    host::ReadOptions how;
    how.seek = host::ReadOptions::Seek{request.timeUs, static_cast<host::SeekMode>(request.mode)};
    const uint64_t limit = mOptions.limit > 0 ? mOptions.limit : kSamplesAfterSeek;
    while (track && report->samples.size() < limit) {
        const host::ReadResult read = track->read(how);
        how.seek.reset();
        report->status = read.status;
        if (read.status != android::OK) {
            // Not news after the first sample, other than an error.
            const bool ended = read.status == android::ERROR_END_OF_STREAM;
            if (ended && !report->samples.empty()) report->status = android::OK;
            break;
        }
        if (!read.buffer) {
            report->status = android::UNKNOWN_ERROR;
            break;
        }
        report->samples.push_back(toSample(read.buffer));
        count(report->index, read.buffer, report->samples.back().timeUs);
    }
    if (!track) report->status = android::NO_INIT;
    if (report->status == android::OK || report->status == android::ERROR_END_OF_STREAM) return;
    mReport.fail(kExitFailed,
                 "track " + std::to_string(report->index) +
                         (track ? ": the seek to " + secondsText(request.timeUs) + " (" +
                                          seekModeName(request.mode) + ") ended with "
                                : std::string(" could not be started: ")) +
                         statusText(report->status) +
                         "; try --log debug for what the plug-in says");
}

}  // namespace orvel::probe
