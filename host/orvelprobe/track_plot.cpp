#include "track_plot.h"

#include <algorithm>

namespace orvel::probe {
namespace {

constexpr int64_t kSecondUs = 1000000;
constexpr size_t kMaxRanges = 4096;
constexpr int64_t kRoundingUs = 1000;  // times of many containers are whole milliseconds

size_t perBinFor(size_t count, size_t maxBins) {
    return std::max<size_t>(1, (count + maxBins - 1) / maxBins);
}

int64_t median(std::vector<int64_t> values) {
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void addBins(const std::vector<PlotSample>& samples, size_t maxBins, TrackPlot* plot) {
    plot->samplesPerBin = perBinFor(samples.size(), maxBins);
    for (size_t i = 0; i < samples.size(); i++) {
        const PlotSample& sample = samples[i];
        if (i % plot->samplesPerBin == 0) {
            plot->bins.push_back({sample.timeUs, sample.bytes, sample.bytes, 0});
        }
        SampleBin& bin = plot->bins.back();
        bin.minBytes = std::min(bin.minBytes, sample.bytes);
        bin.maxBytes = std::max(bin.maxBytes, sample.bytes);
        bin.syncCount += sample.sync;
    }
}

void addRates(const std::vector<PlotSample>& samples, size_t maxRates, TrackPlot* plot) {
    const int64_t firstUs = samples.front().timeUs, spanUs = samples.back().timeUs - firstUs;
    const auto seconds = static_cast<size_t>(spanUs / kSecondUs) + 2;
    plot->rateStepUs = kSecondUs * static_cast<int64_t>(perBinFor(seconds, maxRates));
    const int64_t remainder = firstUs % plot->rateStepUs;
    plot->rateStartUs = firstUs - remainder - (remainder < 0 ? plot->rateStepUs : 0);
    for (const PlotSample& sample : samples) {
        const auto slot =
                static_cast<size_t>((sample.timeUs - plot->rateStartUs) / plot->rateStepUs);
        if (slot >= plot->rateBytes.size()) plot->rateBytes.resize(slot + 1);
        plot->rateBytes[slot] += sample.bytes;
    }
}

void addSteps(const std::vector<PlotSample>& samples, TrackPlot* plot) {
    const int64_t typicalUs = plot->typicalStepUs;
    for (size_t i = 1; i < samples.size(); i++) {
        const int64_t fromUs = samples[i - 1].timeUs, toUs = samples[i].timeUs;
        const int64_t stepUs = toUs - fromUs;
        if (stepUs > typicalUs + typicalUs / 2 + kRoundingUs) {
            plot->gapCount++;
            // From where the sample before it should have ended.
            if (plot->gaps.size() < kMaxRanges) plot->gaps.push_back({fromUs + typicalUs, toUs});
            if (stepUs - typicalUs > plot->longestGapUs) {
                plot->longestGapUs = stepUs - typicalUs;
                plot->longestGapAtUs = fromUs + typicalUs;
            }
        } else if (2 * stepUs < typicalUs) {
            plot->overlapCount++;
            if (plot->overlaps.size() < kMaxRanges) {
                plot->overlaps.push_back({toUs, fromUs + typicalUs});
            }
        }
    }
}

}  // namespace

TrackPlot plotTrack(std::vector<PlotSample> samples, size_t maxBins, bool continuous) {
    TrackPlot plot;
    if (samples.empty()) return plot;
    int64_t latestUs = INT64_MIN;
    for (PlotSample& sample : samples) {
        sample.timeUs = std::clamp(sample.timeUs, -kMaxPlotTimeUs, kMaxPlotTimeUs);
        plot.backwardCount += sample.timeUs < latestUs;
        latestUs = std::max(latestUs, sample.timeUs);
    }
    std::stable_sort(samples.begin(), samples.end(), [](const auto& left, const auto& right) {
        return left.timeUs < right.timeUs;
    });
    std::vector<int64_t> steps;
    for (size_t i = 1; i < samples.size(); i++) {
        const int64_t stepUs = samples[i].timeUs - samples[i - 1].timeUs;
        if (stepUs > 0) steps.push_back(stepUs);
    }
    plot.typicalStepUs = median(std::move(steps));
    plot.endUs = samples.back().timeUs +
                 (continuous ? plot.typicalStepUs : std::min(plot.typicalStepUs, kSecondUs));
    addBins(samples, maxBins, &plot);
    addRates(samples, maxBins, &plot);
    if (continuous) addSteps(samples, &plot);
    return plot;
}

std::vector<Band> bandsOf(const std::vector<int64_t>& values, size_t maxBins, size_t* perBin) {
    std::vector<Band> bands;
    *perBin = perBinFor(values.size(), maxBins);
    for (size_t i = 0; i < values.size(); i++) {
        if (i % *perBin == 0) bands.push_back({values[i], values[i]});
        bands.back().min = std::min(bands.back().min, values[i]);
        bands.back().max = std::max(bands.back().max, values[i]);
    }
    return bands;
}

}  // namespace orvel::probe
