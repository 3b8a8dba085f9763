#pragma once

#include "ReaderTrack.h"

namespace orvel {

// One packet of the track into one media buffer with its time, sync flag and, after a frame-exact
// video seek, its target time. Called with the reader's mLock, which it holds while it waits for a
// free buffer. *out: the filled buffer, the caller's; null for a packet without data and on every
// status but OK, which are those of Track::acquireBuffer. A payload that does not fit, or is
// malformed, becomes an empty range.
android::status_t convertPacket(FFmpegReader::Track& track, const AVPacket& packet,
                                const FFmpegReader::ReadOptions* options, IOrvelMediaBuffer** out);

}  // namespace orvel
