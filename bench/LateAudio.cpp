#include "LateAudio.h"

#include <memory>
#include <stdexcept>

extern "C" {
#include <libavformat/avformat.h>
}

namespace orvel::bench {
namespace {

constexpr AVRational kMicroseconds = {1, 1000000};
constexpr int64_t kDelayUs = 40 * 1000000LL;

[[noreturn]] void fail(const std::string& step, int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof(text));
    throw std::runtime_error("late audio: " + step + ": " + text);
}

// One stream of the input, read on its own; the packet that is next to be written.
class StreamReader {
  public:
    StreamReader(const std::string& path, AVMediaType type) : mPacket(av_packet_alloc()) {
        int error = avformat_open_input(&mContext, path.c_str(), nullptr, nullptr);
        if (error < 0) fail("open " + path, error);
        error = avformat_find_stream_info(mContext, nullptr);
        if (error < 0) fail("stream information of " + path, error);
        mIndex = av_find_best_stream(mContext, type, -1, -1, nullptr, 0);
        if (mIndex < 0) fail("stream of " + path, mIndex);
        advance();
    }
    ~StreamReader() {
        av_packet_free(&mPacket);
        avformat_close_input(&mContext);
    }
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    AVStream* stream() const { return mContext->streams[mIndex]; }
    AVPacket* packet() const { return mEnded ? nullptr : mPacket; }
    int64_t timeUs() const {
        if (mEnded) return INT64_MAX - kDelayUs;
        return av_rescale_q(mPacket->dts, stream()->time_base, kMicroseconds);
    }
    void advance() {
        do {
            av_packet_unref(mPacket);
            mEnded = av_read_frame(mContext, mPacket) < 0;
        } while (!mEnded && mPacket->stream_index != mIndex);
    }

  private:
    AVFormatContext* mContext = nullptr;
    AVPacket* mPacket;
    int mIndex = -1;
    bool mEnded = false;
};

struct CloseOutput {
    void operator()(AVFormatContext* context) const {
        avio_closep(&context->pb);
        avformat_free_context(context);
    }
};

AVStream* addStream(AVFormatContext* output, const AVStream* like) {
    AVStream* stream = avformat_new_stream(output, nullptr);
    if (stream == nullptr) fail("new stream", AVERROR(ENOMEM));
    const int error = avcodec_parameters_copy(stream->codecpar, like->codecpar);
    if (error < 0) fail("stream parameters", error);
    stream->codecpar->codec_tag = 0;  // the other container's
    stream->time_base = like->time_base;
    return stream;
}

}  // namespace

void writeLateAudio(const std::string& input, const std::string& output) {
    StreamReader video(input, AVMEDIA_TYPE_VIDEO);
    StreamReader audio(input, AVMEDIA_TYPE_AUDIO);
    AVFormatContext* made = nullptr;
    int error = avformat_alloc_output_context2(&made, nullptr, "matroska", output.c_str());
    if (error < 0) fail("create " + output, error);
    const std::unique_ptr<AVFormatContext, CloseOutput> context(made);
    error = avio_open(&context->pb, output.c_str(), AVIO_FLAG_WRITE);
    if (error < 0) fail("open " + output, error);
    AVStream* videoOut = addStream(made, video.stream());
    AVStream* audioOut = addStream(made, audio.stream());
    error = avformat_write_header(made, nullptr);
    if (error < 0) fail("header", error);
    while (video.packet() != nullptr || audio.packet() != nullptr) {
        const bool isVideo = video.timeUs() <= audio.timeUs() + kDelayUs && video.packet();
        StreamReader& from = isVideo ? video : audio;
        AVStream* to = isVideo ? videoOut : audioOut;
        AVPacket* packet = from.packet();
        av_packet_rescale_ts(packet, from.stream()->time_base, to->time_base);
        packet->stream_index = to->index;
        packet->pos = -1;
        // Not the interleaving call, which would put the packets back in order.
        error = av_write_frame(made, packet);
        if (error < 0) fail("packet", error);
        from.advance();
    }
    error = av_write_trailer(made);
    if (error < 0) fail("trailer", error);
}

}  // namespace orvel::bench
