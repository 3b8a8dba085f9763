#include "Report.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "MeasureJson.h"

namespace orvel::bench {
namespace {

constexpr const char* kNone = "-";

[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...) {
    va_list arguments, again;
    va_start(arguments, pattern);
    va_copy(again, arguments);
    const int length = vsnprintf(nullptr, 0, pattern, arguments);
    va_end(arguments);
    std::string text(static_cast<size_t>(std::max(length, 0)), '\0');
    vsnprintf(text.data(), text.size() + 1, pattern, again);
    va_end(again);
    return text;
}

std::string timeText(double seconds) {
    if (seconds >= 1) return format("%.2f s", seconds);
    if (seconds >= 1e-3) return format("%.2f ms", 1e3 * seconds);
    return format("%.1f us", 1e6 * seconds);
}

// "plug-in / bare", the latter only where there is one.
std::string both(const CaseResult& result, const char* pattern,
                 double (*value)(const SideResult& side)) {
    char one[32];
    snprintf(one, sizeof(one), pattern, value(result.plugin));
    std::string text = one;
    if (result.row->bare == nullptr) return text;
    snprintf(one, sizeof(one), pattern, value(result.bare));
    return text + " / " + one;
}

const Measure& counted(const SideResult& side) {
    return side.accountedTurns.front();
}

double perSample(double value, const SideResult& side) {
    return value / static_cast<double>(std::max<uint64_t>(side.samples(), 1));
}

// Of a sample where many are measured one after the other, else of the whole turn.
bool isPerSample(const CaseResult& result) {
    return result.plugin.samples() <= 1000;
}

std::string sideTime(const CaseResult& result, const SideResult& side) {
    const double seconds = side.medianSeconds();
    return isPerSample(result) ? timeText(perSample(seconds, side)) + " each" : timeText(seconds);
}

std::string targetText(const CaseResult& result) {
    if (!result.limit()) return kNone;
    return format("<= %.2f  %s", *result.limit(), result.meetsTarget() ? "met" : "MISSED");
}

std::string comparison(const CaseResult& result) {
    const char* name = result.row->name;
    if (result.row->bound == Bound::Memory) {
        return format("%-13s%17s%17s  %5.2f MiB more    %s, of it full rule %.2f\n", name,
                      format("%.1f MiB", result.bare.medianPeakResident() / kMiB).c_str(),
                      format("%.1f MiB", result.plugin.medianPeakResident() / kMiB).c_str(),
                      result.extraMemory, targetText(result).c_str(), result.fullRuleMemory);
    }
    const auto [low, high] = std::minmax_element(result.ratios.begin(), result.ratios.end());
    return format("%-13s%17s%17s  %5.2f %-13s %s\n", name, sideTime(result, result.bare).c_str(),
                  sideTime(result, result.plugin).c_str(), result.medianRatio,
                  format("(%.2f-%.2f)", *low, *high).c_str(), targetText(result).c_str());
}

std::string cost(const CaseResult& result) {
    const auto reads = [](const SideResult& side) {
        return static_cast<double>(counted(side).source.calls);
    };
    const auto jumps = [](const SideResult& side) {
        return static_cast<double>(counted(side).source.jumps);
    };
    const auto megabytes = [](const SideResult& side) {
        return 1e-6 * static_cast<double>(counted(side).source.bytes);
    };
    const auto allocations = [](const SideResult& side) {
        return counted(side).allocationsPerSample;
    };
    const auto switches = [](const SideResult& side) {
        return perSample(side.medianVoluntarySwitches(), side);
    };
    const auto cpu = [](const SideResult& side) { return 1e3 * side.medianCpuSeconds(); };
    const auto resident = [](const SideResult& side) { return side.medianPeakResident() / kMiB; };
    return format("%-13s%8llu%17s%15s%18s%17s%15s%18s%17s\n", result.row->name,
                  static_cast<unsigned long long>(result.plugin.samples()),
                  both(result, "%.0f", reads).c_str(), both(result, "%.0f", jumps).c_str(),
                  both(result, "%.1f", megabytes).c_str(),
                  both(result, "%.1f", allocations).c_str(),
                  result.plugin.turns.empty() ? kNone : both(result, "%.2f", switches).c_str(),
                  result.plugin.turns.empty() ? kNone : both(result, "%.1f", cpu).c_str(),
                  both(result, "%.1f", resident).c_str());
}

std::string figureLines(const CaseResult& result) {
    std::string text;
    for (const Figure& figure : result.plugin.figures()) {
        text += format("%-13s%-34s%10.2f %s\n", result.row->name, figure.name.c_str(), figure.value,
                       figure.unit.c_str());
    }
    return text;
}

}  // namespace

std::string textReport(const std::vector<CaseResult>& results, const Machine& machine) {
    std::string compared, costs, figures, titles;
    for (const CaseResult& result : results) {
        titles += format("  %-13s%s\n", result.row->name, result.row->title);
        if (result.row->bare != nullptr) compared += comparison(result);
        costs += cost(result);
        figures += figureLines(result);
    }
    std::string text = format(
            "Plug-in against a bare libavformat %s loop, same process, turn by turn; %d rounds.\n"
            "Medians; a ratio is the median of the rounds' ratios, in brackets the extremes.\n"
            "Source: files read with pread, in the page cache. %ld cores, load average %.2f "
            "before, %.2f after.\n\n%s\n",
            machine.libavformat.c_str(), machine.rounds, machine.cores, machine.loadBefore,
            machine.loadAfter, titles.c_str());
    if (!compared.empty()) {
        text += format("%-13s%17s%17s  %5s %-13s %s\n", "case", "bare", "plug-in", "ratio", "",
                       "target");
        text += compared + "\n";
    }
    text += "What it costs: plug-in / bare loop. Allocations in steady state; a sample is whatever "
            "the case repeats.\n";
    text += format("%-13s%8s%17s%15s%18s%17s%15s%18s%17s\n", "case", "samples", "source reads",
                   "jumps", "MB read", "allocs/smp", "sleeps/smp", "processor ms", "peak MiB");
    text += costs;
    if (!figures.empty()) text += "\n" + figures;
    return text;
}

std::string jsonReport(const std::vector<CaseResult>& results, const Machine& machine) {
    nlohmann::ordered_json json = {
            {"rounds", machine.rounds},
            {"libavformat", machine.libavformat},
            {"cores", machine.cores},
            {"loadAverage", {{"before", machine.loadBefore}, {"after", machine.loadAfter}}},
            {"source", "files read with pread, in the page cache"},
            {"cases", nlohmann::ordered_json::array()}};
    for (const CaseResult& result : results)
        json["cases"].push_back(caseToJson(result));
    return json.dump(2) + "\n";
}

}  // namespace orvel::bench
