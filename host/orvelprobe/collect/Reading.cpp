#include <media/stagefright/MediaErrors.h>
#include <strings.h>

#include "collect/Session.h"

extern "C" {
#include <libavutil/md5.h>
}

namespace orvel::probe {
namespace {

using Clock = std::chrono::steady_clock;

constexpr uint64_t kSamplesAfterSeek = 1;  // unless --limit says otherwise
constexpr char kTryLog[] = "; try --log debug for what the plug-in says";

bool endedWell(android::status_t status) {
    return status == android::OK || status == android::ERROR_END_OF_STREAM;
}

bool isVideo(const Json& track) {
    return strncasecmp(textOf(track["format"], host::kKeyMime).c_str(), "video/", 6) == 0;
}

}  // namespace

void TrackCounts::add(size_t size, int64_t timeUs, bool sync) {
    firstUs = std::min(firstUs, timeUs);
    lastUs = std::max(lastUs, timeUs);
    if (sync) {
        if (keys++ > 0) keyIntervalUs = std::max(keyIntervalUs, timeUs - lastKeyUs);
        lastKeyUs = timeUs;
    }
    count++;
    bytes += size;
    largest = std::max<uint64_t>(largest, size);
    empty += size == 0;
}

void TrackCounts::writeTo(Json* track) const {
    track->update({{"count", count}, {"bytes", bytes}, {"keys", keys}});
    if (count == 0) return;
    track->update({{"firstUs", firstUs}, {"lastUs", lastUs}, {"largest", largest}});
    if (keys > 1) (*track)["keyIntervalUs"] = keyIntervalUs;
    if (empty > 0) (*track)["empty"] = empty;
}

void Session::startTracks() {
    mState.step = Step::StartTracks;
    std::vector<size_t> indices;
    for (const Json& track : tracks())
        indices.push_back(track["index"]);
    mPlayer.emplace(*mExtractor, indices);
}

Sample Session::toSample(size_t track, const host::Buffer& buffer) const {
    Sample sample;
    sample.timeUs = buffer.timeUs().value_or(0);
    sample.targetTimeUs = buffer.targetTimeUs().value_or(INT64_MIN);
    sample.size = static_cast<uint32_t>(buffer.size());
    sample.track = static_cast<uint32_t>(track);
    sample.sync = buffer.isSync().value_or(false);
    if (mOptions.json)
        av_md5_sum(sample.md5.data(), buffer.data(), static_cast<int>(buffer.size()));
    return sample;
}

void Session::count(size_t track, const host::Buffer& buffer, int64_t timeUs) {
    mState.track = track;
    mState.timeUs = timeUs;
    mState.bytes.fetch_add(buffer.size(), std::memory_order_relaxed);
    mState.samples.fetch_add(1, std::memory_order_relaxed);
    if (mHasFirstSample) return;
    mHasFirstSample = true;
    const std::chrono::duration<double> passed = Clock::now() - mSniffBegin;
    more()["reading"] = {{"firstSampleSeconds", passed.count()},
                         {"firstSampleBytes", mSource->top().bytes()}};
}

// What a writer does; where it fails, that is said and the writer is done.
void Session::withWriter(size_t index, const std::function<void()>& action) {
    try {
        return action();
    } catch (const ExtractError& error) {
        fail(kExitUsage,
             "track " + std::to_string(index) + " cannot be extracted: " + error.what());
    }
    mWriters.erase(index);
}

void Session::openWriters() {
    for (const auto& [index, path] : mOptions.extract) {
        const auto track =
                std::find_if(tracks().begin(), tracks().end(),
                             [i = index](const Json& other) { return other["index"] == i; });
        withWriter(index, [&, i = index] {
            if (track == tracks().end()) throw ExtractError(noTrackText(i));
            mWriters[i] = makeSampleWriter((*track)["format"], mOutputs.at(std::to_string(i)));
        });
    }
}

void Session::closeWriter(size_t index, android::status_t end) {
    if (!mWriters.count(index)) return;
    const std::string name = "track " + std::to_string(index);
    withWriter(index, [&] {
        mWriters[index]->finish();
        Json written{{"text",
                      "nothing of " + name +
                              ", whose read came to no good end; the PATH \"-\" takes what comes"}};
        if (endedWell(end))
            written = {{"output", std::to_string(index)},
                       {"text", name + ", " + mWriters[index]->form()}};
        more()["written"].push_back(std::move(written));
    });
}

void Session::onSample(size_t index, const host::Buffer& buffer) {
    const int64_t timeUs = buffer.timeUs().value_or(0);
    const bool sync = buffer.isSync().value_or(false);
    count(index, buffer, timeUs);
    mCounts[index].add(buffer.size(), timeUs, sync);
    if (mOptions.sendsSamples()) mSender.add(toSample(index, buffer));
    if (mVerifier) mVerifier->sample(index, buffer);
    const auto writer = mWriters.find(index);
    if (writer == mWriters.end()) return;
    withWriter(index, [&] { writer->second->sample(buffer.data(), buffer.size(), timeUs, sync); });
}

void Session::read() {
    openWriters();
    if (mOptions.verify) mVerifier.emplace(textOf(mTree, "file"), tracks(), mCounts.size());
    startTracks();
    mState.step = Step::Read;
    host::Player::Options how;
    // With seeks, it is about the samples after each of them.
    if (mOptions.limit > 0 && mOptions.seeks.empty()) how.limitPerTrack = mOptions.limit;
    const auto begin = Clock::now();
    const auto results = mPlayer->play(how, [this](size_t index, const host::Buffer& buffer) {
        onSample(index, buffer);
        return true;
    });
    more()["reading"]["seconds"] = std::chrono::duration<double>(Clock::now() - begin).count();
    for (size_t position = 0; position < results.size(); position++) {
        const auto& [index, status] = std::pair(results[position].index, results[position].status);
        Json& track = tracks()[position];
        mCounts[index].writeTo(&track);
        track["end"] = status;
        noteReadEnd(track, mPlayer->track(position) != nullptr);
        closeWriter(index, status);
        if (mVerifier) mVerifier->end(index, status);
    }
    if (!mVerifier) return;
    mTree["verify"] = mVerifier->take();
    if (mVerifier->count() == 0) return;
    fail(kExitFailed, countText(mVerifier->count(), "difference") + " to " + Reference::library() +
                              ", the first: " + differenceText(mTree["verify"]["differences"][0]));
}

void Session::noteReadEnd(const Json& track, bool started) {
    const auto end = static_cast<int32_t>(intOf(track, "end"));
    if (endedWell(end)) return;
    const int64_t count = intOf(track, "count");
    fail(kExitFailed,
         "track " + track["index"].dump() +
                 (started ? ": reading ended with " + statusText(end) + " after " +
                                    countText(count, "sample")
                          : " could not be started: " + statusText(end)) +
                 (count > 0 ? ", the latest at " + secondsText(intOf(track, "lastUs")) : "") +
                 kTryLog);
}

void Session::seek() {
    startTracks();
    mState.step = Step::Seek;
    mTree["seeks"] = Json::array();
    for (const SeekRequest& request : mOptions.seeks) {
        Json reports = Json::array();
        for (const Json& track : tracks())
            reports.push_back(
                    {{"index", track["index"]}, {"status", 0}, {"samples", Json::array()}});
        for (const bool videoNow : {true, false}) {
            for (size_t i = 0; i < reports.size(); i++)
                if (isVideo(tracks()[i]) == videoNow) seekTrack(request, i, &reports[i]);
        }
        mTree["seeks"].push_back({{"timeUs", request.timeUs},
                                  {"mode", request.mode},
                                  {"tracks", std::move(reports)}});
    }
}

// A track's samples are read before the next track is sought: that seek may move all of them.
void Session::seekTrack(const SeekRequest& request, size_t position, Json* report) {
    host::Track* track = mPlayer->track(position);
    const size_t index = (*report)["index"];
    Json& samples = (*report)["samples"];
    android::status_t status = track ? android::OK : android::NO_INIT;
    host::ReadOptions how;
    how.seek = host::ReadOptions::Seek{request.timeUs, static_cast<host::SeekMode>(request.mode)};
    const uint64_t limit = mOptions.limit > 0 ? mOptions.limit : kSamplesAfterSeek;
    while (status == android::OK && samples.size() < limit) {
        const host::ReadResult read = track->read(how);
        how.seek.reset();
        // A success without a sample breaks the contract.
        status = read.status == android::OK && !read.buffer ? android::UNKNOWN_ERROR : read.status;
        if (status != android::OK) break;
        const Sample sample = toSample(index, read.buffer);
        Json json{{"timeUs", sample.timeUs}, {"size", sample.size}, {"sync", sample.sync}};
        if (mOptions.json) json["md5"] = hexText(sample.md5.data(), sample.md5.size());
        if (sample.targetTimeUs != INT64_MIN) json["targetTimeUs"] = sample.targetTimeUs;
        samples.push_back(std::move(json));
        count(index, read.buffer, sample.timeUs);
    }
    // Not news after the first sample, other than an error.
    if (status == android::ERROR_END_OF_STREAM && !samples.empty()) status = android::OK;
    (*report)["status"] = status;
    if (endedWell(status)) return;
    const std::string what = track ? ": the seek to " + secondsText(request.timeUs) + " (" +
                                             seekModeName(request.mode) + ") ended with "
                                   : " could not be started: ";
    fail(kExitFailed, "track " + std::to_string(index) + what + statusText(status) + kTryLog);
}

}  // namespace orvel::probe
