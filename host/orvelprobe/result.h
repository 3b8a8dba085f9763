// What became of a file, in a word and in a sentence.
#pragma once

#include <string>

#include "report.h"

namespace orvel::probe {

enum class Result { Taken, Declined, Unreadable, Differs, Failed, Crashed, TimedOut };
constexpr size_t kResultCount = static_cast<size_t>(Result::TimedOut) + 1;

// As far as a report can tell: never Crashed nor TimedOut.
Result resultOf(const Report& report);
// "taken", "timed out".
const char* resultName(Result result);
// Why it was declined, or what went wrong; empty when all went well. Untrusted text.
std::string remarkOf(const Report& report);

}  // namespace orvel::probe
