// Codec configuration records in the forms that the platform's decoders read.
// Pure functions over bytes; a record of another size than the one named gives no result.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace orvel {

constexpr size_t kAlacExtradataSize = 36;  // 12 bytes of atom head, then ALACSpecificConfig
constexpr size_t kAlacCookieSize = 24;
constexpr size_t kFlacStreamInfoSize = 34;

using AlacCookie = std::array<uint8_t, kAlacCookieSize>;

// ALACSpecificConfig of the 'alac' atom (Apple Lossless Audio Codec, "magic cookie" description)
// with every multi-byte field turned from big-endian into host order; the layout is otherwise the
// same.
std::optional<AlacCookie> alacCookieFromExtradata(const uint8_t* data, size_t size);

struct FlacBlockSizes {
    int32_t minBlockSize;  // samples
    int32_t maxBlockSize;
    int32_t minFrameSize;  // bytes, 0: unknown
    int32_t maxFrameSize;
};

// The first ten bytes of a bare STREAMINFO block body (RFC 9639, 8.2).
std::optional<FlacBlockSizes> flacBlockSizesFromStreamInfo(const uint8_t* data, size_t size);

}  // namespace orvel
