// Why a file was taken or declined, in one sentence, from what the plug-in logged on the way: its
// own answer is yes or no.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "report.h"

namespace orvel::probe {

// What came out when the file was offered once more, with every container enabled.
struct WideSniff {
    bool taken = false;
    uint32_t container = 0;  // bit of the one that fits best; 0: none
    std::string reason;
};

struct SniffCase {
    const ExplainReport& trace;
    bool taken;
    std::string mask;   // the value of mm.enable.orvel_parser
    int64_t fileBytes;  // -1: not known
};

// Whether the answer depends on containers that the property leaves out.
bool needsWideSniff(const SniffCase& one);

// Without "taken: " or "declined: " in front and without an end; empty when the log tells nothing.
// `wide`: where needsWideSniff() said so and the second offer came to an end.
std::string sniffReason(const SniffCase& one, const std::optional<WideSniff>& wide);

// The bit of the container that fits best in a sniff, 0 when none does well enough.
uint32_t bestContainer(const ExplainReport& trace);

}  // namespace orvel::probe
