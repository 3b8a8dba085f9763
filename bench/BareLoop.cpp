#include "BareLoop.h"

#include <cstring>
#include <string>

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/log.h>
}

namespace orvel::bench {
namespace {

constexpr int kBufferSize = 32768;
constexpr AVRational kMicroseconds = {1, 1000000};

[[noreturn]] void fail(const char* step, int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof(text));
    throw BareError(std::string("bare loop: ") + step + ": " + text);
}

// The compiler may not leave out what was written for it.
void keep(const void* memory) {
    asm volatile("" : : "r"(memory) : "memory");
}

}  // namespace

BareDemuxer::BareDemuxer(host::DataSource& source, const char* demuxer, As use)
    : mInput{&source, 0} {
    av_log_set_callback(nullptr);
    try {
        open(demuxer, use);
    } catch (...) {
        close();
        throw;
    }
}

BareDemuxer::~BareDemuxer() {
    close();
}

void BareDemuxer::open(const char* demuxer, As use) {
    auto* buffer = static_cast<uint8_t*>(av_malloc(kBufferSize));
    mIO = avio_alloc_context(buffer, kBufferSize, 0, &mInput, read, nullptr, seek);
    if (mIO == nullptr) {
        av_free(buffer);
        fail("I/O context", AVERROR(ENOMEM));
    }
    mIO->direct = 1;
    mContext = avformat_alloc_context();
    mPacket = av_packet_alloc();
    if (mContext == nullptr || mPacket == nullptr) fail("context", AVERROR(ENOMEM));
    mContext->pb = mIO;
    AVDictionary* options = nullptr;
    const AVInputFormat* format = av_find_input_format(demuxer);
    if (format == nullptr) fail(demuxer, AVERROR_DEMUXER_NOT_FOUND);
    if (use == As::Extractor && av_match_name("mov", format->name)) {
        av_dict_set_int(&options, "ignore_editlist", 1, 0);
    }
    int error = avformat_open_input(&mContext, nullptr, format, &options);
    av_dict_free(&options);
    if (error < 0) fail("open", error);
    error = avformat_find_stream_info(mContext, nullptr);
    if (error < 0) fail("stream information", error);
}

void BareDemuxer::close() {
    av_packet_free(&mPacket);
    avformat_close_input(&mContext);
    if (mIO != nullptr) av_freep(&mIO->buffer);
    avio_context_free(&mIO);
}

int BareDemuxer::read(void* opaque, uint8_t* buffer, int size) {
    auto* input = static_cast<Input*>(opaque);
    const ssize_t count = input->source->readAt(input->offset, buffer, static_cast<size_t>(size));
    if (count == 0) return AVERROR_EOF;
    if (count > 0) input->offset += count;
    return static_cast<int>(count);
}

int64_t BareDemuxer::seek(void* opaque, int64_t offset, int whence) {
    auto* input = static_cast<Input*>(opaque);
    off64_t size = 0;
    switch (whence) {
        case SEEK_SET:
            return input->offset = offset;
        case SEEK_CUR:
            return input->offset += offset;
        case SEEK_END:
            input->source->getSize(&size);
            return input->offset = size + offset;
        case AVSEEK_SIZE:
            input->source->getSize(&size);
            return size;
        default:
            return AVERROR(EINVAL);
    }
}

const AVPacket* BareDemuxer::next() {
    av_packet_unref(mPacket);
    const int error = av_read_frame(mContext, mPacket);
    if (error == AVERROR_EOF) return nullptr;
    if (error < 0) fail("read", error);
    return mPacket;
}

const AVPacket& BareDemuxer::nextOf(int stream) {
    for (;;) {
        const AVPacket* packet = next();
        if (packet == nullptr) fail("read", AVERROR_EOF);
        if (packet->stream_index == stream) return *packet;
    }
}

void BareDemuxer::seekBackward(int stream, int64_t timeUs) {
    const AVRational timeBase = mContext->streams[stream]->time_base;
    const int error = av_seek_frame(mContext, stream, av_rescale_q(timeUs, kMicroseconds, timeBase),
                                    AVSEEK_FLAG_BACKWARD);
    if (error < 0) fail("seek", error);
}

int BareDemuxer::bestStream(AVMediaType type) const {
    const int index = av_find_best_stream(mContext, type, -1, -1, nullptr, 0);
    return index < 0 ? -1 : index;
}

uint8_t* Payload::room(const AVPacket& packet) {
    const auto size = static_cast<size_t>(packet.size);
    if (size > mBuffer.size()) mBuffer.resize(size + size / 2);
    return mBuffer.data();
}

size_t Payload::copy(const AVPacket& packet) {
    const auto size = static_cast<size_t>(packet.size);
    uint8_t* out = room(packet);
    memcpy(out, packet.data, size);
    keep(out);
    return size;
}

size_t Payload::swap16(const AVPacket& packet) {
    const size_t size = static_cast<size_t>(packet.size) & ~size_t{1};
    uint8_t* out = room(packet);
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
