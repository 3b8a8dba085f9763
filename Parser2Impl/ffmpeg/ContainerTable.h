#pragma once

#include <stddef.h>
#include <stdint.h>

namespace orvel {

// One container that the plug-in offers.
struct Container {
    const char* demuxer;      // FFmpeg's short name
    const char* const* mime;  // the platform's constant
    uint32_t flag;            // its bit in the property "mm.enable.orvel_parser"
};

constexpr size_t kContainerCount = 17;

// In probing order; on equal scores the earlier row wins.
extern const Container kContainers[kContainerCount];

}  // namespace orvel
