// Host-only control of loopers. Any thread.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace standin {

#pragma GCC visibility push(default)

// Replaces the clock of every looper (ALooper::GetNowUs) by one that stands still at `nowUs`, not
// below zero, until it is set again. Loopers look at their queues anew.
void setLooperTimeUs(int64_t nowUs);

// Back to the system's monotonic clock.
void useSystemLooperTime();

// How many looper threads have been started and have not handled their last message yet.
size_t looperThreadCount();

// Waits until there is none. A looper that is stopped on its own thread cannot join it: the thread
// ends by itself once the message that it is handling is done. Whoever unloads a library whose
// handlers may be running there lets go of all its objects and then waits here. Not to be called on
// a looper's thread.
void waitForLooperThreads();

#pragma GCC visibility pop

}  // namespace standin
