// The plots of a page: numbers only, drawn by the page's script.
#pragma once

#include <cstddef>
#include <string>

#include "report.h"

namespace orvel::probe {

// Of one track: sizes, key frames, bitrate, times and where seeks landed. At most `maxBins` bars.
// Empty when no sample of it was read.
std::string trackPlotHtml(const Report& report, const TrackReport& track, size_t maxBins);

// What the source delivered ahead of the samples, over the read. Empty when nothing was read.
std::string cachePlotHtml(const Report& report, size_t maxBins);

}  // namespace orvel::probe
