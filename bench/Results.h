#pragma once

#include <optional>
#include <vector>

#include "Case.h"
#include "Measure.h"

namespace orvel::bench {

/** All that was measured of one side of one case. */
struct SideResult {
    std::vector<Measure> turns;           // timed, one a round; none for a case of Bound::Memory
    std::vector<Measure> accountedTurns;  // one; for a case of Bound::Memory one a round

    double medianSeconds() const;
    double medianCpuSeconds() const;
    double medianVoluntarySwitches() const;  // a turn
    double medianPeakResident() const;       // bytes
    /** The samples of a turn: the same in each. */
    uint64_t samples() const;
    /** Medians over the turns, in the order of their first appearance. */
    std::vector<Figure> figures() const;
};

struct CaseResult {
    const Case* row = nullptr;
    SideResult bare;  // without turns when there is nothing to compare with
    SideResult plugin;
    // Of each round: time of the plug-in over time of the bare loop (Bound::Memory: none).
    std::vector<double> ratios;
    double medianRatio = 0;
    // Bound::Memory, in MiB: what the plug-in took more, and what the full rule lets it hold.
    double extraMemory = 0;
    double fullRuleMemory = 0;

    /** What the case's target bounds; nothing when it has none. */
    std::optional<double> value() const;
    std::optional<double> limit() const;
    /** Cases without a target always meet it. */
    bool meetsTarget() const;
};

}  // namespace orvel::bench
