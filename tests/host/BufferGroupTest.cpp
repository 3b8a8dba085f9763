#include "framework/BufferGroup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "framework/Buffer.h"

namespace orvel::host {
namespace {

using android::CMediaBuffer;

/** Acquires through the C table, without waiting. */
media_status_t tryAcquire(BufferGroup& group, size_t size, Buffer* out) {
    android::CMediaBufferGroup* table = group.table();
    CMediaBuffer* buffer = reinterpret_cast<CMediaBuffer*>(1);
    const auto status = table->acquire_buffer(table->handle, &buffer, true, size);
    EXPECT_EQ(status != AMEDIA_OK && buffer != nullptr, false) << "a failure left a buffer";
    *out = Buffer(buffer);
    return status;
}

Buffer take(BufferGroup& group, size_t size) {
    Buffer buffer;
    EXPECT_EQ(tryAcquire(group, size, &buffer), AMEDIA_OK);
    if (buffer) memset(buffer.get()->data(buffer.get()->handle), 0x5A, buffer.capacity());
    return buffer;
}

TEST(BufferGroup, tooSmallBuffer_growsUnderTheSameIdentity) {
    BufferGroup group;
    android::CMediaBufferGroup* table = group.table();
    ASSERT_TRUE(table->init(table->handle, 1, 100, 0));
    Buffer buffer = take(group, 100);
    EXPECT_EQ(buffer.capacity(), 100u);
    EXPECT_EQ(buffer.size(), 100u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(buffer.data()) % 16, 0u);
    CMediaBuffer* const identity = buffer.get();
    AMediaFormat* const format = buffer.format().get();
    AMediaFormat_setInt64(format, "timeUs", 7);
    identity->set_range(identity->handle, 10, 20);
    EXPECT_EQ(buffer.size(), 20u);
    EXPECT_EQ(buffer.timeUs(), 7);
    buffer.reset();

    buffer = take(group, 101);
    EXPECT_EQ(buffer.get(), identity);
    EXPECT_EQ(buffer.format().get(), format);
    EXPECT_GE(buffer.capacity(), 101u);
    EXPECT_EQ(buffer.size(), buffer.capacity()) << "the range is the whole buffer";
    EXPECT_EQ(buffer.timeUs(), std::nullopt) << "nothing of the last use survives";
    EXPECT_EQ(group.bufferCount(), 1u);
    EXPECT_EQ(group.totalBytes(), buffer.capacity());
}

TEST(BufferGroup, growthLimit_addsBuffersUpToItAndNoFurther) {
    BufferGroup group;
    ASSERT_TRUE(group.init(1, 100, 2));
    Buffer first = take(group, 10);
    EXPECT_TRUE(group.hasBuffers()) << "one may still be made";
    Buffer second = take(group, 10);
    EXPECT_FALSE(group.hasBuffers());
    Buffer third;
    EXPECT_EQ(tryAcquire(group, 10, &third), AMEDIA_ERROR_WOULD_BLOCK);
    EXPECT_EQ(group.outstanding(), 2u);
    group.addBuffer(10);
    EXPECT_EQ(tryAcquire(group, 10, &third), AMEDIA_OK);
    EXPECT_EQ(group.bufferCount(), 3u);
    second.reset();
    EXPECT_TRUE(group.hasBuffers());
}

TEST(BufferGroup, secondInit_beginsAnewAndForgetsBuffersStillOut) {
    BufferGroup group;
    ASSERT_TRUE(group.init(2, 100, 0));
    Buffer old = take(group, 300);
    for (int round = 0; round < 3; ++round)
        ASSERT_TRUE(group.init(1, 50, 0));
    EXPECT_EQ(group.bufferCount(), 1u);
    Buffer fresh = take(group, 50);
    EXPECT_EQ(fresh.capacity(), 50u);
    Buffer none;
    EXPECT_EQ(tryAcquire(group, 1, &none), AMEDIA_ERROR_WOULD_BLOCK);
    old.reset();
    EXPECT_EQ(tryAcquire(group, 1, &none), AMEDIA_ERROR_WOULD_BLOCK) << "the old one came back";
    EXPECT_EQ(group.totalBytes(), 50u) << "its memory is gone";
}

TEST(BufferGroup, blockedAcquire_wakesOnReleaseAndOnAddBuffer) {
    for (bool byRelease : {true, false}) {
        BufferGroup group;
        group.init(1, 100, 0);
        Buffer held = take(group, 1);
        std::thread waiting([&] {
            CMediaBuffer* buffer = nullptr;
            EXPECT_EQ(group.acquire(&buffer, false, 200), AMEDIA_OK);
            Buffer got(buffer);
            EXPECT_GE(got.capacity(), 200u);
        });
        EXPECT_TRUE(group.waitUntilBlocked());
        if (byRelease) {
            held.reset();
        } else {
            group.addBuffer(100);
        }
        waiting.join();
    }
}

TEST(BufferGroup, threadsWithManySizes_neverShareABuffer) {
    BufferGroup group;
    group.init(2, 16, 0);
    std::vector<std::thread> threads;
    std::atomic<int> out{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int n = 0; n < 500; ++n) {
                CMediaBuffer* raw = nullptr;
                const size_t size = static_cast<size_t>(1 + (n * 37 + t * 11) % 300);
                ASSERT_EQ(group.acquire(&raw, false, size), AMEDIA_OK);
                Buffer buffer(raw);
                EXPECT_LE(out.fetch_add(1) + 1, 2);
                ASSERT_GE(buffer.capacity(), size);
                auto* bytes = static_cast<uint8_t*>(raw->data(raw->handle));
                memset(bytes, t, size);
                EXPECT_EQ(bytes[size - 1], t);
                out.fetch_sub(1);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(group.outstanding(), 0u);
}

TEST(BufferGroupDeathTest, contractViolations_abort) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    BufferGroup group;
    group.init(1, 100, 0);
    Buffer buffer = take(group, 1);
    CMediaBuffer* raw = buffer.get();
    EXPECT_DEATH(raw->set_range(raw->handle, 90, 11), "range 90\\+11 .* 100 bytes");
    EXPECT_DEATH(raw->set_range(raw->handle, SIZE_MAX, 2), "range");
    buffer.reset();
    EXPECT_DEATH(raw->release(raw->handle), "released that is not out");
}

}  // namespace
}  // namespace orvel::host
