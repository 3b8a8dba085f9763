// The threads that run loopers at this moment, and the clock that they go by. Any thread.
#pragma once

#include <stdint.h>

namespace android {
class LooperCore;
}

namespace standin {

// From before the thread is made until it has handled its last message. `core` stays alive
// meanwhile. Neither is called under the lock of a LooperCore.
void addLooperThread(android::LooperCore* core);
void removeLooperThread(android::LooperCore* core);

int64_t looperTimeUs();
// False when the system's clock is replaced by one that tests set.
bool looperTimeIsReal();

}  // namespace standin
