// Delivery: one framework read of one track.

#define LOG_TAG "FFmpegReader"

#include <string.h>

#include <log/log.h>

#include "ReaderTrack.h"
#include "SampleConversion.h"
#include "ffmpeg/FFmpegObject.h"

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
    // The caller came through the container object and holds it. A promotion for each sample would
    // make this thread and the looper's write to the same counter.
    const TrackLookUp found(mTracks, mFFmpegObject.unsafe_get()->openContainer(), read->trackIndex);
    read->streamIndex = found.info.streamIndex;
    if (found.track == nullptr) {
        ALOGE("No this track:%d", read->trackIndex);
        return UNKNOWN_ERROR;
    }
    Track& track = *found.track;
    read->bigBuffer = mBigBufferMode;
    AVPacket* packet = track.cache()->takeQueued();
    read->waits = packet == nullptr;
    if (read->waits || read->bigBuffer) read->cache = track.cache();
    if (!read->waits) {
        const status_t status = convertPacket(track, *packet, read->options, out);
        av_packet_free(&packet);
        return status;
    }
    track.setAwaited(true);
    postQueueBuffer(read->streamIndex);
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
            setAwaited(read.streamIndex, false);
            return status;
        }
        status = avPacketToMediaBuffer(packet, out, trackIndex, options);
        if (status != OK) return status;
    }
    if (read.bigBuffer && !seeks) appendPackets(*read.cache, read.streamIndex, **out);
    return OK;
}

status_t FFmpegReader::avPacketToMediaBuffer(AVPacket* packet, IOrvelMediaBuffer** out,
                                             int32_t trackIndex, const ReadOptions* options) {
    sp<FFmpegObject> object;  // both outlive the lock
    sp<Track> track;
    LockAfterWait lock(mLock);
    *out = nullptr;
    object = mFFmpegObject.promote();
    status_t status = NO_INIT;
    if (object != nullptr) {
        track = TrackLookUp(mTracks, object->openContainer(), trackIndex).track;
        status = track != nullptr ? convertPacket(*track, *packet, options, out) : UNKNOWN_ERROR;
    }
    av_packet_free(&packet);
    return status;
}

bool FFmpegReader::setAwaited(int32_t streamIndex, bool awaited) {
    LockAfterWait lock(mLock);
    Track* track = startedTrack(mTracks, streamIndex);
    if (track == nullptr) return false;
    track->setAwaited(awaited);
    return awaited && !track->exchangeRequested(true);
}

void FFmpegReader::appendPackets(Cache& cache, int32_t streamIndex, IOrvelMediaBuffer& buffer) {
    for (;;) {
        if (cache.empty() && setAwaited(streamIndex, true)) {
            newMessage(kWhatQueueBuffer, "stream_index", streamIndex)->post();
        }
        AVPacket* packet = nullptr;
        if (cache.showNextBuffer(&packet) != OK) break;
        const size_t used = buffer.range_offset() + buffer.range_length();
        const auto size = static_cast<size_t>(packet->size);
        if (used > buffer.size() || buffer.size() - used < size) break;
        if (cache.dequeueBuffer(&packet) != OK) break;
        if (size > 0) memcpy(static_cast<uint8_t*>(buffer.data()) + used, packet->data, size);
        buffer.set_range(buffer.range_offset(), buffer.range_length() + size);
        av_packet_free(&packet);
    }
    setAwaited(streamIndex, false);
}

}  // namespace orvel
