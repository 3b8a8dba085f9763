#include <stdlib.h>

#include <atomic>
#include <new>

#include "TestSupport.h"

// A sanitizer's runtime has these operators itself.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ORVEL_TEST_SANITIZED 1
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORVEL_TEST_SANITIZED 1
#endif
#ifndef ORVEL_TEST_SANITIZED
#define ORVEL_TEST_SANITIZED 0
#endif

namespace {
std::atomic<size_t> gAllocations{0};
}

bool allocationsAreCounted() {
    return !ORVEL_TEST_SANITIZED;
}

size_t allocationCount() {
    return gAllocations.load();
}

#if !ORVEL_TEST_SANITIZED

// Replaced for the whole process, the library under test included.
void* operator new(size_t size) {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    void* memory = malloc(size);
    if (memory == nullptr) abort();
    return memory;
}
void operator delete(void* memory) noexcept {
    free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    free(memory);
}
#endif

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Death tests start a process of their own: this one has threads.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    return RUN_ALL_TESTS();
}
