#include "BareLoop.h"

#include <cstring>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavutil/log.h>
}

namespace orvel::bench {
namespace {

constexpr int kBufferSize = 32768;

int check(const char* step, int error) {
    if (error >= 0) return error;
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof(text));
    throw std::runtime_error(std::string("bare loop: ") + step + ": " + text);
}

// The compiler may not leave out what was written for it.
void keep(const void* memory) {
    asm volatile("" : : "r"(memory) : "memory");
}

}  // namespace

BareDemuxer::BareDemuxer(host::DataSource& source, const char* demuxer, bool asExtractor)
    : mSource(source), mPacket(av_packet_alloc()) {
    av_log_set_callback(nullptr);
    mIO.reset(avio_alloc_context(static_cast<uint8_t*>(av_malloc(kBufferSize)), kBufferSize, 0,
                                 this, read, nullptr, seek));
    mIO->direct = 1;
    AVDictionary* options = nullptr;
    if (asExtractor && strcmp(demuxer, "mov") == 0) {
        av_dict_set_int(&options, "ignore_editlist", 1, 0);
    }
    AVFormatContext* context = avformat_alloc_context();
    context->pb = mIO.get();
    const int error =
            avformat_open_input(&context, nullptr, av_find_input_format(demuxer), &options);
    av_dict_free(&options);
    check("open", error);
    mContext.reset(context);
    check("stream information", avformat_find_stream_info(context, nullptr));
}

void BareDemuxer::Free::operator()(AVIOContext* io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
}

int BareDemuxer::read(void* opaque, uint8_t* buffer, int size) {
    auto* self = static_cast<BareDemuxer*>(opaque);
    const ssize_t count = self->mSource.readAt(self->mOffset, buffer, static_cast<size_t>(size));
    if (count == 0) return AVERROR_EOF;
    if (count > 0) self->mOffset += count;
    return static_cast<int>(count);
}

int64_t BareDemuxer::seek(void* opaque, int64_t offset, int whence) {
    auto* self = static_cast<BareDemuxer*>(opaque);
    off64_t size = 0;
    if (whence == AVSEEK_SIZE || whence == SEEK_END) self->mSource.getSize(&size);
    if (whence == AVSEEK_SIZE) return size;
    const int64_t from = whence == SEEK_CUR ? self->mOffset : size;
    return self->mOffset = from + offset;
}

const AVPacket* BareDemuxer::next() {
    av_packet_unref(mPacket.get());
    const int error = av_read_frame(mContext.get(), mPacket.get());
    if (error == AVERROR_EOF) return nullptr;
    check("read", error);
    return mPacket.get();
}

const AVPacket& BareDemuxer::nextOf(int stream) {
    for (;;) {
        const AVPacket* packet = next();
        if (packet == nullptr) check("read", AVERROR_EOF);
        if (packet->stream_index == stream) return *packet;
    }
}

void BareDemuxer::seekBackward(int stream, int64_t timeUs) {
    const int64_t time = av_rescale_q(timeUs, {1, 1000000}, mContext->streams[stream]->time_base);
    check("seek", av_seek_frame(mContext.get(), stream, time, AVSEEK_FLAG_BACKWARD));
}

int BareDemuxer::bestStream(AVMediaType type) const {
    const int index = av_find_best_stream(mContext.get(), type, -1, -1, nullptr, 0);
    return index < 0 ? -1 : index;
}

uint8_t* Payload::room(size_t size) {
    if (size > mBuffer.size()) mBuffer.resize(size + size / 2);
    return mBuffer.data();
}

size_t Payload::copy(const AVPacket& packet) {
    const auto size = static_cast<size_t>(packet.size);
    uint8_t* out = room(size);
    memcpy(out, packet.data, size);
    keep(out);
    return size;
}

size_t Payload::swap16(const AVPacket& packet) {
    const size_t size = static_cast<size_t>(packet.size) & ~size_t{1};
    uint8_t* out = room(size);
    const uint8_t* in = packet.data;
    for (size_t i = 0; i < size; i += 2) {
        uint16_t value;
        memcpy(&value, in + i, sizeof(value));
        value = __builtin_bswap16(value);
        memcpy(out + i, &value, sizeof(value));
    }
    keep(out);
    return size;
}

}  // namespace orvel::bench
