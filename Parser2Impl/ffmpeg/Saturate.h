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

// Truncates toward zero; NaN gives 0.
constexpr int32_t saturatingInt32FromDouble(double value) {
    if (value >= 2147483647.0) return INT32_MAX;
    if (value <= -2147483648.0) return INT32_MIN;
    return value == value ? static_cast<int32_t>(value) : 0;
}

}  // namespace orvel
