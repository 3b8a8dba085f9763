// Buffer groups that give too little, too late, or nothing.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <future>

#include "e2e/FormatText.h"
#include "e2e/Opened.h"

namespace orvel::test {

using namespace android;

namespace {

struct Played : StartedFile {
    explicit Played(const std::string& name) : StartedFile(mediaBytes(name), demuxerOf(name)) {}
};

}  // namespace

TEST(Buffers, oneBufferOfTheLargestInputSizeIsSetUpAndComesBack) {
    for (const auto& [name, size] : {std::pair("mp3_cbr.mp3", 262144u), {"mp4_small.mp4", 4608u}}) {
        Played played(name);
        EXPECT_EQ(played.group.bufferCount(), 1u);
        EXPECT_EQ(played.group.totalBytes(), size);
        host::ReadResult read = played.track->read();
        EXPECT_EQ(played.group.outstanding(), 1u);
        EXPECT_EQ(read.buffer.capacity(), size);
        read.buffer.reset();
        EXPECT_EQ(played.group.outstanding(), 0u);
    }
}

TEST(Buffers, failedAcquisitionsCostTheirSampleOnly) {
    Played played("mp3_cbr.mp3");
    played.group.failAcquire(3, AMEDIA_ERROR_IO);
    played.group.failAcquire(5, AMEDIA_OK);
    for (size_t i = 1; i <= 6; ++i) {
        const host::ReadResult read = played.track->read();
        if (i == 3) {
            EXPECT_EQ(read.status, ERROR_IO);
        } else if (i == 5) {
            EXPECT_EQ(read.status, UNKNOWN_ERROR);  // what the tables make of NO_MEMORY
        } else {
            ASSERT_EQ(read.status, OK);
            EXPECT_EQ(asSample(read.buffer), played.expected[i - 1]);
        }
        EXPECT_EQ(static_cast<bool>(read.buffer), read.status == OK);
    }
}

TEST(Buffers, heldBufferBlocksTheNextReadUntilItComesBack) {
    Played played("wav_s16.wav");
    host::ReadResult held = played.track->read();
    ASSERT_EQ(held.status, OK);
    auto next = std::async(std::launch::async, [&] {
        const host::ReadResult read = played.track->read();
        EXPECT_EQ(read.status, OK);
        EXPECT_EQ(asSample(read.buffer), played.expected[1]);
    });
    ASSERT_TRUE(played.group.waitUntilBlocked());
    EXPECT_EQ(asSample(held.buffer), played.expected[0]);
    held.buffer.reset();
    next.get();
}

TEST(Buffers, heldBufferFailsANonBlockingRead) {
    Played played("wav_s16.wav");
    host::ReadResult held = played.track->read();
    host::ReadOptions options;
    options.nonBlocking = true;
    const host::ReadResult refused = played.track->read(options);
    EXPECT_EQ(refused.status, UNKNOWN_ERROR);  // what the platform makes of WOULD_BLOCK
    EXPECT_FALSE(refused.buffer);
    held.buffer.reset();
    EXPECT_EQ(asSample(played.track->read(options).buffer), played.expected[2]);
}

}  // namespace orvel::test
