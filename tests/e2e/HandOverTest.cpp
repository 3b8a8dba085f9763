// How the looper and the threads that read take turns: what a sample, a stop and a request cost.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>
#include <standin/LooperControl.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "e2e/Opened.h"
#include "framework/LatchSource.h"

namespace orvel::test {

using namespace android;
using namespace std::chrono_literals;

namespace {

const host::ReadOptions kToStart = {host::ReadOptions::Seek{0, host::SeekMode::PreviousSync},
                                    false};
constexpr auto kSlow = 3ms;  // what each read of a slow source takes

// Waits for samples that need no further read of the source.
void expectDelivered(const std::atomic<int>& delivered, int samples) {
    std::this_thread::sleep_for(kSlow);
    const auto giveUp = std::chrono::steady_clock::now() + 10s;
    while (delivered < samples && std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(1ms);
    EXPECT_GE(delivered.load(), samples);
}

// Lets the source's reads go one at a time while `reading` goes on. Each of them is worth a sample
// at least, since a read does not wait for a pass after the one that read its packet; but for the
// pass that may be under way when a read begins, for one that goes before a thread that has not
// waited long for the lock, and for those of a seek.
void expectASampleForEachSourceRead(host::LatchSource& source, std::future<void>& reading,
                                    const std::atomic<int>& delivered, int others) {
    for (int reads = -others; reading.wait_for(0s) != std::future_status::ready;) {
        if (!source.waitUntilBlocked(1, 1ms)) continue;
        expectDelivered(delivered, reads);
        if (::testing::Test::HasFailure()) break;
        ++reads;
        source.step();
    }
    if (::testing::Test::HasFailure()) source.release();
    reading.get();
}

}  // namespace

TEST(HandOver, noReadOfASlowSourceWaitsForAFurtherPass) {
    host::MemorySource bytes(mediaBytes("aiff_s16.aiff"));
    host::LatchSource source(bytes);
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    StartedTrack audio(*extractor, 0);
    std::atomic<int> delivered{0};
    source.armAtCall(source.calls() + 1);
    auto fromStart = inThread([&] {
        for (; delivered < 30; ++delivered)
            EXPECT_EQ(audio.track->read().status, OK);
    });
    // What was buffered at the open is delivered before the source is asked for more.
    ASSERT_TRUE(source.waitUntilBlocked());
    expectDelivered(delivered, 1);
    expectASampleForEachSourceRead(source, fromStart, delivered, 2);

    // The read-ahead goes on, inside a read of the source until the seek waits for it.
    ASSERT_TRUE(source.waitUntilBlocked());
    delivered = 0;
    auto afterFlush = inThread([&] {
        EXPECT_EQ(audio.track->read(kToStart).status, OK);
        for (++delivered; delivered < 30; ++delivered)
            EXPECT_EQ(audio.track->read().status, OK);
    });
    std::this_thread::sleep_for(100ms);
    expectASampleForEachSourceRead(source, afterFlush, delivered, 4);
    source.release();
}

TEST(HandOver, stopAndStartBesideAReadCostThreeSourceReads) {
    host::MemorySource bytes(mediaBytes("mp4_h264_eac3.mp4"));
    host::DelaySource slow(bytes, 2ms);
    host::LatchSource source(slow);
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    StartedTrack video(*extractor, 0), audio(*extractor, 1);
    std::atomic<bool> done{false};
    std::atomic<int> seeks{0};
    auto reading = inThread([&] {
        while (!done) {
            if (audio.track->read().status == OK) continue;
            ++seeks;
            audio.track->read(kToStart);
        }
    });
    uint64_t stop = UINT64_MAX, start = UINT64_MAX;
    for (int i = 0; i < 10; ++i) {
        const int seeksBefore = seeks;
        const uint64_t before = source.calls();
        video.stop();
        const uint64_t stopped = source.calls();
        video.start();
        const uint64_t started = source.calls();
        video.track->read();
        if (seeks != seeksBefore) continue;  // which reads, too
        stop = std::min(stop, stopped - before);
        start = std::min(start, started - stopped);
    }
    // This thread may be kept waiting between its looks, but not each time.
    EXPECT_LE(std::max(stop, start), 3u);
    done = true;
    reading.get();
}

TEST(HandOver, theLoopersQueueStaysShort) {
    host::MemorySource bytes(mediaBytes("mp3_cbr.mp3"));
    host::DelaySource source(bytes, 200us);
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    StartedTrack audio(*extractor, 0);
    standin::takeLongestLooperQueue();
    EXPECT_EQ(readToEnd(*audio.track).end, ERROR_END_OF_STREAM);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(audio.track->read().status, ERROR_END_OF_STREAM);
    // One request for the track, one for any stream.
    EXPECT_LE(standin::takeLongestLooperQueue(), 2u);
}

}  // namespace orvel::test
