#pragma once

#include "Report.h"

namespace orvel::probe {

/** One answer of the plug-in and what it left behind on the way. */
struct SniffCase {
    const Json& steps;  // PluginLog::endTrace()
    bool taken;
    std::string mask;           // the value of mm.enable.orvel_parser
    int64_t fileBytes;          // -1: not known
    std::string foreignFormat;  // what libavformat takes the file for; empty: nothing
};

/** Every container of the plug-in, as a value of mm.enable.orvel_parser. */
constexpr uint32_t kAllContainers = 0x7FFF;

/** Whether the answer depends on containers that the property leaves out. */
bool needsWideSniff(const SniffCase& one);
/**
 * Why a file was taken or declined, in one sentence, from what the plug-in logged: its own answer
 * is yes or no. Without "taken: " or "declined: " in front and without an end.
 */
std::string sniffReason(const SniffCase& one);
/**
 * The reason where the property leaves containers out. `wide`: the file offered once more with
 * every container enabled.
 */
std::string maskReason(const std::string& mask, const SniffCase* wide);

}  // namespace orvel::probe
