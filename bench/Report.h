#pragma once

#include <string>
#include <vector>

#include "Results.h"

namespace orvel::bench {

/** Circumstances of a run. */
struct Machine {
    long cores = 0;
    double loadBefore = 0;  // load average of the last minute
    double loadAfter = 0;
    std::string libavformat;
    int rounds = 0;
};

/** For people: what is compared and the target; what it cost; what is reported without a target. */
std::string textReport(const std::vector<CaseResult>& results, const Machine& machine);

/** For programs: one JSON object. */
std::string jsonReport(const std::vector<CaseResult>& results, const Machine& machine);

}  // namespace orvel::bench
