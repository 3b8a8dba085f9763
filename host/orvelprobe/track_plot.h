// The samples of a track in the form in which a plot shows them: as many numbers as the plot has
// room for, however long the track is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "report.h"

namespace orvel::probe {

// Times beyond some 140 years are drawn there: a browser's numbers are exact up to 2^53, also for
// the difference of any two times.
constexpr int64_t kMaxPlotTimeUs = int64_t{1} << 52;

// Neighbours in the order of time.
struct SampleBin {
    int64_t timeUs = 0;  // of the first
    uint32_t minBytes = 0;
    uint32_t maxBytes = 0;
    uint32_t syncCount = 0;
};

// Where times do not follow one another as most of them do.
struct TimeRange {
    int64_t fromUs = 0;
    int64_t toUs = 0;
};

struct TrackPlot {
    size_t samplesPerBin = 1;
    std::vector<SampleBin> bins;
    int64_t endUs = 0;          // where the last sample is taken to end
    int64_t typicalStepUs = 0;  // median of the steps forward; 0 when there are none
    // Bytes of the samples that begin within each `rateStepUs`, a whole number of seconds, from
    // `rateStartUs`, a multiple of it, on.
    int64_t rateStartUs = 0;
    int64_t rateStepUs = 1000000;
    std::vector<uint64_t> rateBytes;
    // Steps above 1.5 typical ones (and a millisecond more), and below half of one; of each
    // the first few thousand.
    std::vector<TimeRange> gaps, overlaps;
    uint64_t gapCount = 0, overlapCount = 0;
    int64_t longestGapUs = 0, longestGapAtUs = 0;
    uint64_t backwardCount = 0;  // samples that were read behind one of a later time
};

// At most `maxBins` (from 1 on) bins and `maxBins` rates. Text has pauses by its nature: gaps and
// overlaps are looked for only if `continuous`.
TrackPlot plotTrack(std::vector<PlotSample> samples, size_t maxBins, bool continuous);

struct Band {
    int64_t min = 0;
    int64_t max = 0;
};
// The least and the greatest of each `*perBin` values in turn, at most `maxBins` of them.
std::vector<Band> bandsOf(const std::vector<int64_t>& values, size_t maxBins, size_t* perBin);

}  // namespace orvel::probe
