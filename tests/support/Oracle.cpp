#include "support/Oracle.h"

#include <media/stagefright/MediaErrors.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "support/Demuxer.h"

namespace orvel::test {

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

bool Oracle::isAudioOrVideo(const AVStream& stream) {
    const AVMediaType type = stream.codecpar->codec_type;
    return type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_VIDEO;
}

Oracle Oracle::read(host::DataSource& source, const std::string& name, const Filter& filter) {
    Oracle oracle;
    Demuxer demuxer(source, name);
    oracle.opened = demuxer.isOpen();
    if (!oracle.opened) return oracle;
    AVFormatContext* context = demuxer.context();
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
            oracle.streams[index].samples.push_back(demuxer.asDelivered(*packet));
        }
        av_packet_unref(packet.get());
    }
    const bool atEnd = result == AVERROR_EOF || avio_feof(context->pb);
    oracle.end = atEnd ? android::ERROR_END_OF_STREAM : android::ERROR_IO;
    return oracle;
}

}  // namespace orvel::test
