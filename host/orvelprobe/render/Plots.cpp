#include "render/Plots.h"

#include "framework/Format.h"
#include "render/Summary.h"

namespace orvel::probe {
namespace {

// Times beyond some 140 years are drawn there: a browser's numbers are exact up to 2^53, also for
// the difference of any two times.
int64_t drawn(int64_t us) {
    constexpr int64_t kMaxUs = int64_t{1} << 52;
    return std::clamp(us, -kMaxUs, kMaxUs);
}

Json trackJson(std::vector<Sample> samples, const Json& track, size_t maxBins) {
    for (Sample& sample : samples)
        sample.timeUs = drawn(sample.timeUs);
    std::stable_sort(samples.begin(), samples.end(), [](const Sample& one, const Sample& other) {
        return one.timeUs < other.timeUs;
    });
    const size_t perBin = std::max<size_t>(1, (samples.size() + maxBins - 1) / maxBins);
    Json times = Json::array(), max = Json::array(), sum = Json::array(), keys = Json::array();
    uint64_t allKeys = 0;
    int64_t beforeUs = 0;
    for (size_t begin = 0; begin < samples.size(); begin += perBin) {
        uint64_t largest = 0, bytes = 0, keyCount = 0;
        for (size_t i = begin; i < std::min(begin + perBin, samples.size()); i++) {
            largest = std::max<uint64_t>(largest, samples[i].size);
            bytes += samples[i].size;
            keyCount += samples[i].sync;
        }
        times.push_back(samples[begin].timeUs - beforeUs);
        max.push_back(largest);
        sum.push_back(bytes);
        keys.push_back(keyCount);
        allKeys += keyCount;
        beforeUs = samples[begin].timeUs;
    }
    Json plot{
            {"index", track["index"]}, {"name", shortMime(textOf(track["format"], host::kKeyMime))},
            {"count", samples.size()}, {"perBin", perBin},
            {"times", times},          {"max", max}};
    if (perBin > 1) plot["sum"] = sum;
    if (allKeys < samples.size()) plot["keys"] = keys;
    return plot;
}

Json seekJson(const Json& seek) {
    Json tracks = Json::array();
    for (const Json& track : listOf(seek, "tracks")) {
        Json landing{{"index", track["index"]}};
        for (const Json& sample : listOf(track, "samples")) {
            if (landing.contains("landed")) break;
            landing["landed"] = drawn(intOf(sample, "timeUs"));
            if (sample.contains("targetTimeUs"))
                landing["target"] = drawn(intOf(sample, "targetTimeUs"));
        }
        tracks.push_back(std::move(landing));
    }
    return {{"asked", drawn(intOf(seek, "timeUs"))}, {"tracks", tracks}};
}

}  // namespace

Json plotJson(const Report& report, size_t maxBins) {
    Json plot{{"from", 0}, {"to", 0}, {"tracks", Json::array()}, {"seeks", Json::array()}};
    int64_t fromUs = 0, toUs = drawn(intOf(report.tree, "durationUs"));
    for (const Json& track : listOf(report.tree, "tracks")) {
        const auto samples = report.samples.find(static_cast<size_t>(intOf(track, "index")));
        if (samples == report.samples.end()) continue;
        for (const Sample& sample : samples->second) {
            fromUs = std::min(fromUs, drawn(sample.timeUs));
            toUs = std::max(toUs, drawn(sample.timeUs));
        }
        plot["tracks"].push_back(trackJson(samples->second, track, maxBins));
    }
    if (plot["tracks"].empty()) return nullptr;
    for (const Json& seek : listOf(report.tree, "seeks"))
        plot["seeks"].push_back(seekJson(seek));
    plot["from"] = fromUs;
    plot["to"] = std::max(toUs, fromUs + 1);
    return plot;
}

}  // namespace orvel::probe
