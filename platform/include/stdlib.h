// The C library's <stdlib.h>, and the process name as the device's C library has it.
// No guard around the next line: the C++ library includes its own <stdlib.h> in several stages.
#include_next <stdlib.h>

#ifndef ORVEL_PLATFORM_STDLIB_H
#define ORVEL_PLATFORM_STDLIB_H

#pragma GCC visibility push(default)
extern "C" {

// The name of the process: on a device that of the package. Never null; any thread. The text stays
// valid when another name is set.
const char* getprogname(void);

// Keeps a copy of what follows the last slash of `name`.
void setprogname(const char* name);

}  // extern "C"
#pragma GCC visibility pop

#endif  // ORVEL_PLATFORM_STDLIB_H
