#include "Meter.h"

#include <sys/resource.h>

#include <algorithm>
#include <ctime>

namespace orvel::bench {
namespace {

double seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

}  // namespace

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Measure Meter::now() const {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    Measure now;
    now.reads = static_cast<double>(mSource.counts().calls);
    now.sleeps = static_cast<double>(usage.ru_nvcsw);
    now.cpuSeconds = seconds(CLOCK_PROCESS_CPUTIME_ID);
    return now;
}

void Meter::begin() {
    mBegin = now();
    mBegin.seconds = seconds(CLOCK_MONOTONIC);
}

void Meter::end() {
    mMeasure.seconds += seconds(CLOCK_MONOTONIC) - mBegin.seconds;
    const Measure end = now();
    mMeasure.cpuSeconds += end.cpuSeconds - mBegin.cpuSeconds;
    mMeasure.sleeps += end.sleeps - mBegin.sleeps;
    mMeasure.reads += end.reads - mBegin.reads;
}

}  // namespace orvel::bench
