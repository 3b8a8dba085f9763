#include "Meter.h"

#include <algorithm>
#include <utility>

namespace orvel::bench {

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void Meter::begin() {
    if (mSource != nullptr) mBeginSource = mSource->counts();
    mBeginAllocations = heapCounts().allocations;
    mBeginUsage = usage();
    mBegin = std::chrono::steady_clock::now();
}

void Meter::end() {
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - mBegin;
    const Usage now = usage();
    mLastAllocations = heapCounts().allocations;
    mMeasure.seconds += took.count();
    mMeasure.usage.cpuSeconds += now.cpuSeconds - mBeginUsage.cpuSeconds;
    mMeasure.usage.voluntarySwitches += now.voluntarySwitches - mBeginUsage.voluntarySwitches;
    mMeasure.usage.involuntarySwitches += now.involuntarySwitches - mBeginUsage.involuntarySwitches;
    mAllocations += mLastAllocations - mBeginAllocations;
    if (mSource == nullptr) return;
    const host::SourceCounts counts = mSource->counts();
    mMeasure.source.calls += counts.calls - mBeginSource.calls;
    mMeasure.source.jumps += counts.jumps - mBeginSource.jumps;
    mMeasure.source.bytes += counts.bytes - mBeginSource.bytes;
    mMeasure.source.sizeCalls += counts.sizeCalls - mBeginSource.sizeCalls;
}

void Meter::figure(std::string name, double value, std::string unit) {
    mMeasure.figures.push_back({std::move(name), value, std::move(unit)});
}

Measure Meter::result() const {
    Measure result = mMeasure;
    uint64_t allocations = mAllocations;
    uint64_t samples = mMeasure.samples;
    if (samples >= 2 * kSteadyFrom) {
        allocations = mLastAllocations - mSteadyAllocations;
        samples -= kSteadyFrom;
    }
    if (samples > 0) {
        result.allocationsPerSample =
                static_cast<double>(allocations) / static_cast<double>(samples);
    }
    return result;
}

}  // namespace orvel::bench
