#include "support/Demuxer.h"

#include <media/stagefright/MediaErrors.h>

#include <set>

namespace orvel::test {

namespace {

constexpr int kIoBufferSize = 32768;

// The length size of ISO/IEC 14496-15 records: 5.3.3.1 (AVC), 8.3.3.1 (HEVC). 0: none.
size_t nalLengthSize(const AVCodecParameters& codec, const std::string& demuxer) {
    if (demuxer != "mov" && demuxer != "matroska") return 0;
    const int at = codec.codec_id == AV_CODEC_ID_H264   ? 4
                   : codec.codec_id == AV_CODEC_ID_HEVC ? 21
                                                        : -1;
    if (at < 0 || codec.extradata_size <= at) return 0;
    return (codec.extradata[at] & 3u) + 1;
}

const std::set<AVCodecID> kDeliveredAsPcm = {AV_CODEC_ID_PCM_S16LE, AV_CODEC_ID_PCM_S16BE,
                                             AV_CODEC_ID_PCM_S24LE, AV_CODEC_ID_PCM_S24BE,
                                             AV_CODEC_ID_PCM_S8,    AV_CODEC_ID_PCM_U8};

}  // namespace

int Demuxer::read(void* opaque, uint8_t* data, int size) {
    auto* self = static_cast<Demuxer*>(opaque);
    const ssize_t got = self->mSource.readAt(self->mPosition, data, static_cast<size_t>(size));
    if (got == 0 || got == android::ERROR_END_OF_STREAM) return AVERROR_EOF;
    if (got < 0) return static_cast<int>(got);
    self->mPosition += got;
    return static_cast<int>(got);
}

int64_t Demuxer::seek(void* opaque, int64_t offset, int whence) {
    auto* self = static_cast<Demuxer*>(opaque);
    off64_t size = 0;
    if (whence == AVSEEK_SIZE || whence == SEEK_END) self->mSource.getSize(&size);
    if (whence == AVSEEK_SIZE) return size;
    if (whence == SEEK_END && size < 0) return AVERROR(EINVAL);
    const int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? self->mPosition : size;
    if (base + offset < 0) return AVERROR(EINVAL);
    return self->mPosition = base + offset;
}

Demuxer::Demuxer(host::DataSource& source, const std::string& name) : mSource(source), mName(name) {
    auto* buffer = static_cast<uint8_t*>(av_malloc(kIoBufferSize));
    mPb = avio_alloc_context(buffer, kIoBufferSize, 0, this, read, nullptr, seek);
    mPb->direct = 1;
    mContext = avformat_alloc_context();
    mContext->pb = mPb;
    AVDictionary* options = nullptr;
    if (name == "mov") av_dict_set(&options, "ignore_editlist", "1", 0);
    const int result =
            avformat_open_input(&mContext, nullptr, av_find_input_format(name.c_str()), &options);
    av_dict_free(&options);
    mIsOpen = result >= 0 && avformat_find_stream_info(mContext, nullptr) >= 0;
}

Demuxer::~Demuxer() {
    avformat_close_input(&mContext);
    av_freep(&mPb->buffer);
    avio_context_free(&mPb);
}

Sample Demuxer::asDelivered(const AVPacket& packet) const {
    const AVStream& stream = *mContext->streams[packet.stream_index];
    const AVCodecParameters& codec = *stream.codecpar;
    const int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    Sample sample{av_rescale_q(time, stream.time_base, {1, 1000000}),
                  (packet.flags & AV_PKT_FLAG_KEY) != 0,
                  {packet.data, packet.data + packet.size}};
    if (const size_t lengthSize = nalLengthSize(codec, mName)) {
        sample.data = withStartCodes(sample.data, lengthSize);
    } else if (kDeliveredAsPcm.count(codec.codec_id) != 0) {
        sample.data = asDeliveredPcm(sample.data, codec.bits_per_coded_sample, mName == "aiff");
    }
    return sample;
}

}  // namespace orvel::test
