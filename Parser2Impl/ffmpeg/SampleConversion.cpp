// Conversion: one packet into one media buffer.

#define LOG_TAG "FFmpegReader"

#include <string.h>

#include <log/log.h>
#include <media/stagefright/foundation/ADebug.h>

#include "NalConverter.h"
#include "OrvelMediaBuffer.h"
#include "PcmConverter.h"
#include "PresentationTimes.h"
#include "ReaderTrack.h"
#include "Timestamps.h"

namespace orvel {

using namespace android;

namespace {

// A payload that the framework's buffer cannot hold is delivered as an empty range.
void setTooLarge(IOrvelMediaBuffer& buffer, size_t needed) {
    ALOGE("sample of %zu bytes exceeds the buffer of %zu bytes", needed, buffer.size());
    buffer.set_range(0, 0);
}

void copyPacket(IOrvelMediaBuffer& buffer, const AVPacket& packet) {
    const auto size = static_cast<size_t>(packet.size);
    if (size > buffer.size()) {
        setTooLarge(buffer, size);
        return;
    }
    memcpy(buffer.data(), packet.data, size);
    buffer.set_range(0, size);
}

}  // namespace

status_t FFmpegReader::avPacketToMediaBuffer(AVPacket* packet, IOrvelMediaBuffer** out,
                                             int32_t trackIndex, const ReadOptions* options) {
    sp<FFmpegObject> object;  // both outlive the lock
    sp<Track> track;
    ScopedLock<ReaderMutex> lock(mLock);
    *out = nullptr;
    object = mFFmpegObject.promote();
    if (object == nullptr) {
        av_packet_free(&packet);
        return NO_INIT;
    }
    const FFmpegObject::TrackInfo& trackInfo = object->mTracks[static_cast<size_t>(trackIndex)];
    track = mTracks.valueFor(trackInfo.streamIndex);
    if (track == nullptr) {
        av_packet_free(&packet);
        return UNKNOWN_ERROR;
    }
    return convertPacket(trackInfo, *track, packet, out, options);
}

status_t FFmpegReader::convertPacket(const FFmpegObject::TrackInfo& trackInfo, Track& track,
                                     AVPacket* packet, IOrvelMediaBuffer** out,
                                     const ReadOptions* options) {
    if (track.mAwaited) track.mAwaited = false;

    if (packet->data != nullptr) {
        const int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        const int64_t timeUs = av_rescale_q(time, trackInfo.timeBase, kMicroseconds);

        if (track.mBuffer == nullptr) {
            const bool nonBlocking = options != nullptr && options->getNonBlocking();
            const bool widens = track.mConversion == Track::Conversion::RawAudio &&
                                trackInfo.bitsPerSample == 8;
            const size_t size = static_cast<size_t>(packet->size) * (widens ? 2 : 1);
            status_t status = track.mBufferGroup->acquire_buffer(&track.mBuffer, nonBlocking, size);
            if (status != OK) {
                CHECK(track.mBuffer == nullptr);
            } else if (track.mBuffer == nullptr) {
                status = NO_MEMORY;
            }
            if (status != OK) {
                mSpentPackets.give(packet);
                return status;
            }
        }

        switch (track.mConversion) {
            case Track::Conversion::RawAudio:
                processRawAudioBuffer(track, *packet, trackInfo.bitsPerSample, track.mIsAiff);
                break;
            case Track::Conversion::NalUnits:
                processNALUnitBuffer(track, *packet, track.mNalLengthSize);
                break;
            case Track::Conversion::Copy:
                copyPacket(*track.mBuffer, *packet);
                break;
        }

        OrvelMetaData& meta = track.mBuffer->meta_data();
        meta.setInt64(kKeyTime, timeUs);
        if ((packet->flags & AV_PKT_FLAG_KEY) != 0) meta.setInt32(kKeyIsSyncFrame, 1);
        int64_t seekTimeUs;
        ReadOptions::SeekMode seekMode;
        if (options != nullptr && options->getSeekTo(&seekTimeUs, &seekMode)) {
            const char* mime = nullptr;
            trackInfo.meta.findCString(kKeyMIMEType, &mime);
            ALOGD("[%s] seekTimeUs:%lld us, actual TimeUs:%lld us", mime,
                  static_cast<long long>(seekTimeUs), static_cast<long long>(timeUs));
            if (seekMode == ReadOptions::SEEK_CLOSEST && track.mIsVideo && seekTimeUs >= 0) {
                meta.setInt64(kKeyTargetTime, calculateTargetTimeUs(seekTimeUs, trackInfo, track));
            }
        }
    }

    *out = track.mBuffer;
    track.mBuffer = nullptr;
    mSpentPackets.give(packet);
    return OK;
}

int64_t FFmpegReader::calculateTargetTimeUs(int64_t seekTimeUs, const FFmpegObject::TrackInfo& info,
                                            const Track& track) {
    if (track.mPresentationTimes == nullptr) return seekTimeUs;
    const int64_t timestamp = timestampFromUs(seekTimeUs, info.timeBase);
    const int64_t found =
            track.mPresentationTimes->searchClosest(timestamp, ClosestMode::PresentationTime);
    return found < 0 ? seekTimeUs : av_rescale_q(found, info.timeBase, kMicroseconds);
}

void FFmpegReader::processNALUnitBuffer(Track& track, const AVPacket& packet,
                                        size_t nalSizeLength) {
    IOrvelMediaBuffer& buffer = *track.mBuffer;
    const auto srcSize = static_cast<size_t>(packet.size);
    const NalResult result = convertNalUnits(packet.data, srcSize, nalSizeLength,
                                             static_cast<uint8_t*>(buffer.data()), buffer.size());
    switch (result.status) {
        case NalStatus::Ok:
            buffer.set_range(0, result.dstOffset);
            return;
        case NalStatus::Malformed:
            ALOGE("Video is malformed. srcOffset:%zu, nalSizeLength:%zu,"
                  "                    nalLength:%zu, is not range[0 : %zu]",
                  result.srcOffset, nalSizeLength, result.nalLength, srcSize);
            break;
        case NalStatus::NoRoom:
            ALOGE("Malformed NAL : %zu %zu", result.dstOffset, buffer.size());
            break;
        case NalStatus::BadLengthSize:
            CHECK(!"Should not be here.");
    }
    buffer.set_range(0, 0);
}

void FFmpegReader::processRawAudioBuffer(Track& track, const AVPacket& packet,
                                         int32_t bitsPerSample, bool isAiff) {
    IOrvelMediaBuffer& buffer = *track.mBuffer;
    const PcmResult result =
            convertPcm(static_cast<uint8_t*>(buffer.data()), buffer.size(), packet.data,
                       static_cast<size_t>(packet.size), bitsPerSample, isAiff);
    if (!result.ok) {
        setTooLarge(buffer, result.length);
        return;
    }
    buffer.set_range(0, result.length);
}

}  // namespace orvel
