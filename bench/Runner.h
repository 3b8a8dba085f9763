#pragma once

#include <string>
#include <vector>

#include "Case.h"

namespace orvel::bench {

/** One turn of each side, of those that the case has. */
struct Round {
    Measure bare;
    Measure plugin;
    // The same in a quiet environment, of a case that is measured elsewhere.
    Measure quietBare;
    Measure quietPlugin;
};

struct CaseResult {
    const Case* row;
    std::vector<Round> rounds;
    double fullRuleMiB = 0;  // what the full rule lets the plug-in hold; of memory cases only
};

/**
 * Runs cases in this process, the plug-in's turns and the bare loop's in turn, each first in every
 * second round. A first round warms up and does not count.
 */
class Runner {
  public:
    /** Loads the plug-in and enables its containers. Throws host::PluginError. */
    Runner(const std::string& pluginPath, std::string mediaFolder);

    /** `rounds` is at least 1. Throws what a turn throws; std::runtime_error when sides differ. */
    CaseResult run(const Case& row, int rounds);

    /** One turn and the peak memory of this process, which should have done nothing before. */
    Measure account(const Case& row, bool plugin);

  private:
    std::string path(const Case& row) const;
    Measure turn(const Case& row, bool plugin, Where where);
    Measure turnInChild(const Case& row, bool plugin) const;
    void bothTurns(const Case& row, bool pluginFirst, Where where, Measure* bare, Measure* plugin);

    const host::Plugin mPlugin;
    const std::string mMediaFolder;
    uint64_t mWork = 0;  // of the case that runs
};

}  // namespace orvel::bench
