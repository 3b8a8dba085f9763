// Every sample of every track, under every temper of the source, against plain libavformat.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <algorithm>
#include <chrono>
#include <numeric>
#include <tuple>

#include "e2e/Opened.h"
#include "framework/FaultSource.h"

namespace orvel::test {

using namespace android;

namespace {

using SourcePointer = std::unique_ptr<host::DataSource>;

struct Temper {
    const char* name;
    SourcePointer (*wrap)(host::DataSource&);
    size_t maxFileSize;  // larger files would take too long
};
void PrintTo(const Temper& temper, std::ostream* out) {
    *out << temper.name;
}

template <size_t Bytes>
SourcePointer shortReads(host::DataSource& source) {
    return std::make_unique<host::ShortReadSource>(source, Bytes);
}

const Temper kTempers[] = {
        {"WholeReads",
         [](host::DataSource& s) -> SourcePointer {
             return std::make_unique<host::SourceDecorator>(s);
         },
         SIZE_MAX},
        {"Reads1000", shortReads<1000>, SIZE_MAX},
        {"Reads1", shortReads<1>, 64 * 1024},
        {"UnknownSize",
         [](host::DataSource& s) -> SourcePointer {
             return std::make_unique<host::UnknownSizeSource>(s);
         },
         SIZE_MAX},
        {"Slow",
         [](host::DataSource& s) -> SourcePointer {
             return std::make_unique<host::DelaySource>(s, std::chrono::microseconds(100));
         },
         64 * 1024},
};

std::string paramName(const ::testing::TestParamInfo<std::tuple<MediaFile, Temper>>& info) {
    return asTestName(std::get<0>(info.param).name) + "_" + std::get<1>(info.param).name;
}

}  // namespace

class Delivery : public ::testing::TestWithParam<std::tuple<MediaFile, Temper>> {};

INSTANTIATE_TEST_SUITE_P(Media, Delivery,
                         ::testing::Combine(::testing::ValuesIn(filesWithTracks()),
                                            ::testing::ValuesIn(kTempers)),
                         paramName);

TEST_P(Delivery, givesEverySample) {
    const auto& [file, temper] = GetParam();
    const Bytes bytes = file.bytes();
    if (bytes.size() > temper.maxFileSize) GTEST_SKIP() << "would take long";
    const std::vector<size_t> tracks = playedTracks(file);
    host::MemorySource whole(bytes);
    const SourcePointer odd = temper.wrap(whole);
    // A decorated source of its own for the oracle: what the size is decides how files are read.
    const Oracle oracle = readOracle(*temper.wrap(whole), file, tracks);
    ASSERT_TRUE(oracle.opened);
    for (size_t track : tracks) {
        EXPECT_FALSE(oracle.streams[file.tracks[track].stream].samples.empty());
    }
    // Sniffing takes whole reads: it declines what gives less.
    SwitchSource source(whole, *odd);
    const auto extractor = openSniffedCalmly(source);
    ASSERT_TRUE(extractor);
    ASSERT_EQ(extractor->countTracks(), file.tracks.size());
    expectOracle(readTracks(*extractor, tracks), file, oracle);
}

// Each stream's packets do not depend on how the reads are cut.
TEST(Delivery, oracleItselfDoesNotDependOnTheCutOfReads) {
    for (const MediaFile& file : filesWithTracks()) {
        host::MemorySource whole(file.bytes());
        host::ShortReadSource cut(whole, 1000);
        const Oracle a = Oracle::read(whole, file.demuxer);
        const Oracle b = Oracle::read(cut, file.demuxer);
        ASSERT_EQ(a.streams.size(), b.streams.size()) << file.name;
        for (size_t i = 0; i < a.streams.size(); ++i) {
            EXPECT_TRUE(sameSamples(b.streams[i].samples, a.streams[i].samples)) << file.name;
        }
    }
}

TEST(DeclinedSource, readsShorterThanTheProbeNeeds) {
    host::MemorySource whole(mediaBytes("wav_s16.wav"));
    host::ShortReadSource source(whole, 1000);
    EXPECT_FALSE(plugin().sniff(source).taken());
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

// The n-th readAt after sniffing fails, once or for good: the samples before it and the status are
// those that libavformat gives over a source that fails at the same point.
TEST_P(FaultyDelivery, endsAsLibavformatDoes) {
    const MediaFile& file = GetParam();
    const Bytes bytes = file.bytes();
    const std::vector<size_t> tracks = playedTracks(file);
    host::MemorySource whole(bytes);
    host::FaultSource counting(whole, host::Fault{});
    readOracle(counting, file, tracks);
    const uint64_t calls = counting.calls();
    constexpr uint64_t kPoints = 12;
    int faultsMet = 0;
    for (const auto repeat : {host::Fault::Repeat::Once, host::Fault::Repeat::ForGood}) {
        for (uint64_t point = 0; point < kPoints; ++point) {
            const uint64_t call = 1 + point * calls / kPoints;
            SCOPED_TRACE("readAt call " + std::to_string(call) + " of " + std::to_string(calls) +
                         (repeat == host::Fault::Repeat::Once ? " fails once" : " and later fail"));
            const host::Fault fault{{}, call, repeat};
            host::FaultSource forOracle(whole, fault);
            const Oracle oracle = readOracle(forOracle, file, tracks);
            host::FaultSource faulty(whole, fault);
            SwitchSource source(whole, faulty);
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
            faultsMet += faulty.faults() > 0;
        }
    }
    EXPECT_GE(faultsMet, static_cast<int>(kPoints));
}

// A file cut off in its middle ends where libavformat ends it.
TEST_P(FaultyDelivery, cutFileEndsAsLibavformatDoes) {
    const MediaFile& file = GetParam();
    const std::vector<size_t> tracks = playedTracks(file);
    for (int percent : {95, 60, 30}) {
        const Bytes all = file.bytes();
        host::MemorySource cut(truncated(all, all.size() * percent / 100));
        const Oracle oracle = readOracle(cut, file, tracks);
        host::SniffResult result = plugin().sniff(cut);
        if (!result.taken()) continue;  // an MP4 that has lost its index, behind the media
        const auto extractor = plugin().create(cut, std::move(result));
        ASSERT_TRUE(extractor);
        if (!oracle.opened || extractor->countTracks() != file.tracks.size()) {
            EXPECT_EQ(oracle.opened, extractor->countTracks() > 0);
            continue;
        }
        expectOracle(readTracks(*extractor, tracks), file, oracle);
    }
}

}  // namespace orvel::test
