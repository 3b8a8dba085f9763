#pragma once

#include "Report.h"

namespace orvel::probe {

/**
 * One file's figure: the samples of all its tracks over one time axis, as numbers for the page's
 * script, which makes the rest of them. Times are microseconds; "times" holds the first and then
 * the differences.
 *   from, to   the axis: from 0 to the file's duration, and as far as samples lie
 *   tracks     of those that were read: index, name, count; perBin samples that each bin stands
 *              for; times, max (bytes), sum (no sum: as max), keys (how many; none: all are)
 *   seeks      asked, and for each track: index, landed and target where there are such
 * At most `maxBins` bins a track. Null when no track was read.
 */
Json plotJson(const Report& report, size_t maxBins);

}  // namespace orvel::probe
