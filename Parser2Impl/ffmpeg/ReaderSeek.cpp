// Seeking: which requests move the demuxer, where to, and the flush that follows.

#define LOG_TAG "FFmpegReader"

#include <stdlib.h>

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ADebug.h>

#include "ErrorText.h"
#include "FFmpegExtensions.h"
#include "OrvelMediaBuffer.h"
#include "PresentationTimes.h"
#include "ReaderTrack.h"

namespace orvel {

using namespace android;

namespace {

constexpr AVRational kMicroseconds = {1, 1000000};
constexpr int kForward = 0;
constexpr int kBackward = AVSEEK_FLAG_BACKWARD;

AVMediaType mediaType(const AVStream* stream) {
    return stream->codecpar->codec_type;
}

int64_t streamTimestamp(int64_t timeUs, AVRational timeBase) {
    const int64_t timestamp = av_rescale_q(timeUs, kMicroseconds, timeBase);
    // What a far time gives in a fine time base; the demuxers take it for no time at all.
    if (timestamp != AV_NOPTS_VALUE) return timestamp;
    return timeUs < 0 ? INT64_MIN + 1 : INT64_MAX;
}

BackwardSeek backwardSeekOf(const AVStream* stream) {
    return compat::kSeeksHevcByCraPresentation && stream->codecpar->codec_id == AV_CODEC_ID_HEVC
                   ? BackwardSeek::ByPresentationOfCra
                   : BackwardSeek::ByDecodeTime;
}

uint64_t distance(int64_t a, int64_t b) {
    const auto ua = static_cast<uint64_t>(a);
    const auto ub = static_cast<uint64_t>(b);
    return a > b ? ua - ub : ub - ua;
}

}  // namespace

status_t FFmpegReader::seek(int32_t trackIndex, int64_t seekTimeUs, int32_t seekMode) {
    {
        ScopedLock<ReaderMutex> lock(mLock);
        status_t status = OK;
        if (!needToSeek(trackIndex, seekTimeUs, seekMode, &status)) return status;
        mReadPaused = true;
        mDemuxerEnded = false;
    }
    const sp<AMessage> msg = newCommand(kWhatSeek, trackIndex);
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
    const FFmpegObject::TrackInfo& info = object->mTracks[static_cast<size_t>(trackIndex)];
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
        const FFmpegObject::TrackInfo& info = object->mTracks[static_cast<size_t>(trackIndex)];
        AVStream* stream = info.stream;
        const AVMediaType type = mediaType(stream);
        std::shared_ptr<const PresentationTimes> times;
        if (type == AVMEDIA_TYPE_VIDEO) times = object->mExtensions->presentationTimes(stream);
        {
            ScopedLock<ReaderMutex> lock(mLock);
            const sp<Track>& track = mTracks.valueFor(info.streamIndex);
            if (track != nullptr) {
                if (track->mBuffer != nullptr) {
                    track->mBuffer->release();
                    track->mBuffer = nullptr;
                }
                track->mPresentationTimes = times;
            }
            // The flush of another track's seek, or a start, may have resumed reading since this
            // seek was asked for; what was read from now on this seek's flush would throw away.
            mReadPaused = true;
            mDemuxerEnded = false;
        }
        ALOGI("[%d] (codec_type:%d) will seekTo %lld us, seekmode:%d", trackIndex,
              static_cast<int>(type), static_cast<long long>(seekTimeUs), seekMode);
        int64_t timestamp = streamTimestamp(seekTimeUs, info.timeBase);
        int flags = kForward;
        correctTimeStampAndSeekFlags(stream, times.get(), seekMode, &timestamp, &flags);
        if (type == AVMEDIA_TYPE_SUBTITLE) {
            err = processSubtitleSeek(info, timestamp, flags);
        } else {
            err = seekDemuxer(object->mFormatCtx, stream, times.get(), timestamp, flags);
        }
        if (err != OK) {
            ScopedLock<ReaderMutex> lock(mLock);
            if (!mSeeked) resumeReading();
        }
    }
    postReply(msg, err);
}

void FFmpegReader::correctTimeStampAndSeekFlags(AVStream* stream, const PresentationTimes* times,
                                                int32_t seekMode, int64_t* timestamp, int* flags) {
    const int64_t requested = *timestamp;
    const auto correctFor = [&](BackwardSeek backward) {
        if (times == nullptr) return;
        const int64_t found = times->searchClosest(requested, ClosestMode::SeekTimestamp, backward);
        if (found >= 0) *timestamp = found;
    };
    correctFor(BackwardSeek::ByDecodeTime);
    switch (seekMode) {
        case SEEK_PREVIOUS_SYNC:
        case SEEK_CLOSEST:
            *flags = kBackward;
            correctFor(backwardSeekOf(stream));
            return;
        case SEEK_CLOSEST_SYNC:
            break;
        default:
            *flags = kForward;
            return;
    }

    // The demuxer takes the shift off its argument; the index knows nothing of it.
    const int64_t target = *timestamp - (times != nullptr ? times->shift() : 0);
    const int next = av_index_search_timestamp(stream, target, kForward);
    const int previous = av_index_search_timestamp(stream, target, kBackward);
    if (next < 0 || previous < 0) {
        ALOGW("seek index out of range, seek backward");
        *flags = kBackward;
        return;
    }
    const auto presentationTime = [&](int index) {
        return times != nullptr ? times->pts(static_cast<size_t>(index))
                                : compat::indexEntry(stream, index)->timestamp;
    };
    const int64_t nextPts = presentationTime(next);
    const int64_t previousPts = presentationTime(previous);
    *flags = distance(nextPts, requested) > distance(requested, previousPts) ? kBackward : kForward;
    if (*flags == kBackward) correctFor(backwardSeekOf(stream));
    ALOGI("prevIframePts:%lld, nextIFramePts:%lld, request pts:%lld, seek flags:%d",
          static_cast<long long>(previousPts), static_cast<long long>(nextPts),
          static_cast<long long>(requested), *flags);
}

status_t FFmpegReader::seekDemuxer(AVFormatContext* context, AVStream* stream,
                                   const PresentationTimes* times, int64_t timestamp, int flags) {
    // An error of an earlier read was reported then.
    context->pb->error = 0;
    int64_t argument = timestamp;
    int argumentFlags = flags;
    if (flags == kForward && times != nullptr && times->complete() &&
        backwardSeekOf(stream) == BackwardSeek::ByPresentationOfCra) {
        // Backward to the key frame that the forward seek means.
        const int64_t key = times->firstKeyAtOrAfter(timestamp);
        if (key >= 0) {
            argument = times->searchClosest(times->pts(static_cast<size_t>(key)),
                                            ClosestMode::SeekTimestamp,
                                            BackwardSeek::ByPresentationOfCra);
            argumentFlags = kBackward;
        }
    }
    int result = av_seek_frame(context, stream->index, argument, argumentFlags);
    if (result < 0) {
        ALOGE("av_seek_frame error:%s when using flags:%d, using flags:%d to seek again",
              ErrorText(result).c_str(), flags, flags ^ AVSEEK_FLAG_BACKWARD);
        result = av_seek_frame(context, stream->index, timestamp, flags ^ AVSEEK_FLAG_BACKWARD);
        if (result < 0) {
            ALOGE("av_seek_frame error:%s, seekFlags:%d", ErrorText(result).c_str(), flags);
            return ERROR_END_OF_STREAM;
        }
    }
    mSeeked = true;
    return OK;
}

status_t FFmpegReader::processSubtitleSeek(const FFmpegObject::TrackInfo& info, int64_t timestamp,
                                           int flags) {
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
    track->mSubtitleIndex = index;
    track->mSubtitleSeeked = true;
    return OK;
}

void FFmpegReader::onFlush(const sp<AMessage>& msg) {
    int32_t trackIndex;
    CHECK(msg->findInt32("track_index", &trackIndex));
    {
        sp<FFmpegObject> object;  // outlives the lock
        ScopedLock<ReaderMutex> lock(mLock);
        object = mFFmpegObject.promote();
        const int32_t streamIndex =
                object != nullptr ? object->mTracks[static_cast<size_t>(trackIndex)].streamIndex
                                  : -1;
        Track* sought = startedTrack(streamIndex);
        if (sought != nullptr && sought->mMediaType == AVMEDIA_TYPE_SUBTITLE) {
            if (sought->mSubtitleSeeked) {
                sought->mSubtitleSeeked = false;
                sought->mCache->flush();
                // The flush of a seek of the demuxer that is under way resumes reading by itself.
                if (!mSeeked) resumeReading();
            }
        } else if (mSeeked) {
            mSeeked = false;
            for (size_t i = 0; i < mTracks.size(); ++i) {
                const sp<Track>& track = mTracks[i];
                if (track == nullptr || track->mMediaType == AVMEDIA_TYPE_SUBTITLE) continue;
                track->mCache->flush();
            }
            resumeReading();
        }
    }
    postReply(msg, OK);
}

}  // namespace orvel
