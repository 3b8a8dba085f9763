// Raw PCM of WAV-like and AIFF files into what decoders take: signed little-endian samples.
// Pure functions over bytes: no state, any thread, no allocation. Neither pointer needs alignment.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvel {

// Widens count 8-bit samples to 16 bits: the byte becomes the high byte; an unsigned source
// (silence at 0x80) has its top bit flipped. Correct when dst and src are the same address, because
// it works from the last sample to the first; no other overlap is allowed. Writes 2 * count bytes.
void memcpyToI16FromU8(int16_t* dst, const uint8_t* src, size_t count, bool isSigned);

// Exchanges the bytes of count / 2 big-endian 16-bit samples. The last byte of an odd count is
// neither read nor written. dst and src are the same address or do not overlap.
void memcpyToI16leFromUint8be(int16_t* dst, const uint8_t* src, size_t count);

// Reverses the bytes of count / 3 packed big-endian 24-bit samples; the one or two bytes of a
// partial last sample are copied unchanged. Reads and writes exactly count bytes; no overlap.
void memcpyToI24leFromUint8be(uint8_t* dst, const uint8_t* src, size_t count);

struct PcmResult {
    bool ok;        // false: nothing was written, because length exceeds the capacity
    size_t length;  // bytes of output, or how many it would take
};

// Converts one packet. 8 bits: widened, signed when isAiff; 16 and 24 bits of AIFF: byte order
// reversed, the last byte of an odd 16-bit packet is written as 0; anything else: copied.
// Never writes at or past dst + dstCapacity. dst and src do not overlap.
PcmResult convertPcm(uint8_t* dst, size_t dstCapacity, const uint8_t* src, size_t size,
                     int32_t bitsPerSample, bool isAiff);

}  // namespace orvel
