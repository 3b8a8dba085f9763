#include "PcmConverter.h"

#include <climits>
#include <cstring>

namespace orvel {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "samples leave in the processor's order, which is to be little-endian");

namespace {

// Samples per step. Each step moves a fixed number of bytes between memory and local arrays, which
// leaves the compiler a loop of constant length without aliasing or alignment questions: it becomes
// vector code at -O2 with every compiler, on x86-64 and arm64 alike.
constexpr size_t kStep = 32;

int16_t widen(uint8_t sample, uint16_t flip) {
    return static_cast<int16_t>((sample << 8) ^ flip);
}

}  // namespace

void memcpyToI16FromU8(int16_t* dst, const uint8_t* src, size_t count, bool isSigned) {
    const uint16_t flip = isSigned ? 0 : 0x8000;
    auto* out = reinterpret_cast<uint8_t*>(dst);
    while (count >= kStep) {
        count -= kStep;
        uint8_t in[kStep];
        int16_t wide[kStep];
        memcpy(in, src + count, sizeof(in));
        for (size_t i = 0; i < kStep; ++i)
            wide[i] = widen(in[i], flip);
        memcpy(out + 2 * count, wide, sizeof(wide));
    }
    while (count > 0) {
        --count;
        const int16_t wide = widen(src[count], flip);
        memcpy(out + 2 * count, &wide, sizeof(wide));
    }
}

void memcpyToI16leFromUint8be(int16_t* dst, const uint8_t* src, size_t count) {
    auto* out = reinterpret_cast<uint8_t*>(dst);
    size_t samples = count / 2;
    for (; samples >= kStep; samples -= kStep) {
        uint16_t block[kStep];
        memcpy(block, src, sizeof(block));
        for (uint16_t& sample : block) {
            sample = static_cast<uint16_t>(sample << 8 | sample >> 8);
        }
        memcpy(out, block, sizeof(block));
        src += sizeof(block);
        out += sizeof(block);
    }
    for (; samples > 0; --samples) {
        const uint8_t high = src[0];
        out[0] = src[1];
        out[1] = high;
        src += 2;
        out += 2;
    }
}

void memcpyToI24leFromUint8be(uint8_t* dst, const uint8_t* src, size_t count) {
    // A reversed 32-bit word is one reversed sample and one byte too many, which the next sample or
    // the tail overwrites. One sample a cycle needs no vectors, and those of the baseline x86-64
    // cannot shuffle bytes.
    while (count >= sizeof(uint32_t)) {
        uint32_t word;
        memcpy(&word, src, sizeof(word));
        word = __builtin_bswap32(word) >> 8;
        memcpy(dst, &word, sizeof(word));
        src += 3;
        dst += 3;
        count -= 3;
    }
    if (count == 3) {
        dst[0] = src[2];
        dst[1] = src[1];
        dst[2] = src[0];
    } else if (count > 0) {
        memcpy(dst, src, count);
    }
}

PcmResult convertPcm(uint8_t* dst, size_t dstCapacity, const uint8_t* src, size_t size,
                     int32_t bitsPerSample, bool isAiff) {
    if (size == 0) return {true, 0};
    const bool widens = bitsPerSample == 8;
    // Callers handle the length of the output as a 32-bit signed number.
    if (size > INT32_MAX / 2u && (widens || size > INT32_MAX)) return {false, size};
    const size_t length = widens ? 2 * size : size;
    if (length > dstCapacity) return {false, length};
    if (widens) {
        memcpyToI16FromU8(reinterpret_cast<int16_t*>(dst), src, size, isAiff);
    } else if (bitsPerSample == 16 && isAiff) {
        memcpyToI16leFromUint8be(reinterpret_cast<int16_t*>(dst), src, size);
        if (size % 2 != 0) dst[size - 1] = 0;
    } else if (bitsPerSample == 24 && isAiff) {
        memcpyToI24leFromUint8be(dst, src, size);
    } else {
        memcpy(dst, src, size);
    }
    return {true, length};
}

}  // namespace orvel
