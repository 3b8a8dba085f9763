#include "Results.h"

#include <utility>

namespace orvel::bench {
namespace {

template <typename Value>
double medianOf(const std::vector<Measure>& turns, Value value) {
    std::vector<double> values;
    for (const Measure& turn : turns)
        values.push_back(static_cast<double>(value(turn)));
    return median(std::move(values));
}

}  // namespace

double SideResult::medianSeconds() const {
    return medianOf(turns, [](const Measure& turn) { return turn.seconds; });
}

double SideResult::medianCpuSeconds() const {
    return medianOf(turns, [](const Measure& turn) { return turn.usage.cpuSeconds; });
}

double SideResult::medianVoluntarySwitches() const {
    return medianOf(turns, [](const Measure& turn) { return turn.usage.voluntarySwitches; });
}

double SideResult::medianPeakResident() const {
    return medianOf(accountedTurns, [](const Measure& turn) { return turn.peakResidentBytes; });
}

uint64_t SideResult::samples() const {
    const auto& any = turns.empty() ? accountedTurns : turns;
    return any.empty() ? 0 : any.front().samples;
}

std::vector<Figure> SideResult::figures() const {
    std::vector<Figure> medians;
    if (turns.empty()) return medians;
    for (size_t i = 0; i < turns.front().figures.size(); ++i) {
        Figure figure = turns.front().figures[i];
        figure.value = medianOf(turns, [i](const Measure& turn) { return turn.figures[i].value; });
        medians.push_back(std::move(figure));
    }
    return medians;
}

std::optional<double> CaseResult::value() const {
    if (row->bound == Bound::None) return std::nullopt;
    return row->bound == Bound::Ratio ? medianRatio : extraMemory;
}

std::optional<double> CaseResult::limit() const {
    if (row->bound == Bound::None) return std::nullopt;
    return row->target + (row->bound == Bound::Memory ? fullRuleMemory : 0);
}

bool CaseResult::meetsTarget() const {
    return !value() || *value() <= *limit();
}

}  // namespace orvel::bench
