#include "framework/Player.h"

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <string>
#include <vector>

#include "FakeExtractor.h"
#include "framework/TrackScheduler.h"

namespace orvel::host {
namespace {

using android::ERROR_END_OF_STREAM;
using Log = std::vector<std::string>;

TEST(TrackScheduler, trackWithTheEarliestLastSample_goesNext) {
    TrackScheduler scheduler(3);
    const struct {
        size_t expected;
        std::optional<int64_t> timeUs;  // nothing: the track ends
    } steps[] = {
            {0, -100}, {1, 50}, {2, 50},    {0, 50},        {0, 51}, {1, 50}, {1, 200},
            {2, {}},   {0, 40}, {0, 60000}, {1, INT64_MAX}, {0, {}}, {1, {}},
    };
    for (const auto& step : steps) {
        ASSERT_EQ(scheduler.next(), step.expected);
        if (step.timeUs) {
            scheduler.delivered(step.expected, step.timeUs);
        } else {
            scheduler.ended(step.expected);
        }
    }
    EXPECT_EQ(scheduler.next(), std::nullopt);

    TrackScheduler timeless(2);
    timeless.delivered(0, 10);
    timeless.delivered(1, 20);
    timeless.delivered(0, std::nullopt);
    EXPECT_EQ(timeless.next(), 0u) << "a sample without a time keeps the track's place";
}

TEST(Player, allTracks_areStartedFirstReadByTimeAndStopped) {
    std::vector<FakeTrack> tracks = {
            {"audio/a", {0, 20, 40}, ERROR_END_OF_STREAM},
            {"video/v", {0, 30}, android::ERROR_IO},
            {"audio/b", {}, ERROR_END_OF_STREAM},
            {"audio/c", {0}, ERROR_END_OF_STREAM, android::NO_INIT},  // start fails
            {"audio/d", {1}},  // success without a buffer at the end
    };
    Log log;
    {
        std::vector<size_t> seen;
        std::optional<Extractor> extractor(Extractor(makeFakeExtractor(&tracks, &log)));
        Player player(*extractor, {4, 0, 1, 2, 3, 0, 9});
        extractor.reset();
        const auto results = player.play({}, [&](size_t index, Buffer& buffer) {
            EXPECT_EQ(buffer.size(), 8u);
            seen.push_back(index);
            return true;
        });
        ASSERT_EQ(results.size(), 6u);
        const struct {
            uint64_t samples;
            android::status_t status;
            std::optional<int64_t> first, last;
        } expected[] = {
                {3, ERROR_END_OF_STREAM, 0, 40},   {2, android::ERROR_IO, 0, 30},
                {0, ERROR_END_OF_STREAM, {}, {}},  {0, results[3].status, {}, {}},
                {1, android::UNKNOWN_ERROR, 1, 1}, {0, android::BAD_VALUE, {}, {}},
        };
        for (size_t i = 0; i < 6; ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(results[i].index, i == 5 ? 9u : i);
            EXPECT_EQ(results[i].samples, expected[i].samples);
            EXPECT_EQ(results[i].bytes, 8 * expected[i].samples);
            EXPECT_EQ(results[i].status, expected[i].status);
            EXPECT_EQ(results[i].firstTimeUs, expected[i].first);
            EXPECT_EQ(results[i].lastTimeUs, expected[i].last);
        }
        EXPECT_NE(results[3].status, android::OK);
        EXPECT_EQ(player.track(3), nullptr);
        EXPECT_EQ(seen, (std::vector<size_t>{0, 1, 4, 0, 1, 0}));
        EXPECT_EQ(player.group(0).outstanding(), 0u);
    }
    EXPECT_EQ(log, (Log{"start0", "start1", "start2", "start3", "start4", "free",  "read0",
                        "read1",  "read2",  "read4",  "read0",  "read1",  "read4", "read0",
                        "read1",  "read0",  "stop0",  "stop1",  "stop2",  "stop4", "free0",
                        "free1",  "free2",  "free3",  "free4"}));
}

TEST(Player, seek_goesToVideoFirstAndRevivesEndedTracks) {
    std::vector<FakeTrack> tracks = {
            {"audio/a", {0, 20, 40}, ERROR_END_OF_STREAM},
            {"VIDEO/v", {0}, ERROR_END_OF_STREAM},
    };
    Log log;
    Extractor extractor(makeFakeExtractor(&tracks, &log));
    Player player(extractor);
    player.play({}, nullptr);
    log.clear();
    Player::Options options;
    options.seek = {500, SeekMode::Closest};
    options.limitPerTrack = 2;
    auto results = player.play(options, nullptr);
    EXPECT_EQ(log, (Log{"seek1@500/3", "seek0@500/3", "read0", "read1"}));
    EXPECT_EQ(results[0].samples, 2u);
    EXPECT_EQ(results[0].status, android::OK) << "limited, not ended";
    EXPECT_EQ(results[1].seekStatus, android::OK);
    EXPECT_EQ(results[1].status, ERROR_END_OF_STREAM);

    log.clear();
    results = player.play({}, [](size_t, Buffer&) { return false; });
    EXPECT_EQ(log, (Log{"read0"})) << "goes on with what has not ended, until told to stop";
    EXPECT_EQ(results[0].firstTimeUs, 40);
    EXPECT_EQ(results[1].status, ERROR_END_OF_STREAM);
}

}  // namespace
}  // namespace orvel::host
