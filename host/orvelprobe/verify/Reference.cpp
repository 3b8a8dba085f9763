#include "verify/Reference.h"

#include <media/stagefright/foundation/MediaDefs.h>

#include "Codecs.h"
#include "Words.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/mathematics.h>
}

namespace orvel::probe {
namespace {

using namespace android;

// Which demuxer reads a container. ASF has a second one, which the plug-in prefers to none.
const char* demuxerOf(const std::string& mime) {
    // clang-format off
    static const char* const kRows[][2] = {
            {MEDIA_MIMETYPE_CONTAINER_MPEG4, "mov"}, {MEDIA_MIMETYPE_AUDIO_MPEG, "mp3"},
            {MEDIA_MIMETYPE_CONTAINER_WAV, "wav"}, {MEDIA_MIMETYPE_AUDIO_AIFF, "aiff"},
            {MEDIA_MIMETYPE_CONTAINER_RM, "rm"}, {MEDIA_MIMETYPE_CONTAINER_MATROSKA, "matroska"},
            {MEDIA_MIMETYPE_AUDIO_FLAC, "flac"}, {MEDIA_MIMETYPE_AUDIO_APE, "ape"},
            {MEDIA_MIMETYPE_CONTAINER_ASF, "asf"}, {MEDIA_MIMETYPE_AUDIO_AC3, "ac3"},
            {MEDIA_MIMETYPE_AUDIO_EAC3, "eac3"}, {MEDIA_MIMETYPE_CONTAINER_DSF, "dsf"},
            {MEDIA_MIMETYPE_CONTAINER_DFF, "iff"}, {MEDIA_MIMETYPE_CONTAINER_AVI, "avi"},
            {MEDIA_MIMETYPE_AUDIO_DTS, "dts"}, {MEDIA_MIMETYPE_CONTAINER_FLV, "flv"}};
    // clang-format on
    for (const auto& row : kRows)
        if (mime == row[0]) return row[1];
    return nullptr;
}

const char* mimeOf(const AVCodecParameters& codec) {
    // Several sample descriptions: the library gives the codec up, the tag stays.
    if (codec.codec_id == AV_CODEC_ID_NONE && codec.codec_type == AVMEDIA_TYPE_SUBTITLE &&
        codec.codec_tag == MKTAG('t', 'x', '3', 'g')) {
        return MEDIA_MIMETYPE_TEXT_3GPP;
    }
    for (const CodecRow& row : codecRows())
        if (row.codec == codec.codec_id) return row.mime;
    return nullptr;
}

std::string errorText(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof(text));
    return text;
}

}  // namespace

void Reference::Close::operator()(AVFormatContext* context) const {
    avformat_close_input(&context);
}

Reference::Reference(const std::string& path, const std::string& containerMime) {
    const char* name = demuxerOf(containerMime);
    auto* demuxer = name ? av_find_input_format(name) : nullptr;
    if (!demuxer && !containerMime.empty()) {
        throw ReferenceError("libavformat has no demuxer for \"" + containerMime + "\"");
    }
    AVDictionary* options = nullptr;
    av_dict_set(&options, "ignore_editlist", "1", 0);
    AVFormatContext* context = nullptr;
    int result = avformat_open_input(&context, ("file:" + path).c_str(), demuxer, &options);
    mContext.reset(context);
    av_dict_free(&options);
    if (result >= 0) result = avformat_find_stream_info(context, nullptr);
    if (result < 0) throw ReferenceError("libavformat cannot open it: " + errorText(result));
    for (unsigned i = 0; i < context->nb_streams; i++) {
        AVStream* stream = context->streams[i];
        stream->discard = AVDISCARD_ALL;
        const AVMediaType type = stream->codecpar->codec_type;
        const bool picture = (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        const char* mime = mimeOf(*stream->codecpar);
        const bool isTrack = (type == AVMEDIA_TYPE_VIDEO && !picture) ||
                             type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_SUBTITLE;
        if (!mime || !isTrack) continue;
        const int bits = stream->codecpar->bits_per_coded_sample;
        mStreams.push_back({static_cast<int>(i), mime, bits, false, {}});
    }
}

void Reference::select(size_t position) {
    mStreams[position].selected = true;
    mContext->streams[mStreams[position].index]->discard = AVDISCARD_DEFAULT;
}

const ReferencePacket* Reference::peek(size_t position, size_t ahead) {
    std::deque<ReferencePacket>& queue = mStreams[position].queue;
    while (queue.size() <= ahead)
        if (!readOne()) return nullptr;
    return &queue[ahead];
}

bool Reference::readOne() {
    if (mEnded) return false;
    AVPacket* packet = av_packet_alloc();
    const int result = av_read_frame(mContext.get(), packet);
    if (result < 0) {
        mEnded = true;
        mFailed = result != AVERROR_EOF && !avio_feof(mContext->pb);
    }
    for (ReferenceStream& stream : mStreams) {
        // The library delivers what it buffered while opening also of discarded streams.
        if (result < 0 || stream.index != packet->stream_index || !stream.selected) continue;
        const AVRational base = mContext->streams[packet->stream_index]->time_base;
        const int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        stream.queue.push_back({av_rescale_q(time, base, {1, 1000000}),
                                (packet->flags & AV_PKT_FLAG_KEY) != 0,
                                {packet->data, packet->data + packet->size}});
    }
    av_packet_free(&packet);
    return !mEnded;
}

std::string Reference::library() {
    const unsigned version = avformat_version();
    return formatted("libavformat %u.%u.%u", AV_VERSION_MAJOR(version), AV_VERSION_MINOR(version),
                     AV_VERSION_MICRO(version));
}

}  // namespace orvel::probe
