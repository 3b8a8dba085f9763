#pragma once

#include <stdint.h>

#include "Lock.h"

namespace orvel {

// When a read that waits is woken for the packet that it has got. A wake-up costs more than a pass
// over a fast source: there, packets gather for a while. Looper thread only.
class ReadBatch {
  public:
    // A pass that began at beganNs has left packets for reads that wait. first: one of them is the
    // first packet of its track since a start or a flush.
    AfterPass next(bool first, int64_t beganNs) {
        const int64_t nowNs = monotonicNs();
        if (mServedSinceNs == kNever) mServedSinceNs = nowNs;
        const bool wakes = first || nowNs - beganNs >= kSlowPassNs ||
                           nowNs - mServedSinceNs >= kLongestBatchNs;
        return wakes ? AfterPass::ReadFirst : AfterPass::Pass;
    }

    // The reads have been woken.
    void end() { mServedSinceNs = kNever; }

  private:
    // A pass that took this long had to wait for the source: its packet is delivered before the
    // next pass. Otherwise reads are woken in batches, at the latest after the second.
    static constexpr int64_t kSlowPassNs = 200000;
    static constexpr int64_t kLongestBatchNs = 1000000;
    static constexpr int64_t kNever = 0;

    // When the first of the reads that are still to be woken got its packet.
    int64_t mServedSinceNs = kNever;
};

}  // namespace orvel
