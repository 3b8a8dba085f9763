// The format of an audio track, and the codec-parameter blob of every track.

#define LOG_TAG "FFmpegObject"

#include <strings.h>

#include <new>

#include <log/log.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "CodecMime.h"
#include "CodecParametersBlob.h"
#include "TrackFormat.h"
#include "bytes/CodecConfig.h"

namespace orvel {

using namespace android;

namespace {

constexpr int32_t kMaxAudioInputSize = 0x40000;
constexpr int32_t kPcmEncoding16Bit = 2;

void parseAacMeta(OrvelMetaData& meta, const uint8_t* data, int size) {
    meta.setData(kKeyAacCodecSpecificData, kTypeNone, data, static_cast<size_t>(size));
    MPEG4AudioConfig config = {};
    if (compat::parseMpeg4AudioConfig(&config, data, size) < 0) return;
    ALOGI("mp4a config, sbr:%d, obj:%d, ext obj:%d, cfg.sample_rate:%d, ext_sample_rate:%d",
          config.sbr, config.object_type, config.ext_object_type, config.sample_rate,
          config.ext_sample_rate);
    // The core rate: with SBR the stream's own rate is that of the extension.
    meta.setInt32(kKeySampleRate, config.sample_rate);
    meta.setInt32(kKeyAacFormatAdif, 0);
    meta.setInt32(kKeyAacProfile, config.object_type);
    // Lands in the same entry as kKeyAacFormatAdif.
    meta.setInt32(kKeyAacFormatAdifType, config.object_type);
}

void parseAlacMeta(OrvelMetaData& meta, const uint8_t* data, int size) {
    const auto cookie = alacCookieFromExtradata(data, static_cast<size_t>(size));
    if (!cookie) return;
    meta.setData(kKeyRawCodecSpecificData, kTypeNone, cookie->data(), cookie->size());
}

void parseFlacMeta(OrvelMetaData& meta, const uint8_t* data, int size) {
    const auto sizes = flacBlockSizesFromStreamInfo(data, static_cast<size_t>(size));
    if (!sizes) return;
    meta.setInt32(kKeyMinBlockSize, sizes->minBlockSize);
    meta.setInt32(kKeyMaxBlockSize, sizes->maxBlockSize);
    meta.setInt32(kKeyMinFrameSize, sizes->minFrameSize);
    meta.setInt32(kKeyMaxFrameSize, sizes->maxFrameSize);
}

}  // namespace

void initAudioMeta(const AVStream* stream, OrvelMetaData& meta, const char* mime) {
    const AVCodecParameters* par = stream->codecpar;
    meta.setInt32(kKeySampleRate, par->sample_rate);
    meta.setInt32(kKeyChannelCount, compat::channelCount(*par));
    if (par->bit_rate != 0) {
        const auto bitrate = static_cast<int32_t>(par->bit_rate & 0xFFFFFFFF);
        meta.setInt32(kKeyBitrate, bitrate);
        meta.setInt32(kKeyMaxBitrate, bitrate);
    }
    const int bits = par->bits_per_coded_sample;
    if (bits >= 1) meta.setInt32(kKeyBitsPerSample, bits);
    if (strcasecmp(mime, MEDIA_MIMETYPE_AUDIO_RAW) == 0) {
        meta.setInt32(kKeyPcmEncoding, getAudioEncoding(static_cast<AVSampleFormat>(par->format)));
        if (bits == 8) {
            // The reader widens 8-bit samples.
            meta.setInt32(kKeyBitsPerSample, 16);
            meta.setInt32(kKeyPcmEncoding, kPcmEncoding16Bit);
        }
    }
    if (par->initial_padding != 0 || par->trailing_padding != 0) {
        meta.setInt32(kKeyEncoderDelay, par->initial_padding);
        meta.setInt32(kKeyEncoderPadding, par->trailing_padding);
    }
    meta.setInt32(kKeyMaxInputSize, kMaxAudioInputSize);
    if (par->extradata_size >= 1) {
        switch (par->codec_id) {
            case AV_CODEC_ID_ALAC:
                parseAlacMeta(meta, par->extradata, par->extradata_size);
                break;
            case AV_CODEC_ID_FLAC:
                parseFlacMeta(meta, par->extradata, par->extradata_size);
                break;
            case AV_CODEC_ID_AAC:
                parseAacMeta(meta, par->extradata, par->extradata_size);
                break;
            default:
                break;  // the blob carries it
        }
    }
    setOrvelSpecificMeta(stream, meta);
}

void setOrvelSpecificMeta(const AVStream* stream, OrvelMetaData& meta) {
    const AVCodecParameters* par = stream->codecpar;
    const size_t size = codecParametersBlobSize(*par);
    const sp<ABuffer> blob = new (std::nothrow) ABuffer(size);
    if (blob == nullptr || blob->base() == nullptr) return;
    writeCodecParametersBlob(*par, blob->data());
    if (par->codec_type == AVMEDIA_TYPE_AUDIO) {
        meta.setData(kKeyOrvelAudioCsd, kKeyOrvelAudioCsd, blob->data(), size);
    } else if (par->codec_type == AVMEDIA_TYPE_VIDEO) {
        meta.setData(kKeyOrvelVideoCsd, kKeyOrvelVideoCsd, blob->data(), size);
    }
}

}  // namespace orvel
