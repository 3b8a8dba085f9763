#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Process.h"
#include "framework/CountingSource.h"

namespace orvel::bench {

inline constexpr double kMiB = 1024 * 1024;

/** A named number that a case reports beside its time. */
struct Figure {
    std::string name;
    double value = 0;
    std::string unit;
};

/** What one turn of one side gave. Everything but the figures is of the metered stretches only. */
struct Measure {
    double seconds = 0;
    uint64_t samples = 0;  // whatever the case counts: samples, seeks, opens, files sniffed
    uint64_t bytes = 0;    // delivered
    Usage usage;

    // Accounted turns only: they run in a process of their own, with a counting source and heap.
    host::SourceCounts source;
    double allocationsPerSample = 0;  // in steady state
    int64_t peakHeapBytes = 0;
    uint64_t peakResidentBytes = 0;  // of the whole process, its libraries included

    std::vector<Figure> figures;
};

/** The middle one; the mean of the two middle ones of an even number; 0 of none. */
double median(std::vector<double> values);

}  // namespace orvel::bench
