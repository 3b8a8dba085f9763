// Conversion: one packet into one media buffer.

#define LOG_TAG "FFmpegReader"
#include "SampleConversion.h"

#include <string.h>

#include <log/log.h>
#include <media/stagefright/foundation/ADebug.h>

#include "bytes/NalConverter.h"
#include "bytes/PcmConverter.h"
#include "bytes/PresentationTimes.h"
#include "ffmpeg/Timestamps.h"

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

// The time that the decoder is to reach for a seek to seekTimeUs.
int64_t calculateTargetTimeUs(int64_t seekTimeUs, const FFmpegReader::Track& track) {
    const PresentationTimes* times = track.presentationTimes();
    if (times == nullptr) return seekTimeUs;
    const AVRational timeBase = track.info().timeBase;
    const int64_t found = times->searchClosest(timestampFromUs(seekTimeUs, timeBase),
                                               ClosestMode::PresentationTime);
    return found < 0 ? seekTimeUs : av_rescale_q(found, timeBase, kMicroseconds);
}

void processNALUnitBuffer(IOrvelMediaBuffer& buffer, const AVPacket& packet, size_t nalSizeLength) {
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
            CHECK(!"Should not be here.");  // NOLINT: the text is what it promises
    }
    buffer.set_range(0, 0);
}

void processRawAudioBuffer(IOrvelMediaBuffer& buffer, const AVPacket& packet, int32_t bitsPerSample,
                           bool isAiff) {
    const PcmResult result =
            convertPcm(static_cast<uint8_t*>(buffer.data()), buffer.size(), packet.data,
                       static_cast<size_t>(packet.size), bitsPerSample, isAiff);
    if (result.ok) {
        buffer.set_range(0, result.length);
    } else {
        setTooLarge(buffer, result.length);
    }
}

}  // namespace

status_t convertPacket(FFmpegReader::Track& track, const AVPacket& packet,
                       const FFmpegReader::ReadOptions* options, IOrvelMediaBuffer** out) {
    using Conversion = FFmpegReader::Track::Conversion;
    track.setAwaited(false);
    track.setFresh(false);
    if (packet.data != nullptr) {
        const TrackInfo& trackInfo = track.info();
        const FFmpegReader::Track::SampleForm& form = track.form();
        const int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
        const int64_t timeUs = av_rescale_q(time, trackInfo.timeBase, kMicroseconds);

        const bool nonBlocking = options != nullptr && options->getNonBlocking();
        const bool widens = form.conversion == Conversion::RawAudio && trackInfo.bitsPerSample == 8;
        const size_t size = static_cast<size_t>(packet.size) * (widens ? 2 : 1);
        const status_t status = track.acquireBuffer(nonBlocking, size);
        if (status != OK) return status;

        IOrvelMediaBuffer& buffer = *track.buffer();
        switch (form.conversion) {
            case Conversion::RawAudio:
                processRawAudioBuffer(buffer, packet, trackInfo.bitsPerSample, form.isAiff);
                break;
            case Conversion::NalUnits:
                processNALUnitBuffer(buffer, packet, form.nalLengthSize);
                break;
            case Conversion::Copy:
                copyPacket(buffer, packet);
                break;
        }

        OrvelMetaData& meta = buffer.meta_data();
        meta.setInt64(kKeyTime, timeUs);
        if ((packet.flags & AV_PKT_FLAG_KEY) != 0) meta.setInt32(kKeyIsSyncFrame, 1);
        int64_t seekTimeUs;
        FFmpegReader::ReadOptions::SeekMode seekMode;
        if (options != nullptr && options->getSeekTo(&seekTimeUs, &seekMode)) {
            const char* mime = nullptr;
            trackInfo.meta.findCString(kKeyMIMEType, &mime);
            ALOGD("[%s] seekTimeUs:%lld us, actual TimeUs:%lld us", mime,
                  static_cast<long long>(seekTimeUs), static_cast<long long>(timeUs));
            if (seekMode == FFmpegReader::ReadOptions::SEEK_CLOSEST && form.isVideo &&
                seekTimeUs >= 0) {
                meta.setInt64(kKeyTargetTime, calculateTargetTimeUs(seekTimeUs, track));
            }
        }
    }
    *out = track.takeBuffer();
    return OK;
}

}  // namespace orvel
