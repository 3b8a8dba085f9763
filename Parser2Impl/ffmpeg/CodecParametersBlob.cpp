#include "CodecParametersBlob.h"

#include <string.h>

#include <type_traits>

namespace orvel {

namespace {

// An enumeration is copied, not loaded: FFmpeg keeps numbers in some that the file chose.
template <size_t kOffset, typename T, typename V>
void put(uint8_t* blob, const V& value) {
    static_assert(sizeof(T) == 4 || sizeof(T) == 8);
    static_assert(kOffset % 4 == 0 && kOffset + sizeof(T) <= kCodecParametersSize);
    static_assert(sizeof(V) == sizeof(T) && (std::is_enum_v<V> || std::is_same_v<V, T>));
    memcpy(blob + kOffset, &value, sizeof(value));
}

}  // namespace

void writeCodecParametersBlob(const AVCodecParameters& parameters, uint8_t* blob) {
    // The gaps at 12, 92 and 132 are the padding of the 4.x record.
    memset(blob, 0, kCodecParametersSize);
    put<0, int32_t>(blob, parameters.codec_type);
    put<4, int32_t>(blob, parameters.codec_id);
    put<8, uint32_t>(blob, parameters.codec_tag);
    put<16, int32_t>(blob, parameters.extradata_size);
    put<20, int32_t>(blob, parameters.format);
    put<24, int64_t>(blob, parameters.bit_rate);
    put<32, int32_t>(blob, parameters.bits_per_coded_sample);
    put<36, int32_t>(blob, parameters.bits_per_raw_sample);
    put<40, int32_t>(blob, parameters.profile);
    put<44, int32_t>(blob, parameters.level);
    put<48, int32_t>(blob, parameters.width);
    put<52, int32_t>(blob, parameters.height);
    put<56, int32_t>(blob, parameters.sample_aspect_ratio.num);
    put<60, int32_t>(blob, parameters.sample_aspect_ratio.den);
    put<64, int32_t>(blob, parameters.field_order);
    put<68, int32_t>(blob, parameters.color_range);
    put<72, int32_t>(blob, parameters.color_primaries);
    put<76, int32_t>(blob, parameters.color_trc);
    put<80, int32_t>(blob, parameters.color_space);
    put<84, int32_t>(blob, parameters.chroma_location);
    put<88, int32_t>(blob, parameters.video_delay);
    put<96, uint64_t>(blob, compat::channelLayout(parameters));
    put<104, int32_t>(blob, compat::channelCount(parameters));
    put<108, int32_t>(blob, parameters.sample_rate);
    put<112, int32_t>(blob, parameters.block_align);
    put<116, int32_t>(blob, parameters.frame_size);
    put<120, int32_t>(blob, parameters.initial_padding);
    put<124, int32_t>(blob, parameters.trailing_padding);
    put<128, int32_t>(blob, parameters.seek_preroll);
    if (parameters.extradata_size > 0) {
        memcpy(blob + kCodecParametersSize, parameters.extradata,
               static_cast<size_t>(parameters.extradata_size));
    }
}

}  // namespace orvel
