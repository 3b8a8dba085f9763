// How many threads run loopers at this moment. Any thread.
#pragma once

#include <stddef.h>

namespace standin {

// From before the thread is made until it has released all that it held.
void addLooperThread();
void removeLooperThread();

// A looper's queue has this many messages.
void noteQueueLength(size_t messages);

}  // namespace standin
