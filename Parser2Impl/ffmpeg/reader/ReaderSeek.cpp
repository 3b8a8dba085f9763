// Seeking: which requests move the demuxer, where to, and the flush that follows.

#define LOG_TAG "FFmpegReader"

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ADebug.h>

#include "ReaderTrack.h"
#include "bytes/PresentationTimes.h"
#include "bytes/Saturate.h"
#include "ffmpeg/ErrorText.h"
#include "ffmpeg/FFmpegExtensions.h"
#include "ffmpeg/FFmpegObject.h"
#include "ffmpeg/Timestamps.h"

namespace orvel {

using namespace android;

namespace {

constexpr int kForward = 0;
constexpr int kBackward = AVSEEK_FLAG_BACKWARD;

AVMediaType mediaType(const AVStream* stream) {
    return stream->codecpar->codec_type;
}

// Where a seek is to go.
struct SeekTarget {
    int64_t requested;  // stream time base, as the next
    int64_t timestamp;  // what the demuxer is asked for
    int flags;
    // Of the stream's index entries; null when not known.
    std::shared_ptr<const PresentationTimes> times;
    BackwardSeek backward;  // how the demuxer goes backward in this stream
};

// Turns the time that target asks for into a timestamp and flags, by the seek mode.
void correctTimeStampAndSeekFlags(AVStream* stream, int32_t seekMode, SeekTarget* target) {
    const PresentationTimes* times = target->times.get();
    if (times != nullptr && mediaType(stream) == AVMEDIA_TYPE_VIDEO) {
        const int64_t closest = times->searchClosest(target->requested, ClosestMode::SeekTimestamp);
        if (closest >= 0) target->timestamp = closest;
    }
    switch (seekMode) {
        case SEEK_PREVIOUS_SYNC:
        case SEEK_CLOSEST:
            target->flags = kBackward;
            return;
        case SEEK_CLOSEST_SYNC:
            break;
        default:
            target->flags = kForward;
            return;
    }

    // The demuxer takes the shift off its argument; the index knows nothing of it.
    const int64_t onIndex =
            saturatingDifference(target->timestamp, times != nullptr ? times->shift() : 0);
    const int next = av_index_search_timestamp(stream, onIndex, kForward);
    const int previous = av_index_search_timestamp(stream, onIndex, kBackward);
    if (next < 0 || previous < 0) {
        ALOGW("seek index out of range, seek backward");
        target->flags = kBackward;
        return;
    }
    const auto presentationTime = [&](int index) {
        return times != nullptr ? times->pts(static_cast<size_t>(index))
                                : compat::indexEntry(stream, index)->timestamp;
    };
    const int64_t requested = target->requested;
    const int64_t nextPts = presentationTime(next);
    const int64_t previousPts = presentationTime(previous);
    target->flags =
            distance(nextPts, requested) > distance(requested, previousPts) ? kBackward : kForward;
    ALOGI("prevIframePts:%lld, nextIFramePts:%lld, request pts:%lld, seek flags:%d",
          static_cast<long long>(previousPts), static_cast<long long>(nextPts),
          static_cast<long long>(requested), target->flags);
}

// av_seek_frame; its result.
int seekFrame(AVFormatContext* context, AVStream* stream, const SeekTarget& target, int flags) {
    int64_t timestamp = target.timestamp;
    int direction = flags;
    const PresentationTimes* times = target.times.get();
    if (target.backward == BackwardSeek::ByPresentationOfCra && times != nullptr &&
        times->complete()) {
        // This library lands a group of pictures early going backward, and on the first sample
        // going forward. The timestamp passed is that of the key picture meant, always backward.
        // Test: SeekScenario.
        const auto backwardTo = [&](int64_t presentationTime) {
            const int64_t found = times->searchClosest(presentationTime, ClosestMode::SeekTimestamp,
                                                       target.backward);
            if (found < 0) return;
            timestamp = found;
            direction = kBackward;
        };
        const int64_t nextKey = times->firstKeyAtOrAfter(target.timestamp);
        if (flags == kBackward) {
            backwardTo(target.requested);
        } else if (nextKey >= 0) {
            backwardTo(times->pts(static_cast<size_t>(nextKey)));
        }
        ALOGD("[%d] sync sample groups, seek to %lld, flags:%d", stream->index,
              static_cast<long long>(timestamp), direction);
    }
    return av_seek_frame(context, stream->index, timestamp, direction);
}

// Seeks, in the other direction when that fails.
status_t seekDemuxer(AVFormatContext* context, AVStream* stream, const SeekTarget& target) {
    // An error of an earlier read was reported then.
    context->pb->error = 0;
    const int flags = target.flags;
    int result = seekFrame(context, stream, target, flags);
    if (result < 0) {
        const int otherFlags = flags ^ AVSEEK_FLAG_BACKWARD;
        ALOGE("av_seek_frame error:%s when using flags:%d, using flags:%d to seek again",
              ErrorText(result).c_str(), flags, otherFlags);
        result = seekFrame(context, stream, target, otherFlags);
        if (result < 0) {
            ALOGE("av_seek_frame error:%s, seekFlags:%d", ErrorText(result).c_str(), flags);
            return ERROR_END_OF_STREAM;
        }
    }
    return OK;
}

}  // namespace

status_t FFmpegReader::seek(int32_t trackIndex, int64_t seekTimeUs, int32_t seekMode) {
    {
        ScopedLock<ReaderMutex> lock(mLock);
        status_t status = OK;
        if (!needToSeek(trackIndex, seekTimeUs, seekMode, &status)) return status;
        mReadPaused = Paused::ForSeek;
    }
    const sp<AMessage> msg = newMessage(kWhatSeek, "track_index", trackIndex);
    msg->setInt64("seekTimeUs", seekTimeUs);
    msg->setInt32("seekmode", seekMode);
    sp<AMessage> response;
    const status_t status = msg->postAndAwaitResponse(&response);
    if (status != OK) return status;
    if (response == nullptr) return OK;
    status_t err;
    CHECK(response->findInt32("err", &err));
    return err;
}

bool FFmpegReader::needToSeek(int32_t trackIndex, int64_t seekTimeUs, int32_t seekMode,
                              status_t* status) {
    const bool audioStarted = hasTrack(AVMEDIA_TYPE_AUDIO);
    const bool videoStarted = hasTrack(AVMEDIA_TYPE_VIDEO);
    // The caller holds the container object strongly: this promotion cannot be its last reference.
    const sp<FFmpegObject> object = mFFmpegObject.promote();
    if (object == nullptr) {
        *status = NO_INIT;
        return false;
    }
    const TrackInfo& info = object->openContainer().tracks[static_cast<size_t>(trackIndex)];
    const ssize_t started = mTracks.indexOfKey(info.streamIndex);
    if (started >= 0 && mTracks[static_cast<size_t>(started)] == nullptr) {
        ALOGE("No this track:%d", trackIndex);
        *status = UNKNOWN_ERROR;
        return false;
    }
    const bool outOfRange = info.durationUs >= 1 && info.durationUs < seekTimeUs;
    switch (mediaType(info.stream)) {
        case AVMEDIA_TYPE_VIDEO:
            if (seekMode == SEEK_CLOSEST && audioStarted) mAudioSeekPending = true;
            mVideoSeekOutOfRange = outOfRange;
            if (outOfRange) {
                ALOGW("[video %d] seekTimeUs:%lld us exceeds duration:%lld us", trackIndex,
                      static_cast<long long>(seekTimeUs), static_cast<long long>(info.durationUs));
                *status = ERROR_END_OF_STREAM;
                return false;
            }
            return true;
        case AVMEDIA_TYPE_SUBTITLE:
            return true;
        case AVMEDIA_TYPE_AUDIO: {
            const bool pending = mAudioSeekPending;
            mAudioSeekPending = false;
            if (outOfRange) {
                ALOGW("[audio %d] seekTimeUs:%lld us exceeds duration:%lld us", trackIndex,
                      static_cast<long long>(seekTimeUs), static_cast<long long>(info.durationUs));
                *status = ERROR_END_OF_STREAM;
                return false;
            }
            // A video seek before this one has moved the demuxer for all tracks, unless it was out
            // of range.
            return !videoStarted || pending || mVideoSeekOutOfRange;
        }
        default:
            return false;
    }
}

void FFmpegReader::onSeek(const sp<AMessage>& msg) {
    int32_t trackIndex;
    int64_t seekTimeUs;
    int32_t seekMode;
    CHECK(msg->findInt32("track_index", &trackIndex));
    CHECK(msg->findInt64("seekTimeUs", &seekTimeUs));
    CHECK(msg->findInt32("seekmode", &seekMode));
    status_t err = NO_INIT;
    if (const sp<FFmpegObject> object = mFFmpegObject.promote(); object != nullptr) {
        const OpenContainer container = object->openContainer();
        const TrackInfo& info = container.tracks[static_cast<size_t>(trackIndex)];
        AVStream* stream = info.stream;
        const AVMediaType type = mediaType(stream);
        {
            ScopedLock<ReaderMutex> lock(mLock);
            Track* track = TrackLookUp(mTracks, container, trackIndex).track;
            if (track != nullptr) track->releaseBuffer();
            // The flush of another track's seek, or a start, may have resumed reading since this
            // seek was asked for. Its flush would throw away what is read from now on.
            mReadPaused = Paused::ForSeek;
        }
        ALOGI("[%d] (codec_type:%d) will seekTo %lld us, seekmode:%d", trackIndex,
              static_cast<int>(type), static_cast<long long>(seekTimeUs), seekMode);
        const int64_t requested = timestampFromUs(seekTimeUs, info.timeBase);
        SeekTarget target = {requested, requested, kForward, nullptr, BackwardSeek::ByDecodeTime};
        if (type == AVMEDIA_TYPE_VIDEO || seekMode == SEEK_CLOSEST_SYNC) {
            target.times = container.extensions.presentationTimes(stream);
            if (container.extensions.seeksByPresentationOfCra(stream)) {
                target.backward = BackwardSeek::ByPresentationOfCra;
            }
        }
        correctTimeStampAndSeekFlags(stream, seekMode, &target);
        if (type == AVMEDIA_TYPE_SUBTITLE) {
            err = processSubtitleSeek(info, target.timestamp, target.flags);
        } else {
            err = seekDemuxer(container.context, stream, target);
            if (err == OK) mSeeked = true;
        }
        ScopedLock<ReaderMutex> lock(mLock);
        Track* track = startedTrack(mTracks, info.streamIndex);
        if (track != nullptr && track->form().isVideo) track->setPresentationTimes(target.times);
        if (err != OK && !mSeeked) resumeReading();
    }
    postReply(msg, err);
}

status_t FFmpegReader::processSubtitleSeek(const TrackInfo& info, int64_t timestamp, int flags) {
    int index = av_index_search_timestamp(info.stream, timestamp, flags);
    if (index < 0) {
        if (compat::indexEntryCount(info.stream) == 0 ||
            compat::indexEntry(info.stream, 0)->timestamp <= timestamp) {
            return BAD_VALUE;
        }
        index = 0;
    }
    ScopedLock<ReaderMutex> lock(mLock);
    const sp<Track>& track = mTracks.valueFor(info.streamIndex);
    if (track == nullptr) return BAD_VALUE;
    track->setNextSubtitle(index);
    track->setSubtitleSeeked(true);
    return OK;
}

void FFmpegReader::onFlush(const sp<AMessage>& msg) {
    int32_t trackIndex;
    CHECK(msg->findInt32("track_index", &trackIndex));
    {
        sp<FFmpegObject> object;  // outlives the lock
        ScopedLock<ReaderMutex> lock(mLock);
        object = mFFmpegObject.promote();
        Track* sought = nullptr;
        if (object != nullptr) {
            const TrackInfo& info = object->openContainer().tracks[static_cast<size_t>(trackIndex)];
            sought = startedTrack(mTracks, info.streamIndex);
        }
        if (sought != nullptr && sought->isSubtitle()) {
            if (sought->isSubtitleSeeked()) {
                sought->setSubtitleSeeked(false);
                sought->cache()->flush();
                // The flush of a seek of the demuxer that is under way resumes reading by itself.
                if (!mSeeked) resumeReading();
            }
        } else if (mSeeked) {
            mSeeked = false;
            forEachTrack(mTracks, [](Track& track) {
                if (track.isSubtitle()) return;
                track.cache()->flush();
                track.setFresh(true);
            });
            resumeReading();
        }
    }
    postReply(msg, OK);
}

}  // namespace orvel
