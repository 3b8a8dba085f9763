// The read-ahead: one pass of it, and when there is another.

#define LOG_TAG "FFmpegReader"

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ADebug.h>

#include "ErrorText.h"
#include "ReaderTrack.h"

namespace orvel {

using namespace android;

void FFmpegReader::postQueueBuffer(int32_t streamIndex) {
    mPosted.fetch_add(1, std::memory_order_relaxed);
    if (streamIndex == kAnyStream) {
        mAnyStreamRequest->post();
        return;
    }
    newRequest(streamIndex)->post();
}

sp<AMessage> FFmpegReader::newRequest(int32_t streamIndex) {
    sp<AMessage> msg = new AMessage(kWhatQueueBuffer, this);
    msg->setInt32("stream_index", streamIndex);
    return msg;
}

FFmpegReader::Track* FFmpegReader::startedTrack(int32_t streamIndex) {
    const ssize_t index = mTracks.indexOfKey(streamIndex);
    return index >= 0 ? mTracks[static_cast<size_t>(index)].get() : nullptr;
}

bool FFmpegReader::hasTrack(AVMediaType type) {
    for (size_t i = 0; i < mTracks.size(); ++i) {
        if (mTracks[i] != nullptr && mTracks[i]->mMediaType == type) return true;
    }
    return false;
}

bool FFmpegReader::isAllTracksFull() {
    size_t full = 0;
    size_t subtitles = 0;
    size_t started = 0;
    for (size_t i = 0; i < mTracks.size(); ++i) {
        const sp<Track>& track = mTracks[i];
        if (track == nullptr) continue;
        ++started;
        if (track->mMediaType == AVMEDIA_TYPE_SUBTITLE) ++subtitles;
        if (track->isFull()) ++full;
    }
    return full >= started - subtitles;
}

void FFmpegReader::signalEOS(status_t status) {
    for (size_t i = 0; i < mTracks.size(); ++i) {
        const sp<Track>& track = mTracks[i];
        if (track == nullptr || track->mMediaType == AVMEDIA_TYPE_SUBTITLE) continue;
        track->mCache->signalEOS(status);
    }
}

bool FFmpegReader::dropsRequest(int32_t streamIndexWanted) {
    if (!mReadPaused) return false;
    const Track* track = startedTrack(streamIndexWanted);
    return !mDemuxerEnded || track == nullptr || track->mMediaType != AVMEDIA_TYPE_SUBTITLE;
}

void FFmpegReader::onQueueBuffer(const sp<AMessage>& msg) {
    sp<Cache> served;
    runPass(msg, &served);
    // The consumer takes mLock next: woken under it, it would go back to sleep. And it needs a
    // moment to get there; without it a slow source would make it wait for one more pass.
    if (served != nullptr && served->wake()) {
        mWakeUp.until([&served] { return served->empty(); });
    }
}

void FFmpegReader::runPass(const sp<AMessage>& msg, sp<Cache>* served) {
    int32_t streamIndexWanted = kAnyStream;
    const bool complete = msg->findInt32("stream_index", &streamIndexWanted);
    sp<FFmpegObject> object;  // outlives the lock
    PassLock lock(mLock);
    if (dropsRequest(streamIndexWanted)) return;
    if (!complete) CHECK(msg->findInt32("stream_index", &streamIndexWanted));

    Track* wanted = startedTrack(streamIndexWanted);
    if (wanted != nullptr && wanted->mMediaType == AVMEDIA_TYPE_SUBTITLE) {
        // An ended cache answers its reads by itself, until a seek.
        if (wanted->mCache->hasEnded()) return;
        object = mFFmpegObject.promote();
        if (object == nullptr) return;
        const status_t status = readSubtitleData(*object, *wanted);
        // The end of this track alone: audio and video go on.
        if (status != OK) wanted->mCache->signalEOS(status);
        return;
    }
    if (isAllTracksFull()) return;
    object = mFFmpegObject.promote();
    if (object == nullptr) return;
    readPackets(object->mFormatCtx, streamIndexWanted, served);
}

void FFmpegReader::readPackets(AVFormatContext* context, int32_t streamIndexWanted,
                               sp<Cache>* served) {
    AVPacket* packet = mSpentPackets.take();
    int error = AVERROR(ENOMEM);
    while (packet != nullptr) {
        error = av_read_frame(context, packet);
        if (error < 0) break;
        const int32_t streamIndex = packet->stream_index;
        Track* track = startedTrack(streamIndex);
        // The demuxer delivers what it buffered while the file was opened also of streams that are
        // discarded. A subtitle track's samples come from the index, and would come twice.
        if (track == nullptr || track->mMediaType == AVMEDIA_TYPE_SUBTITLE) {
            av_packet_unref(packet);
            continue;
        }
        if (streamIndex == streamIndexWanted || streamIndexWanted == kAnyStream) {
            track->mCache->append(packet);
            *served = track->mCache;
            postQueueBuffer(kAnyStream);
            return;
        }
        track->mCache->queueBuffer(packet);
        packet = mSpentPackets.take();
        error = AVERROR(ENOMEM);
    }
    endReading(context, error, streamIndexWanted);
    av_packet_free(&packet);
}

void FFmpegReader::endReading(AVFormatContext* context, int error, int32_t streamIndexWanted) {
    mReadPaused = true;
    mDemuxerEnded = true;
    status_t status;
    if (error == AVERROR_EOF || avio_feof(context->pb) != 0) {
        ALOGW("av_read_frame reach end of file, streamIndex:%d", streamIndexWanted);
        status = ERROR_END_OF_STREAM;
    } else {
        ALOGE("av_read_frame error: %s", ErrorText(error).c_str());
        status = ERROR_IO;
    }
    signalEOS(status);
    // It is reported; left in place it would turn a later clean end of file into the same error.
    context->pb->error = 0;
}

}  // namespace orvel
