#pragma once

#include "Options.h"
#include "Report.h"
#include "process/ChildState.h"

namespace orvel::probe {

/** Where the child writes what was asked for: "cover", and the samples of a track by its index. */
using OutputFds = std::map<std::string, int>;

/**
 * Plays the framework for one file: offers it to the plug-in, asks for the formats, starts, seeks
 * and reads the tracks, sends what comes back, and closes all. Blocks as long as the plug-in does.
 * Keeps `state` up to date. The report is sent before tracks and extractor are closed, where a
 * plug-in may well fail. Never throws: whatever goes wrong is in the report. Returns its exit code.
 */
int collect(const Options& options, const OutputFds& outputs, const std::string& file,
            ChildState& state, ReportSender& sender);

}  // namespace orvel::probe
