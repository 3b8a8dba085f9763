// A report as one line of JSON. The keys are fixed; a later version only adds.
#pragma once

#include <cstdio>
#include <string>

#include "report.h"

namespace orvel::probe {

// Writes the object and a newline. Text that is not UTF-8 has its bad bytes replaced by U+FFFD, so
// that the line is valid whatever a file's tags hold. The same report always gives the same line.
void writeJson(const Report& report, FILE* out);

// Adds an "error" to an object that writeJson made, newline included.
std::string addJsonError(const std::string& line, const std::string& error);

}  // namespace orvel::probe
