// What the plug-in, and FFmpeg with it, may take for one file, as a device limits the process that
// its extractors run in: a few bytes of a hostile file can ask for gigabytes.
#pragma once

#include <sys/resource.h>

namespace orvel::probe {

// While it lives, the process gets no more than so much writable memory: allocations fail beyond
// it. Nothing in a build with sanitizers, whose own memory would count.
class MemoryLimit {
  public:
    // With programs and libraries, a process stays below 512 MiB.
    static constexpr rlim_t kBytes = 448 << 20;

    MemoryLimit();
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

  private:
    rlimit mOld{};
};

}  // namespace orvel::probe
