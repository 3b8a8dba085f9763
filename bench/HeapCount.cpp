#include "HeapCount.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

// The C library's own functions behind the names that are taken over below.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* memory);
}

namespace orvel::bench {
namespace {

std::atomic<bool> sCounting{false};
std::atomic<uint64_t> sAllocations{0};
std::atomic<int64_t> sLive{0};
std::atomic<int64_t> sPeak{0};

bool counting() {
    return __builtin_expect(sCounting.load(std::memory_order_relaxed), false);
}

void grew(int64_t bytes) {
    const int64_t live = sLive.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    int64_t peak = sPeak.load(std::memory_order_relaxed);
    while (live > peak && !sPeak.compare_exchange_weak(peak, live, std::memory_order_relaxed)) {
    }
}

int64_t usable(void* memory) {
    return static_cast<int64_t>(malloc_usable_size(memory));
}

void* noted(void* memory) {
    if (counting() && memory != nullptr) {
        sAllocations.fetch_add(1, std::memory_order_relaxed);
        grew(usable(memory));
    }
    return memory;
}

}  // namespace

void countHeap(bool on) {
    sAllocations = 0;
    sLive = 0;
    sPeak = 0;
    sCounting = on;
}

HeapCounts heapCounts() {
    return {sAllocations.load(), sPeak.load()};
}

}  // namespace orvel::bench

extern "C" {

void* malloc(size_t size) noexcept {
    return orvel::bench::noted(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) noexcept {
    return orvel::bench::noted(__libc_calloc(count, size));
}

void* realloc(void* memory, size_t size) noexcept {
    if (!orvel::bench::counting()) return __libc_realloc(memory, size);
    const int64_t before = memory != nullptr ? orvel::bench::usable(memory) : 0;
    void* moved = __libc_realloc(memory, size);
    if (moved != nullptr || size == 0) orvel::bench::grew(-before);
    return orvel::bench::noted(moved);
}

void free(void* memory) noexcept {
    if (orvel::bench::counting() && memory != nullptr) {
        orvel::bench::grew(-orvel::bench::usable(memory));
    }
    __libc_free(memory);
}

void* memalign(size_t alignment, size_t size) noexcept {
    return orvel::bench::noted(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) noexcept {
    return memalign(alignment, size);
}

int posix_memalign(void** out, size_t alignment, size_t size) noexcept {
    const bool isPowerOfTwo = alignment != 0 && (alignment & (alignment - 1)) == 0;
    if (!isPowerOfTwo || alignment % sizeof(void*) != 0) return EINVAL;
    void* memory = memalign(alignment, size);
    if (memory == nullptr) return ENOMEM;
    *out = memory;
    return 0;
}

}  // extern "C"
