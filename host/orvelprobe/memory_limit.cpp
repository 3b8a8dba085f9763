#include "memory_limit.h"

#include <algorithm>

namespace orvel::probe {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kLimits = true;
#elif defined(__has_feature)
constexpr bool kLimits = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
constexpr bool kLimits = true;
#endif

}  // namespace

MemoryLimit::MemoryLimit() {
    getrlimit(RLIMIT_DATA, &mOld);
    rlimit limit = mOld;
    limit.rlim_cur = std::min(limit.rlim_cur, kBytes);
    if (kLimits) setrlimit(RLIMIT_DATA, &limit);
}

MemoryLimit::~MemoryLimit() {
    if (kLimits) setrlimit(RLIMIT_DATA, &mOld);
}

}  // namespace orvel::probe
