#include "e2e/SeekOracle.h"

#include <media/stagefright/MediaErrors.h>

#include <algorithm>
#include <cstdlib>

#include "ffmpeg/FFmpegCompat.h"

namespace orvel::test {

namespace {

constexpr AVRational kUs = {1, 1000000};

int64_t asTimestamp(int64_t timeUs, AVRational base) {
    const int64_t timestamp = av_rescale_q(timeUs, kUs, base);
    return timestamp != AV_NOPTS_VALUE ? timestamp : timeUs < 0 ? INT64_MIN + 1 : INT64_MAX;
}

// Wider than its arguments: the largest time that is asked for is the largest there is.
__int128 distance(int64_t a, int64_t b) {
    const __int128 difference = static_cast<__int128>(a) - b;
    return difference < 0 ? -difference : difference;
}

template <typename OnPacket>
bool readPacket(Demuxer& demuxer, const OnPacket& onPacket) {
    AVPacket* packet = av_packet_alloc();
    const bool gotOne = av_read_frame(demuxer.context(), packet) >= 0;
    if (gotOne) onPacket(*packet);
    av_packet_free(&packet);
    return gotOne;
}

void discardOthers(Demuxer& demuxer, const std::vector<SoughtTrack>& tracks) {
    AVFormatContext* context = demuxer.context();
    for (unsigned i = 0; i < context->nb_streams; ++i)
        context->streams[i]->discard = AVDISCARD_ALL;
    for (const SoughtTrack& track : tracks)
        context->streams[track.stream]->discard = AVDISCARD_DEFAULT;
}

}  // namespace

SeekOracle::SeekOracle(host::DataSource& source, const std::string& demuxer,
                       std::vector<SoughtTrack> tracks, bool craKeys)
    : mTracks(std::move(tracks)),
      mIsMov(demuxer == "mov"),
      mCraKeys(craKeys && compat::kSeeksHevcByCraPresentation),
      mDemuxer(source, demuxer),
      mFrames(mTracks.size()),
      mCaches(mTracks.size()) {
    Demuxer whole(source, demuxer);
    discardOthers(whole, mTracks);
    discardOthers(mDemuxer, mTracks);
    while (readPacket(whole, [&](const AVPacket& packet) {
        for (size_t i = 0; i < mTracks.size(); ++i) {
            if (mTracks[i].stream != packet.stream_index) continue;
            mFrames[i].push_back({packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts,
                                  packet.dts, packet.pos, (packet.flags & AV_PKT_FLAG_KEY) != 0});
        }
    })) {
    }
}

AVStream* SeekOracle::stream(size_t track) const {
    return mDemuxer.context()->streams[mTracks[track].stream];
}

int64_t SeekOracle::timeUs(size_t track, const Frame& frame) const {
    return av_rescale_q(frame.time, stream(track)->time_base, kUs);
}

const SeekOracle::Frame& SeekOracle::closest(size_t track, int64_t timestamp) const {
    return *std::min_element(mFrames[track].begin(), mFrames[track].end(),
                             [timestamp](const Frame& a, const Frame& b) {
                                 const auto awayA = distance(a.time, timestamp);
                                 const auto awayB = distance(b.time, timestamp);
                                 return awayA != awayB ? awayA < awayB : a.time > b.time;
                             });
}

SeekOracle::Landing SeekOracle::landing(size_t track, int64_t timeUs, host::SeekMode mode) const {
    const int64_t requested = asTimestamp(timeUs, stream(track)->time_base);
    const int64_t from = isMovVideo(track) ? closest(track, requested).time : requested;
    const Frame* previous = nullptr;
    const Frame* next = nullptr;
    for (const Frame& frame : mFrames[track]) {
        if (!frame.key) continue;
        if (frame.time <= from && (!previous || frame.time > previous->time)) previous = &frame;
        if (frame.time >= from && (!next || frame.time < next->time)) next = &frame;
    }
    if (!previous) return {next, true};
    if (!next) return {previous, false};
    const bool forward = mode == host::SeekMode::NextSync ||
                         (mode == host::SeekMode::ClosestSync &&
                          distance(next->time, requested) <= distance(requested, previous->time));
    return {forward ? next : previous, forward};
}

bool SeekOracle::isRight(size_t track, int64_t timeUs, host::SeekMode mode,
                         const Sample& sample) const {
    if (!sample.sync) return false;
    const AVStream* stream = this->stream(track);
    if (av_get_exact_bits_per_sample(stream->codecpar->codec_id) == 0) {
        return sample.timeUs == this->timeUs(track, *landing(track, timeUs, mode).frame);
    }
    const int64_t there = asTimestamp(std::max<int64_t>(timeUs, 0), stream->time_base);
    return sample.timeUs == av_rescale_q(there, stream->time_base, kUs);
}

// An index that lacks entries, of a fragmented file, cannot say which frame is the closest.
bool SeekOracle::knowsClosest(size_t track) const {
    return isMovVideo(track) &&
           static_cast<size_t>(compat::indexEntryCount(stream(track))) == mFrames[track].size();
}

bool SeekOracle::isForwardNearer(size_t track, int64_t timestamp) const {
    const int next = av_index_search_timestamp(stream(track), timestamp, 0);
    const int previous = av_index_search_timestamp(stream(track), timestamp, AVSEEK_FLAG_BACKWARD);
    if (next < 0 || previous < 0) return false;
    const auto away = [&](int index) {
        const AVIndexEntry* entry = compat::indexEntry(stream(track), index);
        int64_t time = entry->timestamp;
        if (isMovVideo(track)) {
            for (const Frame& frame : mFrames[track])
                if (frame.position == entry->pos) time = frame.time;
        }
        return distance(time, timestamp);
    };
    return away(next) <= away(previous);
}

bool SeekOracle::move(size_t track, int64_t timeUs, host::SeekMode mode) {
    int64_t timestamp = asTimestamp(timeUs, stream(track)->time_base);
    bool forward = mode == host::SeekMode::NextSync ||
                   (mode == host::SeekMode::ClosestSync && isForwardNearer(track, timestamp));
    if (knowsClosest(track)) {
        // Whatever lands on that key frame: its decode time forward, the last before the next one
        // backward. The demultiplexer takes off its argument what decode times start below zero.
        const std::vector<Frame>& frames = mFrames[track];
        const Landing wanted = landing(track, timeUs, mode);
        forward = wanted.forward && !mCraKeys;
        timestamp = wanted.frame->decodeTime;
        if (!forward) {
            const Frame* after = wanted.frame + 1;
            const Frame* end = frames.data() + frames.size();
            while (after != end && !after->key)
                ++after;
            timestamp = after != end ? after->decodeTime - 1 : INT32_MAX;
        }
        timestamp -= std::min<int64_t>(frames.front().decodeTime, 0);
    }
    AVFormatContext* context = mDemuxer.context();
    context->pb->error = 0;
    const int flags = forward ? 0 : AVSEEK_FLAG_BACKWARD;
    return av_seek_frame(context, mTracks[track].stream, timestamp, flags) >= 0 ||
           av_seek_frame(context, mTracks[track].stream, timestamp, flags ^ AVSEEK_FLAG_BACKWARD) >=
                   0;
}

std::optional<Sample> SeekOracle::next(size_t track) {
    while (mCaches[track].empty()) {
        mEnded = mEnded || !readPacket(mDemuxer, [&](const AVPacket& packet) {
                     for (size_t i = 0; i < mTracks.size(); ++i) {
                         if (mTracks[i].stream != packet.stream_index) continue;
                         mCaches[i].push_back(mDemuxer.asDelivered(packet));
                     }
                 });
        if (mEnded) return std::nullopt;
    }
    const Sample sample = std::move(mCaches[track].front());
    mCaches[track].pop_front();
    return sample;
}

SeekOracle::Outcome SeekOracle::seek(size_t track, int64_t timeUs, host::SeekMode mode) {
    const SoughtTrack& sought = mTracks[track];
    Outcome outcome;
    outcome.refused = sought.durationUs >= 1 && sought.durationUs < timeUs;
    if (sought.isVideo) mVideoRefused = outcome.refused;
    outcome.status = android::ERROR_END_OF_STREAM;
    if (outcome.refused) return outcome;
    const bool hasVideo = std::any_of(mTracks.begin(), mTracks.end(),
                                      [](const SoughtTrack& other) { return other.isVideo; });
    const bool exact = knowsClosest(track);
    if (sought.isVideo || !hasVideo || mVideoRefused || mode == host::SeekMode::Closest) {
        if (!move(track, timeUs, mode)) return outcome;
        for (std::deque<Sample>& cache : mCaches)
            cache.clear();
        mEnded = false;
    }
    outcome.sample = next(track);
    if (!outcome.sample) return outcome;
    outcome.status = android::OK;
    if (sought.isVideo && mode == host::SeekMode::Closest && timeUs >= 0) {
        const int64_t requested = asTimestamp(timeUs, stream(track)->time_base);
        outcome.targetUs = exact ? this->timeUs(track, closest(track, requested)) : timeUs;
    }
    return outcome;
}

std::vector<Sample> SeekOracle::readOn(size_t track) {
    std::vector<Sample> samples;
    while (std::optional<Sample> sample = next(track))
        samples.push_back(std::move(*sample));
    return samples;
}

}  // namespace orvel::test
