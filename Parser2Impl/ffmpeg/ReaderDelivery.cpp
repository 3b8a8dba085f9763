// Delivery: one framework read of one track.

#define LOG_TAG "FFmpegReader"

#include <string.h>

#include <log/log.h>

#include "OrvelMediaBuffer.h"
#include "ReaderTrack.h"

namespace orvel {

using namespace android;

// What a read has found out.
struct FFmpegReader::Read {
    const int32_t trackIndex;
    const ReadOptions* const options;
    int32_t streamIndex = -1;
    bool bigBuffer = false;
    sp<Cache> cache = nullptr;
    bool waits = false;  // the cache was empty, and packets have been asked for
};

status_t FFmpegReader::deliverQueued(Read* read, IOrvelMediaBuffer** out) {
    ScopedLock<ReaderMutex> lock(mLock);
    // The caller came through the container object and holds it. A promotion here would pass its
    // counters to and fro between this thread and the looper's for each sample.
    FFmpegObject& object = *mFFmpegObject.unsafe_get();
    const FFmpegObject::TrackInfo& info = object.mTracks[static_cast<size_t>(read->trackIndex)];
    read->streamIndex = info.streamIndex;
    const sp<Track>& track = mTracks.valueFor(info.streamIndex);
    if (track == nullptr) {
        ALOGE("No this track:%d", read->trackIndex);
        return UNKNOWN_ERROR;
    }
    read->bigBuffer = mBigBufferMode;
    AVPacket* packet = track->mCache->takeQueued();
    read->waits = packet == nullptr;
    if (read->waits || read->bigBuffer) read->cache = track->mCache;
    if (!read->waits) return convertPacket(info, *track, packet, out, read->options);
    track->mAwaited = true;
    postQueueBuffer(info.streamIndex);
    return OK;
}

status_t FFmpegReader::dequeueBuffer(int32_t trackIndex, IOrvelMediaBuffer** out,
                                     const ReadOptions* options) {
    *out = nullptr;
    int64_t seekTimeUs;
    ReadOptions::SeekMode seekMode;
    const bool seeks = options != nullptr && options->getSeekTo(&seekTimeUs, &seekMode);
    Read read = {trackIndex, options};
    // A packet without data, which some files hold, becomes no sample: the next one is taken.
    while (*out == nullptr) {
        status_t status = deliverQueued(&read, out);
        if (status != OK) return status;
        if (!read.waits) continue;
        AVPacket* packet = nullptr;
        status = read.cache->dequeueBuffer(&packet);
        if (status != OK) {
            ScopedLock<ReaderMutex> lock(mLock);
            if (Track* track = startedTrack(read.streamIndex)) track->mAwaited = false;
            return status;
        }
        status = avPacketToMediaBuffer(packet, out, trackIndex, options);
        if (status != OK) return status;
    }
    if (read.bigBuffer && !seeks) appendPackets(*read.cache, read.streamIndex, **out);
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
