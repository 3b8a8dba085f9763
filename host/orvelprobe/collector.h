// Plays the framework for one file: offers it to the plug-in, asks for the formats, starts, seeks
// and reads the tracks, and notes down what comes back.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "child_state.h"
#include "options.h"
#include "report.h"

namespace orvel::probe {

// One file, once: run(), then the destructor, which closes tracks, extractor and source (a plug-in
// may well fail there, so the report is to be written first). Blocks as long as the plug-in does.
// Keeps `state` up to date on the way.
class Collector {
  public:
    Collector(const Options& options, ChildState& state);
    ~Collector();

    // Calls `beforeReading` with what is known so far, once, if there is anything to read: what
    // follows may be the end of this process.
    // The report is the collector's.
    // Never throws: whatever goes wrong is in the report's error and exit code.
    const Report& run(const std::string& file,
                      const std::function<void(const Report&)>& beforeReading);

  private:
    class Session;
    const Options& mOptions;
    ChildState& mState;
    Report mReport;
    std::unique_ptr<Session> mSession;
};

}  // namespace orvel::probe
