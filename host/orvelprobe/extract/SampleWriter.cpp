#include "extract/SampleWriter.h"

#include <sys/stat.h>

#include <strings.h>

extern "C" {
#include <libavcodec/avcodec.h>
#if __has_include(<libavcodec/bsf.h>)
#include <libavcodec/bsf.h>
#endif
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

#include "Codecs.h"
#include "Words.h"
#include "framework/Format.h"

namespace orvel::probe {
namespace {

constexpr AVRational kMicroseconds = {1, 1000000};
constexpr size_t kBlobHeader = 136;  // of "orvel-audioCSD" and "orvel-videoCSD", before extradata
constexpr int64_t kLastTextUs = 2000000, kReorderUs = 1000000;

// The platform's "pcm-encoding" codes; 100 is the plug-in's own for 32-bit integers.
constexpr int64_t kEncoding8Bit = 3, kEncodingFloat = 4, kEncoding32Bit = 100;

void check(int result, const char* step) {
    if (result >= 0) return;
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(result, text, sizeof(text));
    throw ExtractError(std::string(step) + ": " + text);
}

// The channels of a stream are kept in another way from libavcodec 59.24 on.
template <typename Parameters>
auto setChannels(Parameters* to, int count, int) -> decltype((void)to->ch_layout) {
    av_channel_layout_default(&to->ch_layout, count);
}
template <typename Parameters>
void setChannels(Parameters* to, int count, long) {
    to->channels = count;
}

AVCodecID deliveredPcm(const Json& format) {
    const int64_t encoding = intOf(format, "pcm-encoding");
    const char kind = encoding == kEncodingFloat ? 'f' : 's';
    int64_t bits = intOf(format, "bits-per-sample");
    if (bits == 0)
        bits = encoding == kEncoding8Bit ? 8 : encoding == kEncoding32Bit || kind == 'f' ? 32 : 16;
    const std::string name = bits == 8 ? "pcm_u8" : formatted("pcm_%c%ldle", kind, bits);
    const AVCodecDescriptor* codec = avcodec_descriptor_get_by_name(name.c_str());
    if (!codec) throw ExtractError("there is no " + name);
    return codec->id;
}

// The muxers of bare streams have the codecs' names, but for some.
std::string muxerOf(AVCodecID codec) {
    static const std::map<std::string, const char*> kOthers = {
            {"none", "data"},     {"mp3", "data"},   {"aac", "adts"},     {"vp8", "ivf"},
            {"vp9", "ivf"},       {"mpeg4", "m4v"},  {"mov_text", "srt"}, {"flv1", "flv"},
            {"msmpeg4v3", "asf"}, {"amr_nb", "amr"}, {"amr_wb", "amr"},   {"rv10", "data"},
            {"rv20", "data"},     {"rv30", "data"},  {"rv40", "data"},    {"cook", "data"}};
    const std::string name = avcodec_get_name(codec);
    if (const auto other = kOthers.find(name); other != kOthers.end()) return other->second;
    if (name.compare(0, 4, "pcm_") == 0) return "wav";
    return av_guess_format(name.c_str(), nullptr, nullptr) ? name : "matroska";
}

// What the decoder is configured with, as FFmpeg has it.
std::string extradataOf(const Json& format) {
    for (const std::string key : {"csd-avc", "csd-hevc", "aac-codec-specific-data",
                                  "orvel-audioCSD", "orvel-videoCSD", "raw-codec-specific-data"}) {
        const std::string bytes = bytesOf(format, key.c_str());
        const size_t header = key.compare(0, 5, "orvel") == 0 ? kBlobHeader : 0;
        if (bytes.size() > header) return bytes.substr(header);
    }
    return "";
}

bool hasStartCode(const std::string& bytes) {
    return bytes.substr(0, 4).find(std::string("\0\0\1", 3)) != std::string::npos;
}

struct Free {
    void operator()(AVFormatContext* muxer) const {
        avio_closep(&muxer->pb);
        avformat_free_context(muxer);
    }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

/** Any track, by its row. */
class MuxWriter : public SampleWriter {
  public:
    MuxWriter(const Json& format, AVCodecID codec, int fd) : mPacket(av_packet_alloc()) {
        AVFormatContext* muxer = nullptr;
        check(avformat_alloc_output_context2(&muxer, nullptr, muxerOf(codec).c_str(), nullptr),
              "libavformat has no muxer for it");
        mMuxer.reset(muxer);
        mStream = avformat_new_stream(muxer, nullptr);
        if (!mStream || !mPacket) throw ExtractError("no memory");
        mStream->time_base = kMicroseconds;
        mMuxer->flags |= AVFMT_FLAG_BITEXACT;
        mMuxer->avoid_negative_ts = 0;
        describe(format, codec);
        const std::string headers = annexBHeaders(format);
        struct stat info {};
        fstat(fd, &info);
        const char* const protocol = S_ISREG(info.st_mode) ? "file:/dev/fd/" : "pipe:";
        const std::string url = protocol + std::to_string(fd);
        check(avio_open(&mMuxer->pb, url.c_str(), AVIO_FLAG_WRITE), "cannot be written");
        av_opt_set(muxer, "rf64", "auto", AV_OPT_SEARCH_CHILDREN);  // of WAV, beyond 4 GiB
        check(avformat_write_header(muxer, nullptr), (form() + " cannot hold it").c_str());
        avio_write(mMuxer->pb, reinterpret_cast<const uint8_t*>(headers.data()),
                   static_cast<int>(headers.size()));
    }

    void sample(const uint8_t* data, size_t size, int64_t timeUs, bool sync) override {
        if (size > 0) write(data, size, timeUs, 0, sync);
    }

    void finish() override {
        checkWritten(av_write_trailer(mMuxer.get()));
        avio_flush(mMuxer->pb);
        checkWritten(0);
    }

    std::string form() const override { return mMuxer->oformat->long_name; }

  protected:
    void write(const uint8_t* data, size_t size, int64_t timeUs, int64_t durationUs, bool sync) {
        if (mWritten == 0 && is("adts") && mStream->codecpar->extradata_size == 0 &&
            !(size > 1 && data[0] == 0xFF && (data[1] & 0xF6) == 0xF0)) {
            throw ExtractError("it has neither an AudioSpecificConfig nor ADTS headers");
        }
        if (mWritten == 0) mFirstUs = timeUs;
        av_packet_unref(mPacket.get());
        mPacket->data = const_cast<uint8_t*>(data);  // read only
        mPacket->size = static_cast<int>(size);
        mPacket->flags = sync ? AV_PKT_FLAG_KEY : 0;
        mPacket->duration = durationUs;
        mPacket->pts = mPacket->dts = timeUs;
        // Decoding times are not delivered; any that grow and stay below the others will do.
        if (is("matroska")) mPacket->dts = mFirstUs - kReorderUs + mWritten;
        av_packet_rescale_ts(mPacket.get(), kMicroseconds, mStream->time_base);
        mWritten++;
        checkWritten(av_write_frame(mMuxer.get(), mPacket.get()));
    }

  private:
    void checkWritten(int result) const {
        check(result < 0 ? result : mMuxer->pb->error, "cannot be written");
    }
    bool is(const char* muxer) const { return strcmp(mMuxer->oformat->name, muxer) == 0; }
    void describe(const Json& format, AVCodecID codec) {
        AVCodecParameters* to = mStream->codecpar;
        to->codec_type = is("data") ? AVMEDIA_TYPE_DATA : avcodec_get_type(codec);
        to->codec_id = is("wav") ? deliveredPcm(format) : is("srt") ? AV_CODEC_ID_SUBRIP : codec;
        const auto number = [&format](const char* key) {
            return static_cast<int>(intOf(format, key));
        };
        to->width = number("width");
        to->height = number("height");
        to->sample_rate = number("sample-rate");
        to->bits_per_coded_sample = number("bits-per-sample");
        setChannels(to, number("channel-count"), 0);
        const std::string extradata = extradataOf(format);
        // With start codes in the samples, the record has to become some, too: see below.
        if (intOf(format, "nal-length-size") > 0 || hasStartCode(extradata)) return;
        setExtradata(extradata, to);
    }

    static void setExtradata(const std::string& bytes, AVCodecParameters* to) {
        to->extradata =
                static_cast<uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
        if (!to->extradata) throw ExtractError("no memory");
        memcpy(to->extradata, bytes.data(), bytes.size());
        to->extradata_size = static_cast<int>(bytes.size());
    }

    // Headers that a bare stream has to begin with: parameter sets of a configuration record
    // (ISO/IEC 14496-15) with start codes, or what has start codes already.
    std::string annexBHeaders(const Json& format) const {
        const std::string record = extradataOf(format);
        if (!(mMuxer->oformat->flags & AVFMT_NOTIMESTAMPS)) return "";
        if (hasStartCode(record)) return record;
        if (intOf(format, "nal-length-size") <= 0) return "";
        const AVCodecID codec = mStream->codecpar->codec_id;
        const AVBitStreamFilter* filter = av_bsf_get_by_name(
                codec == AV_CODEC_ID_H264 ? "h264_mp4toannexb" : "hevc_mp4toannexb");
        AVBSFContext* context = nullptr;
        if (!filter || av_bsf_alloc(filter, &context) < 0) throw ExtractError("no memory");
        context->par_in->codec_type = AVMEDIA_TYPE_VIDEO;
        context->par_in->codec_id = codec;
        setExtradata(record, context->par_in);
        const int result = av_bsf_init(context);
        std::string headers;
        if (result >= 0) {
            headers.assign(reinterpret_cast<const char*>(context->par_out->extradata),
                           static_cast<size_t>(context->par_out->extradata_size));
        }
        av_bsf_free(&context);
        check(result, "its decoder configuration record");
        return headers;
    }

    std::unique_ptr<AVFormatContext, Free> mMuxer;
    AVStream* mStream = nullptr;  // of mMuxer
    std::unique_ptr<AVPacket, Free> mPacket;
    int64_t mWritten = 0;
    int64_t mFirstUs = 0;
};

/**
 * Timed text (3GPP TS 26.245): a length of two bytes, the text, then its styles, which go. A text
 * lasts until the next sample.
 */
class TextWriter : public MuxWriter {
  public:
    TextWriter(const Json& format, AVCodecID codec, int fd)
        : MuxWriter(format, codec, fd), mEndUs(intOf(format, host::kKeyDurationUs)) {}
    void sample(const uint8_t* data, size_t size, int64_t timeUs, bool) override {
        flush(timeUs);
        const size_t length = size < 2 ? 0 : static_cast<size_t>(data[0] << 8 | data[1]);
        mText.assign(reinterpret_cast<const char*>(data) + (size < 2 ? 0 : 2),
                     std::min(length, size - std::min<size_t>(size, 2)));
        mTimeUs = timeUs;
    }
    void finish() override {
        flush(std::max(mEndUs, mTimeUs + kLastTextUs));
        MuxWriter::finish();
    }

  private:
    void flush(int64_t endUs) {
        if (mText.empty()) return;
        write(reinterpret_cast<const uint8_t*>(mText.data()), mText.size(), mTimeUs,
              std::max<int64_t>(endUs - mTimeUs, 0), true);
        mText.clear();
    }

    const int64_t mEndUs;
    std::string mText;  // waits for its end
    int64_t mTimeUs = 0;
};

}  // namespace

std::unique_ptr<SampleWriter> makeSampleWriter(const Json& format, int fd) {
    const std::string mime = textOf(format, host::kKeyMime);
    const std::string blob = bytesOf(format, "orvel-videoCSD");
    AVCodecID codec = AV_CODEC_ID_NONE;
    for (const CodecRow& row : codecRows()) {
        if (strcasecmp(mime.c_str(), row.mime) != 0) continue;
        // Several codecs may share the type; the blob says which.
        const bool exact = blob.size() > 8 && memcmp(blob.data() + 4, &row.codec, 4) == 0;
        if (codec == AV_CODEC_ID_NONE || exact) codec = row.codec;
    }
    if (codec == AV_CODEC_ID_MOV_TEXT) return std::make_unique<TextWriter>(format, codec, fd);
    return std::make_unique<MuxWriter>(format, codec, fd);
}

}  // namespace orvel::probe
