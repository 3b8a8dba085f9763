#pragma once

// Every difference between the FFmpeg versions that the plug-in builds with (libavformat 58 to 61),
// and nothing else. What the device's own FFmpeg has beyond all of them is in FFmpegExtensions.h.

#include <dlfcn.h>
#include <stddef.h>
#include <stdint.h>

#include <log/log.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avstring.h>
#include <libavutil/dict.h>
#include <libavutil/display.h>
#include <libavutil/log.h>
#include <libavutil/mathematics.h>
}

#if LIBAVFORMAT_VERSION_MAJOR < 58 || LIBAVFORMAT_VERSION_MAJOR > 61
#error "libavformat 58 to 61 is needed; docs/integrating.md says what a later one would take"
#endif

#if LIBAVFORMAT_VERSION_MAJOR >= 59
#define ORVEL_AVFORMAT_HAS_INDEX_ACCESSORS 1
#else
#define ORVEL_AVFORMAT_HAS_INDEX_ACCESSORS 0
#endif

#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(59, 24, 100)
#define ORVEL_AVCODEC_HAS_CH_LAYOUT 1
#else
#define ORVEL_AVCODEC_HAS_CH_LAYOUT 0
#endif

// The MPEG-4 audio configuration parser is exported by libavcodec, its header is not installed.
extern "C" {
struct MPEG4AudioConfig {
    int object_type;
    int sampling_index;
    int sample_rate;
    int chan_config;
    int sbr;  // -1: implicit, 1: present
    int ext_object_type;
    int ext_sampling_index;
    int ext_sample_rate;
    int ext_chan_config;
    int channels;
    int ps;
    int frame_length_short;
};
#if LIBAVCODEC_VERSION_MAJOR >= 59
int avpriv_mpeg4audio_get_config2(MPEG4AudioConfig* config, const uint8_t* data, int sizeBytes,
                                  int syncExtension, void* logContext);
#else
int avpriv_mpeg4audio_get_config(MPEG4AudioConfig* config, const uint8_t* data, int sizeBits,
                                 int syncExtension);
#endif
}

namespace orvel {

#if LIBAVFORMAT_VERSION_MAJOR >= 59
using AVInputFormatPtr = const AVInputFormat*;
#else
using AVInputFormatPtr = AVInputFormat*;
#endif

namespace compat {

// Scores the bytes that a demuxer is shown, 0 to AVPROBE_SCORE_MAX.
using ProbeFunction = int (*)(const AVProbeData*);

#if LIBAVFORMAT_VERSION_MAJOR < 61
// Null for a demuxer without one.
inline ProbeFunction probeFunction(AVInputFormatPtr format) {
    return format->read_probe;
}
#else
// Since libavformat 61 the probe stands in a private record behind the public one, and there is no
// public way to ask one demuxer. These are the first fields of that record.
struct PrivateInputFormat {
    AVInputFormat format;
    AVCodecID rawCodecId;
    int privateDataSize;
    int internalFlags;
    ProbeFunction readProbe;
    int (*readHeader)(AVFormatContext*);
};

// Whether the library that is loaded has this record, found out without calling anything: the
// demuxers of AC-3 and E-AC-3 name their codecs, have a probe each, and share the function that
// reads the header; all three functions lie in the library that the records lie in.
inline bool hasKnownInputFormats() {
    const auto* ac3 = reinterpret_cast<const PrivateInputFormat*>(av_find_input_format("ac3"));
    const auto* eac3 = reinterpret_cast<const PrivateInputFormat*>(av_find_input_format("eac3"));
    if (ac3 == nullptr || eac3 == nullptr) return false;
    const auto inLibrary = [ac3](auto function) {
        Dl_info library;
        Dl_info owner;
        return dladdr(ac3, &library) != 0 &&
               dladdr(reinterpret_cast<const void*>(function), &owner) != 0 &&
               library.dli_fbase == owner.dli_fbase;
    };
    return ac3->rawCodecId == AV_CODEC_ID_AC3 && eac3->rawCodecId == AV_CODEC_ID_EAC3 &&
           ac3->readProbe != eac3->readProbe && ac3->readHeader == eac3->readHeader &&
           inLibrary(ac3->readProbe) && inLibrary(eac3->readProbe) && inLibrary(ac3->readHeader);
}

// Null for a demuxer without one. Aborts when the library has another record.
inline ProbeFunction probeFunction(AVInputFormatPtr format) {
    static const bool known = hasKnownInputFormats();
    LOG_ALWAYS_FATAL_IF(!known,
                        "libavformat %u.%u.%u has no ac3 and eac3 demuxers, or keeps their probes "
                        "elsewhere than 61.7 does",
                        AV_VERSION_MAJOR(avformat_version()), AV_VERSION_MINOR(avformat_version()),
                        AV_VERSION_MICRO(avformat_version()));
    return reinterpret_cast<const PrivateInputFormat*>(format)->readProbe;
}
#endif

// From libavformat 59 on, HEVC tracks whose open random access points are marked by 'sync' sample
// groups are sought by the presentation time of those pictures: backward seeks go a group of
// pictures too far, forward seeks fall to the first sample.
constexpr bool kSeeksHevcByCraPresentation = LIBAVFORMAT_VERSION_MAJOR >= 59;

inline void registerAll() {
#if LIBAVFORMAT_VERSION_MAJOR < 59
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    av_register_all();
#pragma GCC diagnostic pop
#endif
}

inline int indexEntryCount(const AVStream* stream) {
#if ORVEL_AVFORMAT_HAS_INDEX_ACCESSORS
    return avformat_index_get_entries_count(stream);
#else
    return stream->nb_index_entries;
#endif
}

// The entry at index, which must be below indexEntryCount. Valid until the index grows.
inline const AVIndexEntry* indexEntry(const AVStream* stream, int index) {
#if ORVEL_AVFORMAT_HAS_INDEX_ACCESSORS
    // The library takes the stream as non-const although it only reads it.
    return avformat_index_get_entry(const_cast<AVStream*>(stream), index);
#else
    return &stream->index_entries[index];
#endif
}

inline int channelCount(const AVCodecParameters& parameters) {
#if ORVEL_AVCODEC_HAS_CH_LAYOUT
    return parameters.ch_layout.nb_channels;
#else
    return parameters.channels;
#endif
}

// The speaker mask, 0 when the order of the channels is not the native one.
inline uint64_t channelLayout(const AVCodecParameters& parameters) {
#if ORVEL_AVCODEC_HAS_CH_LAYOUT
    return parameters.ch_layout.order == AV_CHANNEL_ORDER_NATIVE ? parameters.ch_layout.u.mask : 0;
#else
    return parameters.channel_layout;
#endif
}

// Parses an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1) with its backward-compatible SBR
// extension. Negative on a malformed configuration.
inline int parseMpeg4AudioConfig(MPEG4AudioConfig* config, const uint8_t* data, int sizeBytes) {
#if LIBAVCODEC_VERSION_MAJOR >= 59
    return avpriv_mpeg4audio_get_config2(config, data, sizeBytes, 1, nullptr);
#else
    if (sizeBytes > INT32_MAX / 8) return AVERROR_INVALIDDATA;
    return avpriv_mpeg4audio_get_config(config, data, sizeBytes * 8, 1);
#endif
}

// Copies the codec parameters into the stream's own codec context, where streams still have one.
// From libavformat 59 on they have none, and demultiplexing is the same with and without the copy:
// the library reads with a context of its own.
inline void copyParametersToStreamCodec(AVStream* stream) {
#if LIBAVFORMAT_VERSION_MAJOR < 59
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    avcodec_parameters_to_context(stream->codec, stream->codecpar);
#pragma GCC diagnostic pop
#else
    (void)stream;
#endif
}

// The stream's display matrix (9 values, 16.16 and 2.30 fixed point), null without one.
inline const int32_t* displayMatrix(const AVStream* stream) {
#if LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100)
    const AVPacketSideData* data = av_packet_side_data_get(stream->codecpar->coded_side_data,
                                                           stream->codecpar->nb_coded_side_data,
                                                           AV_PKT_DATA_DISPLAYMATRIX);
    return data != nullptr ? reinterpret_cast<const int32_t*>(data->data) : nullptr;
#else
    return reinterpret_cast<const int32_t*>(
            av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr));
#endif
}

}  // namespace compat
}  // namespace orvel
