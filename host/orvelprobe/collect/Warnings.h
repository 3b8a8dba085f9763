#pragma once

#include "Report.h"

namespace orvel::probe {

/** What a file that came through has that is not well, of what was counted on the way. */
struct Findings {
    int64_t claimedBytes = -1;
    uint64_t sourceFailures = 0;
    int64_t failedAt = 0;
    int32_t failure = 0;
};

/**
 * The warnings of a report whose tracks are complete: each with a kind, a sentence and the numbers
 * that show it, as docs/orvelprobe-json.md lists them.
 */
Json warningsOf(const Json& tree, const Findings& findings);

}  // namespace orvel::probe
