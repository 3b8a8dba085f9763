// Host-only control of loopers. Any thread.
#pragma once

#include <stddef.h>

namespace standin {

#pragma GCC visibility push(default)

// The most messages that have waited in any looper's queue since the last call.
size_t takeLongestLooperQueue();

// Waits until no looper thread is left. A looper that is stopped on its own thread cannot join it:
// the thread ends by itself once the message that it is handling is done. Whoever unloads a library
// whose handlers may be running there releases all its objects and then waits here. Not to be
// called on a looper's thread.
void waitForLooperThreads();

#pragma GCC visibility pop

}  // namespace standin
