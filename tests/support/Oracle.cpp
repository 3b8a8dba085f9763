#include "support/Oracle.h"

#include <media/stagefright/MediaErrors.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace orvel::test {

namespace {

constexpr int kIoBufferSize = 32768;

struct Io {
    host::DataSource& source;
    int64_t position = 0;

    static int read(void* opaque, uint8_t* data, int size) {
        Io* io = static_cast<Io*>(opaque);
        const ssize_t got = io->source.readAt(io->position, data, static_cast<size_t>(size));
        if (got == 0 || got == android::ERROR_END_OF_STREAM) return AVERROR_EOF;
        if (got < 0) return static_cast<int>(got);
        io->position += got;
        return static_cast<int>(got);
    }

    static int64_t seek(void* opaque, int64_t offset, int whence) {
        Io* io = static_cast<Io*>(opaque);
        off64_t size = 0;
        if (whence == AVSEEK_SIZE || whence == SEEK_END) io->source.getSize(&size);
        if (whence == AVSEEK_SIZE) return size;
        if (whence == SEEK_END && size < 0) return AVERROR(EINVAL);
        const int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? io->position : size;
        if (base + offset < 0) return AVERROR(EINVAL);
        return io->position = base + offset;
    }
};

// The format context with what it stands on; closes everything.
struct Demuxer {
    Io io;
    AVIOContext* pb = nullptr;
    AVFormatContext* context = nullptr;

    explicit Demuxer(host::DataSource& source) : io{source} {
        auto* buffer = static_cast<uint8_t*>(av_malloc(kIoBufferSize));
        pb = avio_alloc_context(buffer, kIoBufferSize, 0, &io, Io::read, nullptr, Io::seek);
        pb->direct = 1;
        context = avformat_alloc_context();
        context->pb = pb;
    }
    ~Demuxer() {
        avformat_close_input(&context);
        av_freep(&pb->buffer);
        avio_context_free(&pb);
    }
    Demuxer(const Demuxer&) = delete;
    Demuxer& operator=(const Demuxer&) = delete;

    bool open(const std::string& name) {
        AVDictionary* options = nullptr;
        if (name == "mov") av_dict_set(&options, "ignore_editlist", "1", 0);
        const int result = avformat_open_input(&context, nullptr,
                                               av_find_input_format(name.c_str()), &options);
        av_dict_free(&options);
        return result >= 0 && avformat_find_stream_info(context, nullptr) >= 0;
    }
};

// The length size of ISO/IEC 14496-15 records: 5.3.3.1 (AVC), 8.3.3.1 (HEVC). 0: none.
size_t nalLengthSize(const AVCodecParameters& codec, const std::string& demuxer) {
    if (demuxer != "mov" && demuxer != "matroska") return 0;
    const int at = codec.codec_id == AV_CODEC_ID_H264   ? 4
                   : codec.codec_id == AV_CODEC_ID_HEVC ? 21
                                                        : -1;
    if (at < 0 || codec.extradata_size <= at) return 0;
    return (codec.extradata[at] & 3u) + 1;
}

bool isDeliveredAsPcm(AVCodecID codec) {
    switch (codec) {
        case AV_CODEC_ID_PCM_S16LE:
        case AV_CODEC_ID_PCM_S16BE:
        case AV_CODEC_ID_PCM_S24LE:
        case AV_CODEC_ID_PCM_S24BE:
        case AV_CODEC_ID_PCM_S8:
        case AV_CODEC_ID_PCM_U8:
            return true;
        default:
            return false;
    }
}

std::vector<uint8_t> asDelivered(const AVPacket& packet, const AVStream& stream,
                                 const std::string& demuxer) {
    std::vector<uint8_t> data(packet.data, packet.data + packet.size);
    const AVCodecParameters& codec = *stream.codecpar;
    if (const size_t lengthSize = nalLengthSize(codec, demuxer)) {
        return withStartCodes(data, lengthSize);
    }
    if (isDeliveredAsPcm(codec.codec_id)) {
        return asDeliveredPcm(data, codec.bits_per_coded_sample, demuxer == "aiff");
    }
    return data;
}

}  // namespace

bool operator==(const Sample& a, const Sample& b) {
    return a.timeUs == b.timeUs && a.sync == b.sync && a.data == b.data;
}

std::string describe(const Sample& sample) {
    std::string text = "timeUs=" + std::to_string(sample.timeUs) + (sample.sync ? " sync" : "") +
                       " size=" + std::to_string(sample.data.size()) + " begins ";
    for (size_t i = 0; i < std::min<size_t>(sample.data.size(), 8); ++i) {
        char hex[3];
        std::snprintf(hex, sizeof(hex), "%02x", sample.data[i]);
        text += hex;
    }
    return text;
}

std::vector<uint8_t> withStartCodes(const std::vector<uint8_t>& data, size_t lengthSize) {
    std::vector<uint8_t> result;
    size_t at = 0;
    while (at < data.size()) {
        if (data.size() - at < lengthSize) return {};
        size_t length = 0;
        for (size_t i = 0; i < lengthSize; ++i)
            length = length * 256 + data[at++];
        if (at >= data.size() || length > data.size() - at) return {};
        if (length > 0) result.insert(result.end(), {0, 0, 0, 1});
        for (size_t i = 0; i < length; ++i)
            result.push_back(data[at++]);
    }
    return result;
}

std::vector<uint8_t> asDeliveredPcm(const std::vector<uint8_t>& data, int bits, bool isAiff) {
    std::vector<uint8_t> result;
    if (bits == 8) {
        for (uint8_t byte : data) {
            result.push_back(0);
            result.push_back(isAiff ? byte : static_cast<uint8_t>(byte - 128));
        }
        return result;
    }
    result = data;
    const size_t width = static_cast<size_t>(bits) / 8;
    if (!isAiff || (width != 2 && width != 3)) return result;
    for (size_t i = 0; i + width <= result.size(); i += width) {
        std::reverse(result.begin() + i, result.begin() + i + width);
    }
    return result;
}

Oracle Oracle::read(host::DataSource& source, const std::string& demuxer) {
    return read(source, demuxer, [](const AVStream& stream) {
        const AVMediaType type = stream.codecpar->codec_type;
        return type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_VIDEO;
    });
}

Oracle Oracle::read(host::DataSource& source, const std::string& name, const Filter& filter) {
    Oracle oracle;
    Demuxer demuxer(source);
    oracle.opened = demuxer.open(name);
    if (!oracle.opened) return oracle;
    AVFormatContext* context = demuxer.context;
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        AVStream* stream = context->streams[i];
        OracleStream& result = oracle.streams.emplace_back();
        result.type = stream->codecpar->codec_type;
        result.codec = stream->codecpar->codec_id;
        result.isAttachedPicture = (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        const bool wanted = !result.isAttachedPicture && filter(*stream);
        stream->discard = wanted ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    std::unique_ptr<AVPacket, void (*)(AVPacket*)> packet(av_packet_alloc(),
                                                          [](AVPacket* p) { av_packet_free(&p); });
    int result;
    while ((result = av_read_frame(context, packet.get())) >= 0) {
        const size_t index = static_cast<size_t>(packet->stream_index);
        const AVStream* stream = context->streams[index];
        if (index < oracle.streams.size() && stream->discard != AVDISCARD_ALL) {
            const int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
            oracle.streams[index].samples.push_back(
                    {av_rescale_q(time, stream->time_base, {1, 1000000}),
                     (packet->flags & AV_PKT_FLAG_KEY) != 0, asDelivered(*packet, *stream, name)});
        }
        av_packet_unref(packet.get());
    }
    const bool atEnd = result == AVERROR_EOF || avio_feof(context->pb);
    oracle.end = atEnd ? android::ERROR_END_OF_STREAM : android::ERROR_IO;
    return oracle;
}

}  // namespace orvel::test
