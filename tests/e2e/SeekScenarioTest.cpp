// Seeks at awkward moments, from two threads, and very many of them.

#include <gtest/gtest.h>
#include <malloc.h>
#include <media/stagefright/MediaErrors.h>

#include <map>
#include <random>
#include <thread>

#include "e2e/SeekFixture.h"
#include "plugin/LogCapture.h"

namespace orvel::test {

using namespace android;
using host::SeekMode;

namespace {

// What the file holds, found by time.
using SampleMap = std::map<int64_t, Sample>;
SampleMap samplesByTime(const Bytes& bytes, const std::string& demuxer, int stream) {
    host::MemorySource source(bytes);
    Oracle oracle = Oracle::read(source, demuxer);
    SampleMap samples;
    for (Sample& sample : oracle.streams[stream].samples)
        samples.emplace(sample.timeUs, std::move(sample));
    return samples;
}

struct File {
    const char* name;
    const char* demuxer;
};

}  // namespace

// Video and audio started, the video of 2 s sought first, then the audio, which is a little longer.
TEST(SeekDecision, movesTheDemultiplexerNoMoreOftenThanItMust) {
    const Bytes bytes = mediaBytes("mp4_no_b.mp4");
    host::MemorySource source(bytes);
    SeekFixture opened(source, bytes, "mov");
    ASSERT_EQ(opened.oracle().tracks()[0].durationUs, 2000000);
    ASSERT_EQ(opened.oracle().tracks()[1].durationUs, 2016000);
    const struct {
        int64_t timeUs;
        int mode;
        Lines lines;
    } rows[] = {
            {500000, 0, {"I [0] (codec_type:0) will seekTo 500000 us, seekmode:0"}},
            {500000, 1, {"I [0] (codec_type:0) will seekTo 500000 us, seekmode:1"}},
            {500000,
             2,
             {"I [0] (codec_type:0) will seekTo 500000 us, seekmode:2",
              "I prevIframePts:6144, nextIFramePts:12288, request pts:6400, seek flags:1"}},
            {720000,
             2,
             {"I [0] (codec_type:0) will seekTo 720000 us, seekmode:2",
              "I prevIframePts:6144, nextIFramePts:12288, request pts:9216, seek flags:0"}},
            {1990000,
             2,
             {"I [0] (codec_type:0) will seekTo 1990000 us, seekmode:2",
              "W seek index out of range, seek backward"}},
            {1990000,
             1,
             {"I [0] (codec_type:0) will seekTo 1990000 us, seekmode:1",
              "E av_seek_frame error:Operation not permitted when using flags:0, using "
              "flags:1 to seek again"}},
            {500000,
             3,
             {"I [0] (codec_type:0) will seekTo 500000 us, seekmode:3",
              "I [1] (codec_type:1) will seekTo 500000 us, seekmode:3"}},
            {2000000, 0, {"I [0] (codec_type:0) will seekTo 2000000 us, seekmode:0"}},
            {2010000,
             0,
             {"W [video 0] seekTimeUs:2010000 us exceeds duration:2000000 us",
              "I [1] (codec_type:1) will seekTo 2010000 us, seekmode:0"}},
            {3000000,
             3,
             {"W [video 0] seekTimeUs:3000000 us exceeds duration:2000000 us",
              "W [audio 1] seekTimeUs:3000000 us exceeds duration:2016000 us"}},
            {500000, 0, {"I [0] (codec_type:0) will seekTo 500000 us, seekmode:0"}},
    };
    for (const auto& row : rows) {
        LogCapture log;
        opened.seek(row.timeUs, static_cast<SeekMode>(row.mode), 0);
        Lines decisions;
        for (const std::string& line : log.take("FFmpegReader")) {
            // The read-ahead may come to the end of the file meanwhile.
            if (line[0] == 'D' || line.find("reach end of file") != line.npos) continue;
            decisions.push_back(line.substr(0, 2) + line.substr(line.find(": ") + 2));
        }
        EXPECT_EQ(decisions, row.lines);
    }
    // Without the video the audio has to move the demultiplexer itself.
    EXPECT_EQ(opened.track(0).stop(), OK);
    LogCapture log;
    opened.track(1).read(seekTo(500000, SeekMode::PreviousSync));
    const Lines lines = log.take("FFmpegReader");
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        "I FFmpegReader: [1] (codec_type:1) will seekTo 500000 us, seekmode:0"),
              lines.end());
}

class SeekRace : public ::testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(Modes, SeekRace, ::testing::Values(3, 4));

// Two tracks sought and read by a thread each. The last mode moves the demultiplexer for audio as
// well, under the feet of the video; without it the video's samples follow its own seeks.
TEST_P(SeekRace, everySampleIsWhatTheFileHoldsThere) {
    const Bytes bytes = mediaBytes("mp4_open_gop.mp4");
    host::MemorySource source(bytes);
    SeekFixture opened(source, bytes, "mov");
    const SeekOracle& oracle = opened.oracle();
    std::vector<std::thread> threads;
    for (size_t track : {0, 1}) {
        threads.emplace_back([&, track,
                              all = samplesByTime(bytes, "mov", static_cast<int>(track))] {
            std::mt19937 random(static_cast<unsigned>(track));
            for (int round = 0; round < 100 * kEffort; ++round) {
                const int64_t timeUs = random() % 2000000;
                const auto mode = static_cast<SeekMode>(random() % GetParam());
                const SeekOracle::Frame* expected = oracle.landing(track, timeUs, mode).frame;
                for (unsigned reads = random() % 4, i = 0; i <= reads; ++i, ++expected) {
                    host::ReadResult read = opened.track(track).read(i == 0 ? seekTo(timeUs, mode)
                                                                            : host::ReadOptions{});
                    if (read.status == ERROR_END_OF_STREAM) break;
                    ASSERT_EQ(read.status, OK);
                    const Sample sample = asSample(read.buffer);
                    ASSERT_EQ(all.count(sample.timeUs), 1u) << sample.timeUs;
                    EXPECT_EQ(all.at(sample.timeUs), sample);
                    if (track > 0 || GetParam() > 3) continue;
                    EXPECT_EQ(sample.timeUs, oracle.timeUs(track, *expected));
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

#ifdef ORVEL_SANITIZED
constexpr int kManySeeks = 2000;
#else
constexpr int kManySeeks = 100000;
#endif

TEST(ManySeeks, leaveNothingBehind) {
    const ResourceCheck resources;
    const std::vector<File> files = {{"mp4_open_gop.mp4", "mov"},
                                     {"mkv_front_cues.mkv", "matroska"},
                                     {"avi_mpeg4_mp3.avi", "avi"},
                                     {"mp3_vbr.mp3", "mp3"}};
    int seeks = 0, failed = 0;
    for (const File& file : files) {
        const Bytes bytes = mediaBytes(file.name);
        host::MemorySource source(bytes);
        SeekFixture opened(source, bytes, file.demuxer);
        std::mt19937 random(1);
        const auto seekAndRead = [&](size_t count) {
            for (size_t i = 0; i < count; ++i, ++seeks) {
                const auto mode = static_cast<SeekMode>(random() % 4);
                const int64_t timeUs = random() % 1900000;
                // Behind the video's last key frame there may be no audio.
                const size_t track = random() % opened.trackCount();
                const status_t status = opened.track(track).read(seekTo(timeUs, mode)).status;
                failed += status != OK && (track == 0 || status != ERROR_END_OF_STREAM);
            }
            for (size_t i = 0; i < opened.trackCount(); ++i)
                readToEnd(opened.track(i));
            return mallinfo2().uordblks;
        };
        // The first half fills indexes. The stores of freed memory that threads keep count as in
        // use: how full they are differs by some 100 KiB. Of 12,500 seeks a leak would make more.
        const size_t before = seekAndRead(kManySeeks / files.size() / 2);
        const size_t after = seekAndRead(kManySeeks / files.size() / 2);
        EXPECT_LT(after, before + 1024 * 1024) << file.name;
    }
    EXPECT_EQ(seeks, kManySeeks);
    EXPECT_EQ(failed, 0);
}

// Presentation times cost reads of their own: none after the first seek. Before it there are none
// either: OneTrackAlone.
TEST(LazyTimes, onlyTheFirstSeekReadsBoxes) {
    for (const char* name : {"mp4_no_b.mp4", "mp4_open_gop.mp4", "mp4_fragmented.mp4"}) {
        const Bytes bytes = mediaBytes(name);
        host::MemorySource memory(bytes);
        host::CountingSource ours(memory, true), theirs(memory, true);
        const auto taken = [](host::CountingSource& source) {
            std::vector<std::pair<off64_t, size_t>> reads;
            for (const auto& read : source.reads())
                reads.emplace_back(read.offset, read.length);
            source.reset();
            return reads;
        };
        SwitchSource source(memory, ours);
        const auto extractor = openSniffedCalmly(source);
        ASSERT_TRUE(extractor);
        host::Player player(*extractor);
        std::vector<SoughtTrack> tracks;
        seekOrder(*extractor, &tracks);
        SeekOracle oracle(theirs, "mov", tracks);
        taken(theirs);
        const auto readAll = [&] {
            for (size_t i = 0; i < tracks.size(); ++i)
                EXPECT_TRUE(sameSamples(readToEnd(*player.track(i)).samples, oracle.readOn(i)));
        };
        readAll();
        taken(ours);
        taken(theirs);
        for (const bool isFirst : {true, false, false}) {
            for (size_t i = 0; i < tracks.size(); ++i) {
                EXPECT_EQ(player.track(i)->read(seekTo(1200000, SeekMode::PreviousSync)).status,
                          OK);
                oracle.seek(i, 1200000, SeekMode::PreviousSync);
            }
            readAll();
            const auto reads = taken(ours);
            const auto plain = taken(theirs);
            EXPECT_EQ(reads != plain, isFirst) << name;
            EXPECT_GE(reads.size(), plain.size());
        }
    }
}

}  // namespace orvel::test
