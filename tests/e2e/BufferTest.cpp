// Buffer groups that give too little, too late, or nothing.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <future>

#include "e2e/Opened.h"

namespace orvel::test {

using namespace android;

namespace {

struct Played {
    Bytes bytes;
    host::MemorySource source;
    Oracle oracle;
    std::optional<host::Extractor> extractor;
    host::BufferGroup group;
    std::optional<host::Track> track;

    explicit Played(const char* name) : bytes(mediaBytes(name)), source(bytes) {
        oracle = readOracle(source, mediaFile(name), {0});
        extractor = open(source);
        if (extractor) track = extractor->track(0);
    }
    const std::vector<Sample>& expected() const { return oracle.streams[0].samples; }
    void start() {
        ASSERT_TRUE(track);
        ASSERT_EQ(track->start(group), OK);
    }
};

}  // namespace

TEST(Buffers, oneBufferOfTheLargestInputSizeIsSetUpAndComesBack) {
    Played played("mp3_cbr.mp3");
    ASSERT_NO_FATAL_FAILURE(played.start());
    EXPECT_EQ(played.group.bufferCount(), 1u);
    EXPECT_EQ(played.group.totalBytes(), 262144u);
    host::ReadResult read = played.track->read();
    EXPECT_EQ(played.group.outstanding(), 1u);
    EXPECT_EQ(read.buffer.capacity(), 262144u);
    read.buffer.reset();
    EXPECT_EQ(played.group.outstanding(), 0u);
}

class TooSmallBuffers : public ::testing::TestWithParam<const char*> {};

// One file for each conversion: start codes, widening, swap, plain copy.
INSTANTIATE_TEST_SUITE_P(Media, TooSmallBuffers,
                         ::testing::Values("mp4_small.mp4", "wav_u8.wav", "aiff_s16.aiff",
                                           "mp3_vbr.mp3"),
                         [](const auto& info) { return asTestName(info.param); });

TEST_P(TooSmallBuffers, giveEmptySamplesForWhatDoesNotFit) {
    Played played(GetParam());
    constexpr size_t kSize = 200;
    played.group.setMaxBufferSize(kSize);
    ASSERT_NO_FATAL_FAILURE(played.start());
    std::vector<Sample> expected = played.expected();
    size_t emptied = 0;
    for (Sample& sample : expected) {
        if (sample.data.size() <= kSize) continue;
        sample.data.clear();
        ++emptied;
    }
    EXPECT_GT(emptied, 0u);
    const TrackRead read = readToEnd(*played.track);
    EXPECT_TRUE(sameSamples(read.samples, expected));
    EXPECT_EQ(read.end, ERROR_END_OF_STREAM);
}

TEST(Buffers, failedAcquisitionsCostTheirSampleOnly) {
    Played played("mp3_cbr.mp3");
    ASSERT_NO_FATAL_FAILURE(played.start());
    played.group.failAcquire(3, AMEDIA_ERROR_IO);
    played.group.failAcquire(5, AMEDIA_OK);
    std::vector<Sample> expected = played.expected();
    for (size_t i = 1; i <= 6; ++i) {
        const host::ReadResult read = played.track->read();
        if (i == 3) {
            EXPECT_EQ(read.status, ERROR_IO);
        } else if (i == 5) {
            EXPECT_EQ(read.status, UNKNOWN_ERROR);  // what the tables make of NO_MEMORY
        } else {
            ASSERT_EQ(read.status, OK);
            EXPECT_EQ(asSample(read.buffer), expected[i - 1]);
        }
        EXPECT_EQ(static_cast<bool>(read.buffer), read.status == OK);
    }
}

TEST(Buffers, heldBufferBlocksTheNextReadUntilItComesBack) {
    Played played("wav_s16.wav");
    ASSERT_NO_FATAL_FAILURE(played.start());
    host::ReadResult held = played.track->read();
    ASSERT_EQ(held.status, OK);
    auto next = std::async(std::launch::async, [&] {
        const host::ReadResult read = played.track->read();
        EXPECT_EQ(read.status, OK);
        EXPECT_EQ(asSample(read.buffer), played.expected()[1]);
    });
    ASSERT_TRUE(played.group.waitUntilBlocked());
    EXPECT_EQ(asSample(held.buffer), played.expected()[0]);
    held.buffer.reset();
    next.get();
}

TEST(Buffers, heldBufferFailsANonBlockingRead) {
    Played played("wav_s16.wav");
    ASSERT_NO_FATAL_FAILURE(played.start());
    host::ReadResult held = played.track->read();
    host::ReadOptions options;
    options.nonBlocking = true;
    const host::ReadResult refused = played.track->read(options);
    EXPECT_EQ(refused.status, WOULD_BLOCK);
    EXPECT_FALSE(refused.buffer);
    held.buffer.reset();
    EXPECT_EQ(asSample(played.track->read(options).buffer), played.expected()[2]);
}

TEST(Buffers, outliveTrackExtractorAndGroup) {
    host::Buffer kept;
    Sample expected;
    {
        Played played("mp3_cbr.mp3");
        ASSERT_NO_FATAL_FAILURE(played.start());
        kept = std::move(played.track->read().buffer);
        expected = played.expected().front();
    }
    EXPECT_EQ(asSample(kept), expected);
}

}  // namespace orvel::test
