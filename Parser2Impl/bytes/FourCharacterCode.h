#pragma once

#include <cstdint>

namespace orvel {

// The code of four characters: the first is the most significant byte.
constexpr uint32_t fourCharacterCode(const char (&text)[5]) {
    uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

}  // namespace orvel
