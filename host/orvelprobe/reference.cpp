#include "reference.h"

#include <media/stagefright/foundation/MediaDefs.h>

#include <algorithm>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/mathematics.h>
}

namespace orvel::probe {
namespace {

using namespace android;

constexpr AVRational kMicroseconds = {1, 1000000};

// Which demuxer reads a container. ASF has a second one, which the plug-in prefers to none.
const char* demuxerOf(const std::string& mime) {
    const struct {
        const char* mime;
        const char* demuxer;
    } rows[] = {
            {MEDIA_MIMETYPE_CONTAINER_MPEG4, "mov"},
            {MEDIA_MIMETYPE_AUDIO_MPEG, "mp3"},
            {MEDIA_MIMETYPE_CONTAINER_WAV, "wav"},
            {MEDIA_MIMETYPE_AUDIO_AIFF, "aiff"},
            {MEDIA_MIMETYPE_CONTAINER_RM, "rm"},
            {MEDIA_MIMETYPE_CONTAINER_MATROSKA, "matroska"},
            {MEDIA_MIMETYPE_AUDIO_FLAC, "flac"},
            {MEDIA_MIMETYPE_AUDIO_APE, "ape"},
            {MEDIA_MIMETYPE_CONTAINER_ASF, "asf"},
            {MEDIA_MIMETYPE_AUDIO_AC3, "ac3"},
            {MEDIA_MIMETYPE_AUDIO_EAC3, "eac3"},
            {MEDIA_MIMETYPE_CONTAINER_DSF, "dsf"},
            {MEDIA_MIMETYPE_CONTAINER_DFF, "iff"},
            {MEDIA_MIMETYPE_CONTAINER_AVI, "avi"},
            {MEDIA_MIMETYPE_AUDIO_DTS, "dts"},
            {MEDIA_MIMETYPE_CONTAINER_FLV, "flv"},
    };
    for (const auto& row : rows) {
        if (mime == row.mime) return row.demuxer;
    }
    return nullptr;
}

// What the plug-in promises to deliver, and under which name; null: no track.
const char* mimeOf(const AVCodecParameters& codec) {
    switch (codec.codec_id) {
        case AV_CODEC_ID_MP3:
            return MEDIA_MIMETYPE_AUDIO_MPEG;
        case AV_CODEC_ID_AAC:
            return MEDIA_MIMETYPE_AUDIO_AAC;
        case AV_CODEC_ID_FLAC:
            return MEDIA_MIMETYPE_AUDIO_FLAC;
        case AV_CODEC_ID_ALAC:
            return MEDIA_MIMETYPE_AUDIO_ALAC;
        case AV_CODEC_ID_APE:
            return MEDIA_MIMETYPE_AUDIO_APE;
        case AV_CODEC_ID_PCM_S16LE:
        case AV_CODEC_ID_PCM_S16BE:
        case AV_CODEC_ID_PCM_S24LE:
        case AV_CODEC_ID_PCM_S24BE:
        case AV_CODEC_ID_PCM_S8:
        case AV_CODEC_ID_PCM_U8:
            return MEDIA_MIMETYPE_AUDIO_RAW;
        case AV_CODEC_ID_DTS:
            return MEDIA_MIMETYPE_AUDIO_DTS;
        case AV_CODEC_ID_AC3:
            return MEDIA_MIMETYPE_AUDIO_AC3;
        case AV_CODEC_ID_EAC3:
            return MEDIA_MIMETYPE_AUDIO_EAC3;
        case AV_CODEC_ID_COOK:
            return MEDIA_MIMETYPE_AUDIO_COOK;
        case AV_CODEC_ID_AMR_NB:
            return MEDIA_MIMETYPE_AUDIO_AMR_NB;
        case AV_CODEC_ID_AMR_WB:
            return MEDIA_MIMETYPE_AUDIO_AMR_WB;
        case AV_CODEC_ID_H264:
            return MEDIA_MIMETYPE_VIDEO_AVC;
        case AV_CODEC_ID_HEVC:
            return MEDIA_MIMETYPE_VIDEO_HEVC;
        case AV_CODEC_ID_VP8:
            return MEDIA_MIMETYPE_VIDEO_VP8;
        case AV_CODEC_ID_VP9:
            return MEDIA_MIMETYPE_VIDEO_VP9;
        case AV_CODEC_ID_H263:
        case AV_CODEC_ID_H263I:
        case AV_CODEC_ID_H263P:
            return MEDIA_MIMETYPE_VIDEO_H263;
        case AV_CODEC_ID_RV10:
        case AV_CODEC_ID_RV20:
        case AV_CODEC_ID_RV30:
        case AV_CODEC_ID_RV40:
            return MEDIA_MIMETYPE_VIDEO_REAL;
        case AV_CODEC_ID_MPEG4:
            return MEDIA_MIMETYPE_VIDEO_MPEG4;
        case AV_CODEC_ID_MSMPEG4V1:
        case AV_CODEC_ID_MSMPEG4V2:
        case AV_CODEC_ID_MSMPEG4V3:
            return MEDIA_MIMETYPE_VIDEO_DIVX3;
        case AV_CODEC_ID_MPEG2VIDEO:
            return MEDIA_MIMETYPE_VIDEO_MPEG2;
        case AV_CODEC_ID_FLV1:
            return MEDIA_MIMETYPE_VIDEO_FLV1;
        case AV_CODEC_ID_MOV_TEXT:
            return MEDIA_MIMETYPE_TEXT_3GPP;
        case AV_CODEC_ID_NONE:
            // Several sample descriptions: the library gives the codec up, the tag stays.
            return codec.codec_type == AVMEDIA_TYPE_SUBTITLE &&
                                   codec.codec_tag == MKTAG('t', 'x', '3', 'g')
                           ? MEDIA_MIMETYPE_TEXT_3GPP
                           : nullptr;
        default:
            return nullptr;
    }
}

std::string errorText(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof(text));
    return text;
}

}  // namespace

struct Reference::Context {
    ~Context() {
        av_packet_free(&packet);
        avformat_close_input(&format);
    }
    AVFormatContext* format = nullptr;
    AVPacket* packet = av_packet_alloc();
};

Reference::Reference(const std::string& path, const std::string& containerMime)
    : mContext(std::make_unique<Context>()) {
    const char* name = demuxerOf(containerMime);
    const auto* demuxer = name ? av_find_input_format(name) : nullptr;
    if (!demuxer && !containerMime.empty()) {
        throw ReferenceError("libavformat has no demuxer for \"" + containerMime + "\"");
    }
    AVDictionary* options = nullptr;
    av_dict_set(&options, "ignore_editlist", "1", 0);
    int result =
            avformat_open_input(&mContext->format, ("file:" + path).c_str(), demuxer, &options);
    av_dict_free(&options);
    if (result >= 0) result = avformat_find_stream_info(mContext->format, nullptr);
    if (result < 0) throw ReferenceError("libavformat cannot open it: " + errorText(result));
    for (unsigned i = 0; i < mContext->format->nb_streams; i++) {
        AVStream* stream = mContext->format->streams[i];
        stream->discard = AVDISCARD_ALL;
        const AVMediaType type = stream->codecpar->codec_type;
        const bool picture = (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        const char* mime = mimeOf(*stream->codecpar);
        if (!mime || (picture && type == AVMEDIA_TYPE_VIDEO)) continue;
        if (type != AVMEDIA_TYPE_VIDEO && type != AVMEDIA_TYPE_AUDIO &&
            type != AVMEDIA_TYPE_SUBTITLE) {
            continue;
        }
        mStreams.push_back({static_cast<int>(i), mime, stream->codecpar->bits_per_coded_sample});
    }
    mQueues.resize(mStreams.size());
    mSelected.resize(mStreams.size());
}

Reference::~Reference() = default;

void Reference::select(const std::vector<size_t>& positions) {
    for (const size_t position : positions) {
        mSelected[position] = true;
        mContext->format->streams[mStreams[position].index]->discard = AVDISCARD_DEFAULT;
    }
}

const ReferencePacket* Reference::peek(size_t position, size_t ahead) {
    std::deque<ReferencePacket>& queue = mQueues[position];
    while (queue.size() <= ahead) {
        if (!readOne()) return nullptr;
    }
    return &queue[ahead];
}

bool Reference::readOne() {
    if (mEnded) return false;
    AVPacket* packet = mContext->packet;
    const int result = av_read_frame(mContext->format, packet);
    if (result < 0) {
        mEnded = true;
        mFailed = result != AVERROR_EOF && !avio_feof(mContext->format->pb);
        return false;
    }
    for (size_t i = 0; i < mStreams.size(); i++) {
        // The library delivers what it buffered while opening also of discarded streams. A packet
        // without data is none: nobody could tell its sample from the end.
        if (mStreams[i].index != packet->stream_index || !mSelected[i]) continue;
        const AVStream* stream = mContext->format->streams[packet->stream_index];
        const int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        mQueues[i].push_back({av_rescale_q(time, stream->time_base, kMicroseconds),
                              (packet->flags & AV_PKT_FLAG_KEY) != 0,
                              {packet->data, packet->data + packet->size}});
    }
    av_packet_unref(packet);
    return true;
}

std::string Reference::library() {
    const unsigned version = avformat_version();
    return "libavformat " + std::to_string(AV_VERSION_MAJOR(version)) + "." +
           std::to_string(AV_VERSION_MINOR(version)) + "." +
           std::to_string(AV_VERSION_MICRO(version));
}

}  // namespace orvel::probe
