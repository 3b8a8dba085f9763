#pragma once

#include <sys/types.h>

// Offsets at which the fake plug-in reads the source to show what it was called for.
inline constexpr off64_t kCreatedWithMessage = 1001;
inline constexpr off64_t kMessageFreed = 1002;
inline constexpr off64_t kExtractorFreed = 1003;
