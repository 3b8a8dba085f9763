// Where the plug-in and plain libavformat differ, as text.
#pragma once

#include <string>

#include "page.h"
#include "report.h"

namespace orvel::probe {

// "track 1, sample 12: time 1.000 s, libavformat has 1.002 s"
std::string differenceText(const Difference& difference);
// The word for a kind in the JSON: "time", "payload", ...
const char* differenceName(Difference::What what);

void writeVerify(const Page& page, const VerifyReport& verify);

}  // namespace orvel::probe
