#include "CodecMime.h"

#include <string.h>
#include <strings.h>

#include <media/stagefright/foundation/MediaDefs.h>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace orvel {

using namespace android;

namespace {

struct CodecMime {
    AVCodecID id;
    const char* mime;
};

struct SpecialVideo {
    const char* mime;
    const char* codecTag;  // "all": whatever the tag
};

// PCM encoding codes of the platform, and one of the plug-in's own.
constexpr int32_t kEncoding16Bit = 2;
constexpr int32_t kEncoding8Bit = 3;
constexpr int32_t kEncodingFloat = 4;
constexpr int32_t kEncoding32Bit = 100;  // outside the platform's set
constexpr int32_t kEncodingUnused = 0;   // 8-byte samples are answered before the look-up

constexpr int32_t kSampleFormatEncodings[] = {
        kEncoding8Bit,    // AV_SAMPLE_FMT_U8
        kEncoding16Bit,   // AV_SAMPLE_FMT_S16
        kEncoding32Bit,   // AV_SAMPLE_FMT_S32
        kEncodingFloat,   // AV_SAMPLE_FMT_FLT
        kEncodingUnused,  // AV_SAMPLE_FMT_DBL
        kEncoding8Bit,    // AV_SAMPLE_FMT_U8P
        kEncoding16Bit,   // AV_SAMPLE_FMT_S16P
        kEncoding32Bit,   // AV_SAMPLE_FMT_S32P
        kEncodingFloat,   // AV_SAMPLE_FMT_FLTP
        kEncodingUnused,  // AV_SAMPLE_FMT_DBLP
        kEncodingUnused,  // AV_SAMPLE_FMT_S64
        kEncodingUnused,  // AV_SAMPLE_FMT_S64P
};
static_assert(sizeof(kSampleFormatEncodings) / sizeof(int32_t) == 12);
static_assert(AV_SAMPLE_FMT_U8 == 0 && AV_SAMPLE_FMT_DBLP == 9 && AV_SAMPLE_FMT_S64P == 11,
              "the table is indexed by FFmpeg's numbers");

// What the private codec-parameter blob and the log lines carry are FFmpeg's numbers, which must be
// those of FFmpeg 4.x whatever version is built against.
static_assert(AV_CODEC_ID_MP3 == 0x15001 && AV_CODEC_ID_EAC3 == 0x15028 &&
              AV_CODEC_ID_PCM_S24BE == 0x1000D && AV_CODEC_ID_HEVC == 173 &&
              AV_CODEC_ID_VP9 == 167 && AV_CODEC_ID_MOV_TEXT == 0x17005);

}  // namespace

const char* codecId2MimeType(AVCodecID id) {
    static const CodecMime kCodecs[] = {
            {AV_CODEC_ID_MP3, MEDIA_MIMETYPE_AUDIO_MPEG},
            {AV_CODEC_ID_AAC, MEDIA_MIMETYPE_AUDIO_AAC},
            {AV_CODEC_ID_FLAC, MEDIA_MIMETYPE_AUDIO_FLAC},
            {AV_CODEC_ID_ALAC, MEDIA_MIMETYPE_AUDIO_ALAC},
            {AV_CODEC_ID_APE, MEDIA_MIMETYPE_AUDIO_APE},
            {AV_CODEC_ID_PCM_S16LE, MEDIA_MIMETYPE_AUDIO_RAW},
            {AV_CODEC_ID_PCM_S16BE, MEDIA_MIMETYPE_AUDIO_RAW},
            {AV_CODEC_ID_PCM_S24LE, MEDIA_MIMETYPE_AUDIO_RAW},
            {AV_CODEC_ID_PCM_S24BE, MEDIA_MIMETYPE_AUDIO_RAW},
            {AV_CODEC_ID_PCM_S8, MEDIA_MIMETYPE_AUDIO_RAW},
            {AV_CODEC_ID_PCM_U8, MEDIA_MIMETYPE_AUDIO_RAW},
            {AV_CODEC_ID_DTS, MEDIA_MIMETYPE_AUDIO_DTS},
            {AV_CODEC_ID_AC3, MEDIA_MIMETYPE_AUDIO_AC3},
            {AV_CODEC_ID_EAC3, MEDIA_MIMETYPE_AUDIO_EAC3},
            {AV_CODEC_ID_COOK, MEDIA_MIMETYPE_AUDIO_COOK},
            {AV_CODEC_ID_AMR_NB, MEDIA_MIMETYPE_AUDIO_AMR_NB},
            {AV_CODEC_ID_AMR_WB, MEDIA_MIMETYPE_AUDIO_AMR_WB},
            {AV_CODEC_ID_H264, MEDIA_MIMETYPE_VIDEO_AVC},
            {AV_CODEC_ID_HEVC, MEDIA_MIMETYPE_VIDEO_HEVC},
            {AV_CODEC_ID_VP8, MEDIA_MIMETYPE_VIDEO_VP8},
            {AV_CODEC_ID_VP9, MEDIA_MIMETYPE_VIDEO_VP9},
            {AV_CODEC_ID_H263, MEDIA_MIMETYPE_VIDEO_H263},
            {AV_CODEC_ID_H263I, MEDIA_MIMETYPE_VIDEO_H263},
            {AV_CODEC_ID_H263P, MEDIA_MIMETYPE_VIDEO_H263},
            {AV_CODEC_ID_RV10, MEDIA_MIMETYPE_VIDEO_REAL},
            {AV_CODEC_ID_RV20, MEDIA_MIMETYPE_VIDEO_REAL},
            {AV_CODEC_ID_RV30, MEDIA_MIMETYPE_VIDEO_REAL},
            {AV_CODEC_ID_RV40, MEDIA_MIMETYPE_VIDEO_REAL},
            {AV_CODEC_ID_MPEG4, MEDIA_MIMETYPE_VIDEO_MPEG4},
            {AV_CODEC_ID_MSMPEG4V1, MEDIA_MIMETYPE_VIDEO_DIVX3},
            {AV_CODEC_ID_MSMPEG4V2, MEDIA_MIMETYPE_VIDEO_DIVX3},
            {AV_CODEC_ID_MSMPEG4V3, MEDIA_MIMETYPE_VIDEO_DIVX3},
            {AV_CODEC_ID_MPEG2VIDEO, MEDIA_MIMETYPE_VIDEO_MPEG2},
            {AV_CODEC_ID_FLV1, MEDIA_MIMETYPE_VIDEO_FLV1},
            {AV_CODEC_ID_MOV_TEXT, MEDIA_MIMETYPE_TEXT_3GPP},
    };
    static_assert(sizeof(kCodecs) / sizeof(kCodecs[0]) == 35);
    for (const CodecMime& codec : kCodecs) {
        if (codec.id == id) return codec.mime;
    }
    return nullptr;
}

bool isSupportedMimeTypeWithCodec(const char* mime, const char* codecTag) {
    static const SpecialVideo kSpecialVideos[] = {
            {MEDIA_MIMETYPE_VIDEO_DIVX3, "all"},  {MEDIA_MIMETYPE_VIDEO_FLV1, "all"},
            {MEDIA_MIMETYPE_VIDEO_MPEG4, "DIV3"}, {MEDIA_MIMETYPE_VIDEO_MPEG4, "DIV4"},
            {MEDIA_MIMETYPE_VIDEO_MPEG4, "DIV5"}, {MEDIA_MIMETYPE_VIDEO_MPEG4, "DIVX"},
            {MEDIA_MIMETYPE_VIDEO_MPEG4, "DX50"}, {MEDIA_MIMETYPE_VIDEO_MPEG4, "XVID"},
    };
    static_assert(sizeof(kSpecialVideos) / sizeof(kSpecialVideos[0]) == 8);
    for (const SpecialVideo& row : kSpecialVideos) {
        if (strncasecmp(mime, row.mime, strlen(row.mime)) != 0) continue;
        const size_t tagLength = strlen(row.codecTag);
        if (strncasecmp(row.codecTag, "all", tagLength) == 0 ||
            strncasecmp(codecTag, row.codecTag, tagLength) == 0) {
            return true;
        }
    }
    return false;
}

int32_t getAudioEncoding(AVSampleFormat format) {
    const auto index = static_cast<unsigned>(format);
    if (index >= sizeof(kSampleFormatEncodings) / sizeof(int32_t)) return kEncoding16Bit;
    if (av_get_bytes_per_sample(format) == 8) return kEncoding16Bit;
    return kSampleFormatEncodings[index];
}

}  // namespace orvel
