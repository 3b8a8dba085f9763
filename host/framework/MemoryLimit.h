#pragma once

#include <sys/resource.h>

#include <algorithm>

namespace orvel::host {

/**
 * While it lives, the process gets no more than so much writable memory, as a device limits the
 * process that its extractors run in: a few bytes of a hostile file can ask for gigabytes. Nothing
 * in a build with sanitizers, whose own memory would count.
 */
class MemoryLimit {
  public:
    /** With programs and libraries, a process stays below 512 MiB. */
    static constexpr rlim_t kBytes = 448 << 20;
#ifdef ORVEL_SANITIZED
    static constexpr bool kLimits = false;
#else
    static constexpr bool kLimits = true;
#endif

    MemoryLimit() {
        getrlimit(RLIMIT_DATA, &mOld);
        rlimit limit = mOld;
        limit.rlim_cur = std::min(limit.rlim_cur, kBytes);
        if (kLimits) setrlimit(RLIMIT_DATA, &limit);
    }
    ~MemoryLimit() {
        if (kLimits) setrlimit(RLIMIT_DATA, &mOld);
    }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

  private:
    rlimit mOld{};
};

}  // namespace orvel::host
