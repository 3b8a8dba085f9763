// Host-only control of the platform log. Any thread.
#pragma once

#include <android/log.h>

namespace standin {

#pragma GCC visibility push(default)

// One line as the plug-in logged it. Called on the logging thread, before the line is printed,
// whatever the level. What a hook logs itself is printed but not given to a hook.
using LogHook = void (*)(void* cookie, int priority, const char* tag, const char* text);

// Null removes the hook. It gets lines of minPriority and above; what neither it nor the level
// wants is not even formatted. Returns when no call of the old hook is running any more; not to be
// called from a hook.
void setLogHook(LogHook hook, void* cookie, int minPriority = ANDROID_LOG_UNKNOWN);

// What reaches stderr: lines of this priority and above. ANDROID_LOG_SILENT, the default: nothing.
// An assertion is always written.
void setLogLevel(int minPriority);

#pragma GCC visibility pop

}  // namespace standin
