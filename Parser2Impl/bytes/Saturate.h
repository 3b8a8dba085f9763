#pragma once

#include <stdint.h>

namespace orvel {

// Arithmetic on numbers that a hostile file chooses: the result stays at the end of its range, as
// the arm64 conversions do, where plain C++ would leave it undefined.

constexpr int32_t saturatingInt32(int64_t value) {
    return value > INT32_MAX   ? INT32_MAX
           : value < INT32_MIN ? INT32_MIN
                               : static_cast<int32_t>(value);
}

constexpr int32_t saturatingProduct(int32_t a, int32_t b) {
    return saturatingInt32(static_cast<int64_t>(a) * b);
}

constexpr int64_t saturatingDifference(int64_t a, int64_t b) {
    int64_t difference = 0;
    if (!__builtin_sub_overflow(a, b, &difference)) return difference;
    return b > 0 ? INT64_MIN : INT64_MAX;
}

// |a - b|, exact for every pair.
constexpr uint64_t distance(int64_t a, int64_t b) {
    uint64_t difference = 0;
    // The wrap of the unsigned difference is intended.
    (void)__builtin_sub_overflow(static_cast<uint64_t>(a > b ? a : b),
                                 static_cast<uint64_t>(a > b ? b : a), &difference);
    return difference;
}

// Truncates toward zero; NaN gives 0.
constexpr int32_t saturatingInt32FromDouble(double value) {
    if (value >= 2147483647.0) return INT32_MAX;
    if (value <= -2147483648.0) return INT32_MIN;
    return value == value ? static_cast<int32_t>(value) : 0;
}

}  // namespace orvel
