// The formats of video and timed-text tracks.

#define LOG_TAG "FFmpegObject"

#include <string.h>
#include <strings.h>

#include <memory>
#include <new>

#include <log/log.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "FFmpegExtensions.h"
#include "TrackFormat.h"
#include "bytes/Saturate.h"

namespace orvel {

using namespace android;

namespace {

constexpr int32_t kMaxSubtitleInputSize = 0x40000;

// Bytes of lengthSizeMinusOne in the configuration records of ISO/IEC 14496-15, 5.3.3.1 and
// 8.3.3.1. Shorter extradata is read in its zeroed padding.
constexpr int kAvcLengthSizeByte = 4;
constexpr int kHevcLengthSizeByte = 21;
static_assert(AV_INPUT_BUFFER_PADDING_SIZE > kHevcLengthSizeByte);

bool carriesConfigurationRecords(const char* fileMime) {
    return fileMime != nullptr && (strcmp(fileMime, MEDIA_MIMETYPE_CONTAINER_MPEG4) == 0 ||
                                   strcmp(fileMime, MEDIA_MIMETYPE_CONTAINER_MATROSKA) == 0);
}

}  // namespace

void initVideoMeta(const AVStream* stream, OrvelMetaData& meta, const char* mime,
                   const char* fileMime, std::optional<int32_t> rotation) {
    const AVCodecParameters* par = stream->codecpar;
    meta.setInt32(kKeyWidth, par->width);
    meta.setInt32(kKeyHeight, par->height);
    if (rotation) meta.setInt32(kKeyRotationDegrees, *rotation);
    const AVRational rate = stream->avg_frame_rate;
    if (rate.num != 0 && rate.den != 0) {
        const double framesPerSecond = static_cast<double>(rate.num) / rate.den;
        meta.setInt32(kKeyFrameRate, saturatingInt32FromDouble(framesPerSecond + 0.5));
    }
    meta.setInt32(kKeyMaxInputSize,
                  saturatingInt32FromDouble(saturatingProduct(par->width, par->height) * 1.5));
    if (strcasecmp(mime, MEDIA_MIMETYPE_VIDEO_MPEG4) == 0) meta.setInt32(kKeyUseArbitraryMode, 1);

    if (par->extradata_size >= 1) {
        const uint8_t* extradata = par->extradata;
        const auto size = static_cast<size_t>(par->extradata_size);
        const bool records = carriesConfigurationRecords(fileMime);
        if (records && strcasecmp(mime, MEDIA_MIMETYPE_VIDEO_AVC) == 0) {
            meta.setData(kKeyCsdAvc, kKeyCsdAvc, extradata, size);
            meta.setInt32(kKeyNalLengthSize, (extradata[kAvcLengthSizeByte] & 3) + 1);
        } else if (records && strcasecmp(mime, MEDIA_MIMETYPE_VIDEO_HEVC) == 0) {
            meta.setData(kKeyCsdHevc, kKeyCsdHevc, extradata, size);
            meta.setInt32(kKeyNalLengthSize, (extradata[kHevcLengthSizeByte] & 3) + 1);
        } else {
            meta.setData(kKeyRawCodecSpecificData, 0, extradata, size);
        }
    }
    setOrvelSpecificMeta(stream, meta);
}

void initSubtitleMeta(const AVStream* stream, OrvelMetaData& meta, FFmpegExtensions& extensions) {
    meta.setInt32(kKeyMaxInputSize, kMaxSubtitleInputSize);
    if (stream->codecpar->codec_id != AV_CODEC_ID_MOV_TEXT) return;
    const auto descriptions = extensions.timedTextDescriptions(stream);
    uint64_t total = 0;
    for (const ByteRange& description : descriptions)
        total += static_cast<uint64_t>(description.size());
    if (total == 0 || total > UINT32_MAX) return;
    const std::unique_ptr<uint8_t[]> data(new (std::nothrow) uint8_t[total]);
    if (data == nullptr) {
        ALOGE("NO MEMORY!");
        return;
    }
    if (extensions.readTimedText(descriptions, data.get())) {
        meta.setData(kKeyTextFormatData, 0, data.get(), static_cast<size_t>(total));
    }
}

}  // namespace orvel
