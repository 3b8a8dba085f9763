#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/CountingSource.h"

namespace orvel::bench {

/** What one turn of one side cost, in its metered stretches only. */
struct Measure {
    double seconds = 0;
    double cpuSeconds = 0;  // CLOCK_PROCESS_CPUTIME_ID: all threads
    double sleeps = 0;      // voluntary context switches of all threads
    double reads = 0;       // of the source
    double worstReads = 0;  // of the source, during one command
    double peakBytes = 0;   // resident, the libraries included; only of a turn in its own process
    uint64_t samples = 0;   // whatever the case repeats: samples, seeks, opens, files sniffed
    uint64_t bytes = 0;     // delivered
};

/**
 * Meters one turn of one side: a case encloses what counts in begin() and end(), as often as it
 * likes, and says what was delivered. One thread.
 */
class Meter {
  public:
    /** `source`, which must outlive the meter, is the one that the turn reads. */
    explicit Meter(const host::CountingSource& source) : mSource(source) {}

    void begin();
    void end();
    /** For each sample. */
    void delivered(size_t bytes) {
        mMeasure.bytes += bytes;
        ++mMeasure.samples;
    }
    /** Runs one command, metered, and keeps the most reads that one took. */
    template <typename Command>
    void command(Command run) {
        const double before = mMeasure.reads;
        begin();
        run();
        end();
        mMeasure.worstReads = std::max(mMeasure.worstReads, mMeasure.reads - before);
        delivered(0);
    }

    const Measure& result() const { return mMeasure; }

  private:
    // Of the process since it began; without the wall clock.
    Measure now() const;

    const host::CountingSource& mSource;
    Measure mMeasure;
    Measure mBegin;  // the process's state at the last begin()
};

/** The middle one; the mean of the two middle ones of an even number. Not of none. */
double median(std::vector<double> values);

}  // namespace orvel::bench
