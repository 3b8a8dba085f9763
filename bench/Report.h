#pragma once

#include <string>
#include <vector>

#include "Runner.h"

namespace orvel::bench {

struct Report {
    std::vector<std::string> machine;  // describeMachine(), at the beginning
    int rounds;
    std::vector<CaseResult> results;
};

/** For a terminal: two tables, the targets and everything else that was measured. */
std::string asText(const Report& report);

/** For the documents: the same tables in a page that says how to read them. */
std::string asPage(const Report& report);

/** For programs: one JSON object. */
std::string asJson(const Report& report);

}  // namespace orvel::bench
