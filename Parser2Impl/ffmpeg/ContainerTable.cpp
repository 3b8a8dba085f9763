#include "ContainerTable.h"

#include <string.h>

#include "FFmpegCompat.h"

namespace orvel {

namespace {

// Every bit up to the last has a row, its extensions in one row, and its rows agree on ID3 tags.
constexpr bool isWellFormed() {
    size_t extensions = 0;
    for (uint32_t flag = 1; flag <= kLastContainerFlag; flag <<= 1) {
        size_t named = 0;
        size_t rows = 0;
        size_t afterID3 = 0;
        for (const Container& row : kContainers) {
            if (row.flag != flag) continue;
            ++rows;
            afterID3 += row.rules & kAfterID3;
            if (row.extensions[0] != nullptr) ++named;
            for (size_t i = 0; row.extensions[i] != nullptr; ++i)
                ++extensions;
        }
        if (named != 1 || (afterID3 != 0 && afterID3 != rows)) return false;
    }
    return extensions == kExtensionCount;
}

static_assert(sizeof(kContainers) / sizeof(kContainers[0]) == 17 && isWellFormed());

}  // namespace

bool isSupportID3(int flag) {
    for (const Container& row : kContainers) {
        if (row.flag == static_cast<uint32_t>(flag)) return (row.rules & kAfterID3) != 0;
    }
    return false;
}

bool isSpecialContainer(const char* formatName) {
    for (const Container& row : kContainers) {
        if ((row.rules & kSpecialAudio) != 0 &&
            strncmp(formatName, row.demuxer, strlen(row.demuxer)) == 0) {
            return true;
        }
    }
    return false;
}

const Container* findContainer(const char* formatName) {
    for (const Container& row : kContainers) {
        if (av_match_name(row.demuxer, formatName)) return &row;
    }
    return nullptr;
}

}  // namespace orvel
