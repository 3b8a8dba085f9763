#pragma once

#include <cstdint>
#include <optional>

namespace orvel::host {

/** Where a seek may land; the platform's numbers. */
enum class SeekMode : uint32_t {
    PreviousSync = 0,
    NextSync = 1,
    ClosestSync = 2,
    Closest = 3,
    FrameIndex = 4,
};

/** How one sample is to be read. */
struct ReadOptions {
    struct Seek {
        int64_t timeUs = 0;
        SeekMode mode = SeekMode::ClosestSync;
    };

    /** Move there first, then read. */
    std::optional<Seek> seek;
    bool nonBlocking = false;

    /** The option word of the C table: mode in bits 0 to 2, 8 for a seek, 16 for non-blocking. */
    uint32_t word() const;
    /** The seek position of the C table, in microseconds; 0 without a seek. */
    int64_t seekTimeUs() const { return seek ? seek->timeUs : 0; }
};

}  // namespace orvel::host
