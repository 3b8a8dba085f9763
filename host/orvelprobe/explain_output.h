// How the plug-in came to its decision, as a part of a page.
#pragma once

#include <string>

#include "page.h"
#include "report.h"

namespace orvel::probe {

// "declined: 900 bytes, a probe needs 1024"
std::string verdictText(const Report& report);
// 'V', 'D', 'I', 'W', 'E', 'F', as the platform's log shows priorities; '?' for others.
char priorityLetter(int priority);

// Every step in its order, then the verdict. Reads that follow one another are one line.
void writeExplain(const Page& page, const Report& report);

}  // namespace orvel::probe
