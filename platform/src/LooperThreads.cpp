#include "LooperThreads.h"

#include <standin/LooperControl.h>

#include <atomic>

#include "Monitor.h"

namespace standin {

namespace {

std::atomic<size_t> gLongestQueue{0};

struct Threads {
    Mutex lock;
    Condition removed;
    int count ORVEL_TSA(guarded_by(lock)) = 0;
};

// Never destroyed: a detached thread may be the last of the process.
Threads& threads() {
    static Threads& instance = *new Threads;
    return instance;
}

}  // namespace

void addLooperThread() {
    Threads& all = threads();
    Autolock hold(all.lock);
    ++all.count;
}

void removeLooperThread() {
    Threads& all = threads();
    Autolock hold(all.lock);
    --all.count;
    all.removed.broadcast();
}

void noteQueueLength(size_t messages) {
    size_t longest = gLongestQueue.load(std::memory_order_relaxed);
    while (messages > longest && !gLongestQueue.compare_exchange_weak(longest, messages)) {
    }
}

size_t takeLongestLooperQueue() {
    return gLongestQueue.exchange(0);
}

void waitForLooperThreads() {
    Threads& all = threads();
    Autolock hold(all.lock);
    while (all.count > 0)
        all.removed.wait(all.lock);
}

}  // namespace standin
