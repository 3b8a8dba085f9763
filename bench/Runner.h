#pragma once

#include <functional>
#include <string>

#include "MediaCache.h"
#include "Results.h"

namespace orvel::bench {

/**
 * Runs cases. Timed turns run in this process, the plug-in's and the bare loop's in turn, each
 * first in every second round. What costs time to observe (source, heap, peak memory) is observed
 * in turns of their own, each in a new process.
 */
class Runner {
  public:
    using Progress = std::function<void(const std::string& text)>;

    /** Loads the plug-in and enables its containers. Throws host::PluginError. */
    Runner(std::string pluginPath, const MediaCache& media, Progress progress);

    /** `rounds` is at least 1. Throws what a turn throws; std::runtime_error when sides differ. */
    CaseResult run(const Case& row, int rounds);

    /** One accounted turn of one side in this very process. */
    Measure account(const Case& row, bool plugin);

  private:
    Measure turn(const Case& row, bool plugin, uint64_t work);
    Measure accountInChild(const Case& row, bool plugin) const;
    void checkSame(const Case& row, const Measure& bare, const Measure& plugin) const;
    void runTurns(const Case& row, int rounds, CaseResult* result);
    void runAccounts(const Case& row, int rounds, CaseResult* result);

    const std::string mPluginPath;
    const MediaCache& mMedia;
    const Progress mProgress;
    const host::Plugin mPlugin;
};

}  // namespace orvel::bench
