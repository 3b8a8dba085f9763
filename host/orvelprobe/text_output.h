// A report as a page for people.
#pragma once

#include <cstddef>
#include <cstdio>

#include "report.h"

namespace orvel::probe {

struct TextStyle {
    bool colour = false;
    bool allKeys = false;  // --keys
    size_t width = 100;    // columns; long values are cut there, except with allKeys
};

// One block, ending in an empty line. Text from the file is made harmless for a terminal.
void writeText(const Report& report, const TextStyle& style, FILE* out);

// What happened to a file whose page was written already.
void writeTextError(const std::string& error, const TextStyle& style, FILE* out);

}  // namespace orvel::probe
