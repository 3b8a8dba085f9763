// Delivery: one framework read of one track.

#define LOG_TAG "FFmpegReader"

#include <string.h>

#include <log/log.h>

#include "OrvelMediaBuffer.h"
#include "ReaderTrack.h"

namespace orvel {

using namespace android;

status_t FFmpegReader::findCache(int32_t trackIndex, sp<Cache>* cache, int32_t* streamIndex,
                                 bool* bigBuffer) {
    sp<FFmpegObject> object;  // outlives the lock
    ScopedLock<ReaderMutex> lock(mLock);
    object = mFFmpegObject.promote();
    if (object == nullptr) return NO_INIT;
    *streamIndex = object->mTracks[static_cast<size_t>(trackIndex)].streamIndex;
    const sp<Track>& track = mTracks.valueFor(*streamIndex);
    if (track == nullptr) {
        ALOGE("No this track:%d", trackIndex);
        return UNKNOWN_ERROR;
    }
    *cache = track->mCache;
    *bigBuffer = mBigBufferMode;
    track->mAwaited = true;
    if (track->mCache->getCacheSize() == 0) postQueueBuffer(*streamIndex);
    return OK;
}

status_t FFmpegReader::dequeueBuffer(int32_t trackIndex, IOrvelMediaBuffer** out,
                                     const ReadOptions* options) {
    *out = nullptr;
    int64_t seekTimeUs;
    ReadOptions::SeekMode seekMode;
    const bool seeks = options != nullptr && options->getSeekTo(&seekTimeUs, &seekMode);
    sp<Cache> cache;
    int32_t streamIndex = -1;
    bool bigBuffer = false;
    // A packet without data, which some files hold, becomes no sample: the next one is taken.
    while (*out == nullptr) {
        status_t status = findCache(trackIndex, &cache, &streamIndex, &bigBuffer);
        if (status != OK) return status;
        AVPacket* packet = nullptr;
        status = cache->dequeueBuffer(&packet);
        if (status != OK) {
            ScopedLock<ReaderMutex> lock(mLock);
            if (Track* track = startedTrack(streamIndex)) track->mAwaited = false;
            return status;
        }
        status = avPacketToMediaBuffer(packet, out, trackIndex, options);
        if (status != OK) return status;
    }
    if (bigBuffer && !seeks) appendPackets(*cache, streamIndex, **out);
    return OK;
}

void FFmpegReader::appendPackets(Cache& cache, int32_t streamIndex, IOrvelMediaBuffer& buffer) {
    for (;;) {
        if (cache.getCacheSize() == 0) postQueueBuffer(streamIndex);
        AVPacket* packet = nullptr;
        if (cache.showNextBuffer(&packet) != OK) return;
        const size_t used = buffer.range_offset() + buffer.range_length();
        const auto size = static_cast<size_t>(packet->size);
        if (used > buffer.size() || buffer.size() - used < size) return;
        if (cache.dequeueBuffer(&packet) != OK) return;
        if (size > 0) memcpy(static_cast<uint8_t*>(buffer.data()) + used, packet->data, size);
        buffer.set_range(buffer.range_offset(), buffer.range_length() + size);
        av_packet_free(&packet);
    }
}

}  // namespace orvel
