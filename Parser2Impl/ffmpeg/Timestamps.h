#pragma once

#include "FFmpegCompat.h"

namespace orvel {

// The time base of every time at an interface.
constexpr AVRational kMicroseconds = {1, 1000000};

// A time in us as a timestamp in timeBase. A far time in a fine time base ends up at the end of the
// range, where plain rescaling gives what the demuxers take for no time at all.
inline int64_t timestampFromUs(int64_t timeUs, AVRational timeBase) {
    const int64_t timestamp = av_rescale_q(timeUs, kMicroseconds, timeBase);
    if (timestamp != AV_NOPTS_VALUE) return timestamp;
    return timeUs < 0 ? INT64_MIN + 1 : INT64_MAX;
}

}  // namespace orvel
