// Several threads on one plug-in, destruction at awkward moments, and what idle extractors cost.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>
#include <sys/resource.h>

#include <thread>

#include "e2e/Opened.h"
#include "framework/LatchSource.h"

namespace orvel::test {

using namespace android;

namespace {

// One life of an extractor; `variant` chooses how far it gets and in which order things go.
void liveOnce(const Bytes& bytes, unsigned variant) {
    host::MemorySource source(bytes.data(), bytes.size());
    std::optional<host::Extractor> extractor = open(source);
    ASSERT_TRUE(extractor);
    const bool extractorGoesFirst = (variant & 1) != 0, stops = (variant & 2) != 0;
    const bool restarts = (variant & 4) != 0;
    const int reads = static_cast<int>(variant / 8 % 4);
    std::vector<std::unique_ptr<StartedTrack>> tracks;
    for (size_t i = 0; i < extractor->countTracks(); ++i) {
        tracks.push_back(std::make_unique<StartedTrack>(*extractor, i));
    }
    if (extractorGoesFirst) extractor.reset();
    for (int i = 0; i < reads; ++i) {
        for (auto& started : tracks) {
            // Full caches, an unread one, and the read-ahead under way: all of them happen.
            EXPECT_TRUE(started->track->read().buffer);
        }
    }
    for (auto& started : tracks) {
        if (restarts || stops) started->stop();
        if (restarts) started->start();
        if (restarts && stops) started->stop();
    }
}

int64_t processorTimeUs() {
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    const auto us = [](const timeval& time) { return time.tv_sec * 1000000 + time.tv_usec; };
    return us(usage.ru_utime) + us(usage.ru_stime);
}

}  // namespace

TEST(Threads, thousandsOfLivesLeaveNothingBehind) {
    const std::vector<Bytes> files = {mediaBytes("mp4_small.mp4"), mediaBytes("mp3_cbr.mp3"),
                                      mediaBytes("avi_mpeg4_pcm.avi"), mediaBytes("wav_u8.wav"),
                                      mediaBytes("flv_flv1_mp3.flv")};
    const ResourceCheck resources;
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (unsigned round = 0; round < 64u * kEffort; ++round) {
                liveOnce(files[(round + thread) % files.size()], round);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Races, startsAndStopsOfAnotherTrackLeaveEverySampleInItsPlace) {
    for (const char* name :
         {"mp4_h264_eac3.mp4", "mkv_hevc_dts.mkv", "avi_h264_ac3.avi", "flv_h264_aac.flv"}) {
        const MediaFile& file = mediaFile(name);
        host::MemorySource source(file.bytes());
        const Oracle oracle = readOracle(source, file, {0});
        for (int round = 0; round < 3 * kEffort; ++round) {
            const auto extractor = open(source);
            ASSERT_TRUE(extractor);
            StartedTrack video(*extractor, 0);
            std::atomic<bool> ended{false};
            std::thread other([&] {
                StartedTrack audio(*extractor, 1);
                while (!ended) {
                    for (int i = 0; i < 3; ++i)
                        audio.track->read();
                    audio.stop();
                    audio.start();
                }
            });
            const TrackRead read = readToEnd(*video.track);
            ended = true;
            other.join();
            EXPECT_TRUE(sameSamples(read.samples, oracle.streams[file.tracks[0].stream].samples))
                    << name;
            EXPECT_EQ(read.end, ERROR_END_OF_STREAM);
        }
    }
}

TEST(Limits, idleExtractorsUseNoProcessorTime) {
    std::vector<std::unique_ptr<host::MemorySource>> sources;
    std::vector<host::Extractor> extractors;
    std::vector<std::unique_ptr<StartedTrack>> tracks;
    for (int i = 0; i < 20; ++i) {
        sources.push_back(std::make_unique<host::MemorySource>(
                mediaBytes(i % 2 ? "mp4_h264_eac3.mp4" : "flv_h264_aac.flv")));
        auto extractor = open(*sources.back());
        ASSERT_TRUE(extractor);
        tracks.push_back(std::make_unique<StartedTrack>(*extractor, 0));
        EXPECT_EQ(tracks.back()->track->read().status, OK);
        extractors.push_back(std::move(*extractor));
    }
    // The read-ahead comes to its end first, on a busy machine after a while.
    int64_t before, used = 0;
    for (int i = 0; i < 30; ++i) {
        before = processorTimeUs();
        std::this_thread::sleep_for(std::chrono::seconds(1));
        used = processorTimeUs() - before;
        if (used < 20000) break;
    }
    EXPECT_LT(used, 20000) << "us of a second";
}

class BlockedDestruction : public ::testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Media, BlockedDestruction,
                         ::testing::Values("mp4_late_audio.mp4", "mp4_h264_eac3.mp4", "wav_s16.wav",
                                           "aiff_s16.aiff", "mov_pcm_eac3.mov"),
                         [](const auto& info) { return asTestName(info.param); });

// Everything is let go while the read-ahead hangs in a read: the last reference may then go on the
// looper's own thread, inside that pass.
TEST_P(BlockedDestruction, waitsForThePassAndEnds) {
    const ResourceCheck resources;
    const Bytes all = mediaBytes(GetParam());
    for (int round = 0; round < 10 * kEffort; ++round) {
        host::MemorySource bytes(all.data(), all.size());
        host::LatchSource source(bytes);
        std::optional<host::Extractor> extractor = open(source);
        ASSERT_TRUE(extractor);
        auto video = std::make_unique<StartedTrack>(*extractor, 0);
        source.armAtCall(source.calls() + 2 + round % 8);
        // The read may have its sample before the read-ahead hangs, or wait for the hanging pass.
        auto reading = inThread([&] { EXPECT_EQ(video->track->read().status, OK); });
        ASSERT_TRUE(source.waitUntilBlocked());
        auto destroying = inThread([&] {
            reading.get();
            if (round % 2 == 0) extractor.reset();
            if (round % 4 == 0) video->stop();
            video.reset();
            extractor.reset();
        });
        destroying.wait_for(std::chrono::milliseconds(round % 3));
        source.release();
        expectReturns(destroying);
    }
}

}  // namespace orvel::test
