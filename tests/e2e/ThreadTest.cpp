// Several threads on one plug-in, destruction at awkward moments, sources that block.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <future>
#include <thread>

#include "e2e/Opened.h"
#include "framework/LatchSource.h"

namespace orvel::test {

using namespace android;

namespace {

// A track that has been started, with the buffers it is started with.
struct StartedTrack {
    host::BufferGroup group;
    std::optional<host::Track> track;

    StartedTrack(const host::Extractor& extractor, size_t index) : track(extractor.track(index)) {
        EXPECT_TRUE(track);
        start();
    }
    void start() { EXPECT_EQ(track->start(group), OK); }
    void stop() { EXPECT_EQ(track->stop(), OK); }
};

// Runs `work` on its own thread; a test that would wait for it for ever fails instead.
template <typename Work>
std::future<void> inThread(Work work) {
    return std::async(std::launch::async, std::move(work));
}
void expectReturns(std::future<void>& work) {
    ASSERT_EQ(work.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    work.get();
}

// One life of an extractor; `variant` chooses how far it gets and in which order things go.
void liveOnce(const Bytes& bytes, unsigned variant) {
    host::MemorySource source(bytes.data(), bytes.size());
    std::optional<host::Extractor> extractor = open(source);
    ASSERT_TRUE(extractor);
    const bool extractorGoesFirst = (variant & 1) != 0;
    const bool stopsTracks = (variant & 2) != 0;
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
        if (restarts || stopsTracks) started->stop();
        if (restarts) started->start();
        if (restarts && stopsTracks) started->stop();
    }
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

TEST(Threads, eachTrackOnItsOwnThreadGivesEverySample) {
    for (const char* name : {"mp4_h264_eac3.mp4", "mkv_hevc_dts.mkv", "avi_h264_ac3.avi",
                             "mov_pcm_eac3.mov", "flv_h264_aac.flv"}) {
        const MediaFile& file = mediaFile(name);
        const std::vector<size_t> tracks = playedTracks(file);
        host::MemorySource source(file.bytes());
        const Oracle oracle = readOracle(source, file, tracks);
        const auto extractor = open(source);
        ASSERT_TRUE(extractor);
        std::vector<std::unique_ptr<StartedTrack>> started;
        for (size_t track : tracks) {
            started.push_back(std::make_unique<StartedTrack>(*extractor, track));
        }
        std::vector<TrackRead> reads(tracks.size());
        std::vector<std::thread> threads;
        for (size_t i = 0; i < tracks.size(); ++i) {
            threads.emplace_back([&, i] {
                reads[i] = readToEnd(*started[i]->track);
                reads[i].track = tracks[i];
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        expectOracle(reads, file, oracle);
    }
}

TEST(Order, audioThatComes40SecondsAfterItsVideoIsReadFirst) {
    const MediaFile& file = mediaFile("mp4_late_audio.mp4");
    host::MemorySource source(file.bytes());
    const Oracle oracle = readOracle(source, file, {0, 1});
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    StartedTrack video(*extractor, 0), audio(*extractor, 1);
    host::ReadResult first = audio.track->read();
    ASSERT_EQ(first.status, OK);
    EXPECT_EQ(asSample(first.buffer), oracle.streams[1].samples.front());
    first.buffer.reset();
    EXPECT_TRUE(sameSamples(readToEnd(*video.track).samples, oracle.streams[0].samples));
    EXPECT_EQ(readToEnd(*audio.track).samples.size() + 1, oracle.streams[1].samples.size());
}

class OneTrackAlone : public ::testing::TestWithParam<std::tuple<const char*, size_t>> {};

INSTANTIATE_TEST_SUITE_P(Media, OneTrackAlone,
                         ::testing::Combine(::testing::Values("mp4_h264_eac3.mp4",
                                                              "mkv_h264_eac3.mkv",
                                                              "flv_h264_aac.flv", "rm_rv20_ac3.rm"),
                                            ::testing::Values(0, 1)));

TEST_P(OneTrackAlone, givesEverySampleAndTheOtherEndsAfterIt) {
    const auto [name, track] = GetParam();
    const MediaFile& file = mediaFile(name);
    host::MemorySource source(file.bytes());
    const Oracle oracle = readOracle(source, file, {track});
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    StartedTrack only(*extractor, track);
    EXPECT_TRUE(sameSamples(readToEnd(*only.track).samples,
                            oracle.streams[file.tracks[track].stream].samples));
    EXPECT_EQ(only.track->read().status, ERROR_END_OF_STREAM);

    // The demultiplexer stands at the end: tracks started now have nothing more to give.
    StartedTrack other(*extractor, 1 - track);
    EXPECT_EQ(other.track->read().status, ERROR_END_OF_STREAM);
    only.stop();
    only.start();
    EXPECT_EQ(only.track->read().status, ERROR_END_OF_STREAM);
}

TEST(BlockedSource, startReadAndStopReturnOnceThePassDoes) {
    const ResourceCheck resources;
    host::MemorySource bytes(mediaBytes("mp4_h264_eac3.mp4"));
    host::LatchSource source(bytes);
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    StartedTrack video(*extractor, 0);
    source.armAtCall(source.calls() + 1);
    auto reading = inThread([&] { EXPECT_EQ(video.track->read().status, OK); });
    ASSERT_TRUE(source.waitUntilBlocked());
    auto other = inThread([&] {
        StartedTrack audio(*extractor, 1);
        EXPECT_EQ(audio.track->read().status, OK);
        audio.stop();
    });
    EXPECT_EQ(other.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    source.release();
    expectReturns(reading);
    expectReturns(other);
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
