#include "LooperThreads.h"

#include <standin/looper_control.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <vector>

#include "LooperCore.h"
#include "Monitor.h"

namespace standin {

namespace {

constexpr int64_t kRealTime = -1;
std::atomic<int64_t> gTimeUs{kRealTime};

struct Threads {
    Mutex lock;
    Condition removed;
    std::vector<android::LooperCore*> cores ORVEL_TSA(guarded_by(lock));
};

// Never destroyed: a detached thread may be the last of the process.
Threads& threads() {
    static Threads& instance = *new Threads;
    return instance;
}

void setTime(int64_t nowUs) {
    gTimeUs.store(nowUs, std::memory_order_release);
    // A thread that is not in the list yet will read the new time.
    Threads& all = threads();
    Autolock hold(all.lock);
    for (android::LooperCore* core : all.cores)
        core->wake();
}

}  // namespace

void addLooperThread(android::LooperCore* core) {
    Threads& all = threads();
    Autolock hold(all.lock);
    all.cores.push_back(core);
}

void removeLooperThread(android::LooperCore* core) {
    Threads& all = threads();
    Autolock hold(all.lock);
    all.cores.erase(std::find(all.cores.begin(), all.cores.end(), core));
    all.removed.broadcast();
}

int64_t looperTimeUs() {
    int64_t set = gTimeUs.load(std::memory_order_acquire);
    if (set != kRealTime) return set;
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000000 + now.tv_nsec / 1000;
}

bool looperTimeIsReal() {
    return gTimeUs.load(std::memory_order_acquire) == kRealTime;
}

void setLooperTimeUs(int64_t nowUs) {
    setTime(std::max<int64_t>(nowUs, 0));
}

void useSystemLooperTime() {
    setTime(kRealTime);
}

size_t looperThreadCount() {
    Threads& all = threads();
    Autolock hold(all.lock);
    return all.cores.size();
}

void waitForLooperThreads() {
    Threads& all = threads();
    Autolock hold(all.lock);
    while (!all.cores.empty())
        all.removed.wait(all.lock);
}

}  // namespace standin
