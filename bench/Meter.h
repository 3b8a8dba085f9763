#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "HeapCount.h"
#include "Measure.h"

namespace orvel::bench {

/**
 * Meters one turn of one side: a case encloses what counts in begin() and end(), as often as it
 * likes, and says what was delivered. One thread.
 */
class Meter {
  public:
    Meter() = default;
    /** For an accounted turn: notes, too, what `source` saw, which must outlive the meter. */
    explicit Meter(const host::CountingSource& source) : mSource(&source) {}

    void begin();
    void end();

    /** Between begin and end, for each sample. */
    void delivered(size_t bytes) {
        mMeasure.bytes += bytes;
        if (++mMeasure.samples == kSteadyFrom) mSteadyAllocations = heapCounts().allocations;
    }

    void figure(std::string name, double value, std::string unit);

    /** Seconds metered so far. */
    double seconds() const { return mMeasure.seconds; }

    /** Everything, after the last end(). */
    Measure result() const;

  private:
    // From this sample on, of twice as many at least, nothing is met for the first time any more.
    static constexpr uint64_t kSteadyFrom = 1000;

    const host::CountingSource* const mSource = nullptr;
    Measure mMeasure;
    uint64_t mAllocations = 0;        // in all metered stretches
    uint64_t mSteadyAllocations = 0;  // the heap's count at sample kSteadyFrom
    uint64_t mLastAllocations = 0;    // the heap's count at the last end()
    // At the last begin().
    std::chrono::steady_clock::time_point mBegin;
    Usage mBeginUsage;
    host::SourceCounts mBeginSource;
    uint64_t mBeginAllocations = 0;
};

}  // namespace orvel::bench
