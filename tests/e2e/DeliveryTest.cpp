// Every sample of every track, under every temper of the source, against plain libavformat.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <algorithm>
#include <chrono>
#include <tuple>

#include "e2e/Opened.h"

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

std::vector<std::tuple<MediaFile, Temper>> matrix() {
    std::vector<std::tuple<MediaFile, Temper>> cases;
    for (const MediaFile& file : filesWithTracks()) {
        const size_t size = file.bytes().size();
        for (const Temper& temper : kTempers) {
            if (size <= temper.maxFileSize) cases.emplace_back(file, temper);
        }
    }
    return cases;
}

std::string paramName(const ::testing::TestParamInfo<std::tuple<MediaFile, Temper>>& info) {
    return asTestName(std::get<0>(info.param).name) + "_" + std::get<1>(info.param).name;
}

}  // namespace

class Delivery : public ::testing::TestWithParam<std::tuple<MediaFile, Temper>> {};

INSTANTIATE_TEST_SUITE_P(Media, Delivery, ::testing::ValuesIn(matrix()), paramName);

TEST_P(Delivery, givesEverySample) {
    const auto& [file, temper] = GetParam();
    const Bytes bytes = file.bytes();
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

}  // namespace orvel::test
