#include "MeasureJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace orvel::bench {
namespace {

using nlohmann::ordered_json;

ordered_json figuresToJson(const std::vector<Figure>& figures) {
    ordered_json list = ordered_json::array();
    for (const Figure& figure : figures)
        list.push_back({{"name", figure.name}, {"value", figure.value}, {"unit", figure.unit}});
    return list;
}

ordered_json toJson(const Measure& measure) {
    return {{"seconds", measure.seconds},
            {"samples", measure.samples},
            {"bytes", measure.bytes},
            {"cpuSeconds", measure.usage.cpuSeconds},
            {"voluntarySwitches", measure.usage.voluntarySwitches},
            {"involuntarySwitches", measure.usage.involuntarySwitches},
            {"reads", measure.source.calls},
            {"jumps", measure.source.jumps},
            {"bytesRead", measure.source.bytes},
            {"sizeCalls", measure.source.sizeCalls},
            {"allocationsPerSample", measure.allocationsPerSample},
            {"peakHeapBytes", measure.peakHeapBytes},
            {"peakResidentBytes", measure.peakResidentBytes},
            {"figures", figuresToJson(measure.figures)}};
}

// The counters of an accounted turn and the times of the timed ones.
ordered_json sideToJson(const SideResult& side) {
    ordered_json json;
    if (!side.turns.empty()) {
        ordered_json seconds = ordered_json::array();
        for (const Measure& turn : side.turns)
            seconds.push_back(turn.seconds);
        const auto samples = static_cast<double>(std::max<uint64_t>(side.samples(), 1));
        json["seconds"] = {{"median", side.medianSeconds()}, {"rounds", std::move(seconds)}};
        json["cpuSeconds"] = side.medianCpuSeconds();
        json["voluntarySwitchesPerSample"] = side.medianVoluntarySwitches() / samples;
    }
    if (side.accountedTurns.empty()) return json;
    const Measure& counted = side.accountedTurns.front();
    json["samples"] = counted.samples;
    json["bytes"] = counted.bytes;
    json["reads"] = counted.source.calls;
    json["jumps"] = counted.source.jumps;
    json["bytesRead"] = counted.source.bytes;
    json["allocationsPerSample"] = counted.allocationsPerSample;
    json["peakHeapBytes"] = counted.peakHeapBytes;
    json["peakResidentBytes"] = side.medianPeakResident();
    if (const auto figures = side.figures(); !figures.empty()) {
        json["figures"] = figuresToJson(figures);
    }
    return json;
}

}  // namespace

std::string measureToJson(const Measure& measure) {
    return toJson(measure).dump();
}

Measure measureFromJson(const std::string& text) {
    const auto json = ordered_json::parse(text);
    Measure measure;
    json.at("seconds").get_to(measure.seconds);
    json.at("samples").get_to(measure.samples);
    json.at("bytes").get_to(measure.bytes);
    json.at("cpuSeconds").get_to(measure.usage.cpuSeconds);
    json.at("voluntarySwitches").get_to(measure.usage.voluntarySwitches);
    json.at("involuntarySwitches").get_to(measure.usage.involuntarySwitches);
    json.at("reads").get_to(measure.source.calls);
    json.at("jumps").get_to(measure.source.jumps);
    json.at("bytesRead").get_to(measure.source.bytes);
    json.at("sizeCalls").get_to(measure.source.sizeCalls);
    json.at("allocationsPerSample").get_to(measure.allocationsPerSample);
    json.at("peakHeapBytes").get_to(measure.peakHeapBytes);
    json.at("peakResidentBytes").get_to(measure.peakResidentBytes);
    for (const auto& figure : json.at("figures")) {
        measure.figures.push_back({figure.at("name"), figure.at("value"), figure.at("unit")});
    }
    return measure;
}

ordered_json caseToJson(const CaseResult& result) {
    ordered_json json = {{"name", result.row->name},
                         {"title", result.row->title},
                         {"file", kRecipes[static_cast<size_t>(result.row->media)].file},
                         {"plugin", sideToJson(result.plugin)}};
    if (result.row->bare != nullptr) json["bare"] = sideToJson(result.bare);
    if (!result.ratios.empty()) {
        json["ratio"] = {{"median", result.medianRatio}, {"rounds", result.ratios}};
    }
    if (result.row->bound == Bound::Memory) {
        json["memory"] = {{"extraMiB", result.extraMemory}, {"fullRuleMiB", result.fullRuleMemory}};
    }
    if (result.limit()) {
        json["target"] = *result.limit();
        json["met"] = result.meetsTarget();
    }
    return json;
}

}  // namespace orvel::bench
