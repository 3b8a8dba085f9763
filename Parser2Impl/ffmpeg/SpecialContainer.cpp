#define LOG_TAG "FFmpegObject"
#define LOG_NDEBUG 0  // the main audio, which "orvelprobe --explain" shows
#include "SpecialContainer.h"

#include <strings.h>

#include <log/log.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "CodecMime.h"

namespace orvel {

int bestStream(AVFormatContext* context, AVMediaType type) {
    return av_find_best_stream(context, type, -1, -1, nullptr, 0);
}

bool isSupportedSpecialAudio(AVFormatContext* context) {
    const int index = bestStream(context, AVMEDIA_TYPE_AUDIO);
    const AVCodecID id = index < 0 ? AV_CODEC_ID_NONE : context->streams[index]->codecpar->codec_id;
    ALOGV("main audio:%s", avcodec_get_name(id));
    const char* mime = codecId2MimeType(id);
    if (mime == nullptr || (strcasecmp(mime, android::MEDIA_MIMETYPE_AUDIO_DTS) != 0 &&
                            strcasecmp(mime, android::MEDIA_MIMETYPE_AUDIO_EAC3) != 0)) {
        return false;
    }
    ALOGI("special audio, mimetype:%s", mime);
    return true;
}

bool isSupportedSpecialVideo(AVFormatContext* context) {
    const int index = bestStream(context, AVMEDIA_TYPE_VIDEO);
    if (index < 0) return false;
    const AVCodecParameters* parameters = context->streams[index]->codecpar;
    const char* mime = codecId2MimeType(parameters->codec_id);
    if (mime == nullptr) return false;
    char tag[AV_FOURCC_MAX_STRING_SIZE] = {};
    av_fourcc_make_string(tag, parameters->codec_tag);
    return isSupportedMimeTypeWithCodec(mime, tag);
}

bool isGeneratedByDivxTools(const AVFormatContext* context) {
    static constexpr char kDivxEncoder[] = "libDivXMediaFormat";
    const AVDictionaryEntry* encoder = av_dict_get(context->metadata, "encoder", nullptr, 0);
    return encoder != nullptr &&
           strncasecmp(encoder->value, kDivxEncoder, sizeof(kDivxEncoder) - 1) == 0;
}

}  // namespace orvel
