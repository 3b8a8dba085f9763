// Sources that fail at one read, for good from one read on, or change their size: while sniffing,
// opening, reading and seeking.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <algorithm>
#include <map>
#include <numeric>

#include "e2e/Opened.h"
#include "framework/FaultSource.h"

namespace orvel::test {

using namespace android;

namespace {

using Repeat = host::Fault::Repeat;

struct FaultKind {
    const char* name;
    Repeat repeat;
    status_t result;
    std::optional<size_t> cutTo;
    int sizePercent;  // what becomes of the size, in place of a failing read
};
constexpr FaultKind kKinds[] = {
        {"fails once", Repeat::Once, ERROR_IO, {}, 0},
        {"and later ones fail", Repeat::ForGood, ERROR_IO, {}, 0},
        {"gives nothing once", Repeat::Once, 0, {}, 0},
        {"and later ones give nothing", Repeat::ForGood, 0, {}, 0},
        {"is short once", Repeat::Once, 0, 100, 0},
        {"finds the file cut", Repeat::ForGood, 0, {}, 60},
        {"finds the file grown", Repeat::ForGood, 0, {}, 150},
};

std::unique_ptr<host::FaultSource> withFault(host::DataSource& whole, const FaultKind& kind,
                                             uint64_t call) {
    if (kind.sizePercent == 0) {
        const host::Fault fault{{}, call, kind.repeat, kind.result, kind.cutTo};
        return std::make_unique<host::FaultSource>(whole, fault);
    }
    off64_t size = 0;
    whole.getSize(&size);
    const host::SizeChange change{call, size * kind.sizePercent / 100};
    return std::make_unique<host::FaultSource>(whole, change);
}

// Reads that fail are counted by their number: text tracks are left out, whose sample descriptions
// cost the plug-in reads of its own.
std::vector<MediaFile> filesWithoutText() {
    std::vector<MediaFile> files = filesWithTracks();
    files.erase(std::remove_if(files.begin(), files.end(),
                               [](const MediaFile& file) {
                                   return playedTracks(file).size() < file.tracks.size();
                               }),
                files.end());
    return files;
}

class FaultyDelivery : public ::testing::TestWithParam<MediaFile> {};

INSTANTIATE_TEST_SUITE_P(Media, FaultyDelivery, ::testing::ValuesIn(filesWithoutText()),
                         [](const auto& info) { return asTestName(info.param.name); });

// The n-th readAt after sniffing goes wrong: the samples before it and the status are those that
// libavformat gives over a source that goes wrong at the same point.
TEST_P(FaultyDelivery, endsAsLibavformatDoes) {
    const MediaFile& file = GetParam();
    const std::vector<size_t> tracks = playedTracks(file);
    host::MemorySource whole(file.bytes());
    host::FaultSource counting(whole, host::Fault{});
    readOracle(counting, file, tracks);
    const uint64_t calls = counting.calls();
    constexpr uint64_t kPoints = 12;
    for (const FaultKind& kind : kKinds) {
        uint64_t faultsMet = 0;
        for (uint64_t point = 0; point < kPoints; ++point) {
            const uint64_t call = 1 + point * calls / kPoints;
            SCOPED_TRACE("readAt call " + std::to_string(call) + " of " + std::to_string(calls) +
                         " " + kind.name);
            const auto forOracle = withFault(whole, kind, call);
            const Oracle oracle = readOracle(*forOracle, file, tracks);
            const auto faulty = withFault(whole, kind, call);
            SwitchSource source(whole, *faulty);
            const auto extractor = openSniffedCalmly(source);
            ASSERT_TRUE(extractor);
            if (!oracle.opened) {
                EXPECT_EQ(extractor->countTracks(), 0u);
                EXPECT_FALSE(extractor->track(0));
                host::Format format;
                EXPECT_EQ(extractor->fileFormat(&format), OK);
            } else if (extractor->countTracks() == file.tracks.size()) {
                expectOracle(readTracks(*extractor, tracks), file, oracle);
            } else {
                // Without its whole beginning a file may show unknown codecs, or a stream twice.
                EXPECT_LE(extractor->countTracks(), oracle.streams.size());
                std::vector<size_t> all(extractor->countTracks());
                std::iota(all.begin(), all.end(), 0);
                for (const TrackRead& read : readTracks(*extractor, all)) {
                    EXPECT_TRUE(read.end == ERROR_END_OF_STREAM || read.end == ERROR_IO);
                }
            }
            faultsMet += faulty->faults() > 0 || faulty->calls() >= call;
        }
        EXPECT_GE(faultsMet, kPoints / 2) << kind.name;
    }
}

// A file cut off in its middle ends where libavformat ends it.
TEST_P(FaultyDelivery, cutFileEndsAsLibavformatDoes) {
    const MediaFile& file = GetParam();
    const std::vector<size_t> tracks = playedTracks(file);
    const Bytes all = file.bytes();
    int compared = 0;
    for (int percent : {95, 60, 30}) {
        SCOPED_TRACE(percent);
        host::MemorySource cut(truncated(all, all.size() * percent / 100));
        const Oracle oracle = readOracle(cut, file, tracks);
        host::SniffResult result = plugin().sniff(cut);
        if (!result.taken()) {
            // The sound that decides about an MP4 was cut off its index.
            EXPECT_STREQ(file.demuxer, "mov");
            EXPECT_TRUE(oracle.opened && oracle.streams.size() < file.tracks.size());
            continue;
        }
        const auto extractor = plugin().create(cut, std::move(result));
        ASSERT_TRUE(extractor);
        // An MP4 that has lost its index, behind the media, has no tracks.
        ASSERT_EQ(extractor->countTracks(), oracle.opened ? file.tracks.size() : 0);
        if (!oracle.opened) continue;
        expectOracle(readTracks(*extractor, tracks), file, oracle);
        ++compared;
    }
    const bool indexIsBehind = file.demuxer == std::string("mov") &&
                               file.name != "mp4_fragmented.mp4" &&
                               file.name != "mp4_faststart.mp4";
    EXPECT_GE(compared, indexIsBehind ? 0 : 2);
}

// Whatever a fault makes of one sniff, the next one finds the source well again and takes it.
TEST(FaultySniff, leavesNothingBehind) {
    for (const MediaFile& file : mediaFiles()) {
        host::MemorySource whole(file.bytes());
        host::FaultSource counting(whole, host::Fault{});
        ASSERT_TRUE(plugin().create(counting, plugin().sniff(counting)));
        const uint64_t calls = counting.calls();
        for (const FaultKind& kind : kKinds) {
            if (kind.repeat == Repeat::ForGood) continue;
            constexpr uint64_t kPoints = 8;
            for (uint64_t point = 0; point < kPoints; ++point) {
                const uint64_t call = 1 + point * calls / kPoints;
                SCOPED_TRACE(file.name + ", readAt call " + std::to_string(call) + " " + kind.name);
                const auto source = withFault(whole, kind, call);
                host::SniffResult first = plugin().sniff(*source);
                if (first.taken()) plugin().create(*source, std::move(first));
                const auto extractor = open(*source);
                ASSERT_TRUE(extractor);
                EXPECT_EQ(extractor->countTracks(), file.tracks.size());
                EXPECT_GT(source->faults(), 0u);
            }
        }
    }
}

class FaultySeek : public ::testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Media, FaultySeek,
                         ::testing::Values("mp4_h264_eac3.mp4", "mp4_fragmented.mp4",
                                           "mkv_h264_eac3.mkv", "avi_h264_ac3.avi",
                                           "flv_h264_aac.flv"),
                         [](const auto& info) { return asTestName(info.param); });

// A readAt of a seek, or of the reads behind it, goes wrong: every sample that comes with a good
// status is one of the file's, or, as libavformat delivers a packet whose read was cut, the
// beginning of one; and once the source is well a seek to the start gives the first sample.
TEST_P(FaultySeek, deliversNothingWrong) {
    const MediaFile& file = mediaFile(GetParam());
    host::MemorySource whole(file.bytes());
    const Oracle oracle = readOracle(whole, file, {0});
    const std::vector<Sample>& samples = oracle.streams[file.tracks[0].stream].samples;
    std::map<int64_t, const Sample*> byTime;
    for (const Sample& sample : samples)
        byTime[sample.timeUs] = &sample;
    const auto isRight = [&](const Sample& sample) {
        const auto found = byTime.find(sample.timeUs);
        if (found == byTime.end()) return false;
        const auto& data = found->second->data;
        return sample.data.size() <= data.size() &&
               std::equal(sample.data.begin(), sample.data.end(), data.begin());
    };
    host::ShortReadSource pieces(whole, 500);
    uint64_t faultsMet = 0;
    for (const FaultKind& kind : kKinds) {
        if (kind.repeat == Repeat::ForGood) continue;
        for (unsigned mode = 0; mode < 4; ++mode) {
            for (uint64_t call = 1; call <= 6; ++call) {
                SCOPED_TRACE("readAt call " + std::to_string(call) + " of a seek in mode " +
                             std::to_string(mode) + " " + kind.name);
                // Half of the time the next seek comes before the end of the file does, and the
                // fault in the middle of a packet, which libavformat then delivers in part.
                const bool readsToTheEnd = call % 2 == 0;
                const auto faulty = withFault(
                        readsToTheEnd ? static_cast<host::DataSource&>(whole) : pieces, kind, call);
                SwitchSource source(whole, *faulty);
                const auto extractor = open(source);
                ASSERT_TRUE(extractor);
                auto track = extractor->track(0);
                ASSERT_TRUE(track);
                host::BufferGroup group;
                ASSERT_EQ(track->start(group), OK);
                ASSERT_EQ(track->read().status, OK);
                source.switchOver();
                const host::ReadOptions seek{host::ReadOptions::Seek{
                        readsToTheEnd ? 1300000 : 100000, static_cast<host::SeekMode>(mode)}};
                host::ReadResult read = track->read(seek);
                while (read.status == OK && (readsToTheEnd || faulty->faults() == 0)) {
                    EXPECT_TRUE(isRight(asSample(read.buffer))) << describe(asSample(read.buffer));
                    read.buffer.reset();
                    read = track->read();
                }
                if (faulty->faults() == 0) continue;
                ++faultsMet;
                read.buffer.reset();
                if (read.status == ERROR_IO) {
                    // A start goes on behind it.
                    track->stop();
                    track->start(group);
                    const TrackRead rest = readToEnd(*track);
                    EXPECT_EQ(rest.end, ERROR_END_OF_STREAM);
                    for (const Sample& sample : rest.samples)
                        EXPECT_TRUE(isRight(sample)) << describe(sample);
                }
                const host::ReadOptions toStart{host::ReadOptions::Seek{
                        samples.front().timeUs, host::SeekMode::PreviousSync}};
                read = track->read(toStart);
                ASSERT_EQ(read.status, OK);
                EXPECT_EQ(asSample(read.buffer), samples.front());
                read.buffer.reset();
                // Nothing of the fault is left: not at the end of the file either.
                const TrackRead rest = readToEnd(*track);
                EXPECT_TRUE(sameSamples(rest.samples, {samples.begin() + 1, samples.end()}));
                EXPECT_EQ(rest.end, ERROR_END_OF_STREAM);
            }
        }
    }
    EXPECT_GT(faultsMet, 20u);
}

}  // namespace

}  // namespace orvel::test
