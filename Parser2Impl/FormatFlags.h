#pragma once

#include <stddef.h>
#include <stdint.h>

namespace orvel {

// One bit of the property "mm.enable.orvel_parser" and the file extensions that it claims.
struct FormatFlag {
    static constexpr size_t kMaxExtensions = 11;

    uint32_t flag;
    const char* extensions[kMaxExtensions + 1];  // lower case, without a dot; ended by a null
};

// In the order in which their extensions are listed.
constexpr FormatFlag kFormatFlags[] = {
        {0x1,
         {"3g2", "3ga", "3gp", "3gpp", "3gpp2", "m4a", "m4r", "m4v", "mov", "mp4", "qt", nullptr}},
        {0x2, {"rm", "rmvb"}},
        {0x4, {"mkv"}},
        {0x8, {"avi"}},
        {0x10, {"mp2", "mp3"}},
        {0x20, {"ac3", "eac3", "ec3"}},
        {0x40, {"flv"}},
        {0x80, {"dts"}},
        {0x100, {"aif", "aiff"}},
        {0x200, {"flac"}},
        {0x400, {"ape"}},
        {0x800, {"asf", "wma", "wmv"}},
        {0x1000, {"dsf"}},
        {0x2000, {"dff", "dsd"}},
        {0x4000, {"wav"}},
};

constexpr size_t countExtensions() {
    size_t count = 0;
    for (const FormatFlag& row : kFormatFlags) {
        for (size_t i = 0; row.extensions[i] != nullptr; ++i)
            ++count;
    }
    return count;
}

constexpr bool isOneBitARow() {
    uint32_t expected = 1;
    for (const FormatFlag& row : kFormatFlags) {
        if (row.flag != expected) return false;
        expected <<= 1;
    }
    return true;
}

static_assert(sizeof(kFormatFlags) / sizeof(kFormatFlags[0]) == 15);
static_assert(isOneBitARow());
static_assert(countExtensions() == 33);

}  // namespace orvel
