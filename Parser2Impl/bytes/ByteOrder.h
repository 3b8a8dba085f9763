// Big-endian loads from bytes of any alignment, as file formats store their numbers.
#pragma once

#include <cstdint>

namespace orvel {

constexpr uint16_t loadBe16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] << 8 | p[1]);
}

constexpr uint32_t loadBe24(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) << 16 | static_cast<uint32_t>(p[1]) << 8 | p[2];
}

constexpr uint32_t loadBe32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) << 24 | loadBe24(p + 1);
}

constexpr uint64_t loadBe64(const uint8_t* p) {
    return static_cast<uint64_t>(loadBe32(p)) << 32 | loadBe32(p + 4);
}

// The two's-complement value of the 32 bits at p.
constexpr int32_t loadBeI32(const uint8_t* p) {
    return static_cast<int32_t>(loadBe32(p));
}

}  // namespace orvel
