// The benchmark's own arithmetic, and a run of the whole command over its quickest cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "FullRule.h"
#include "HeapCount.h"
#include "MeasureJson.h"
#include "Process.h"
#include "Results.h"

namespace orvel::bench {
namespace {

using Kind = PacketSize::Kind;

// What the read-ahead does, played through from every packet of the file.
uint64_t fullRuleByHand(const std::vector<PacketSize>& packets, size_t audioFull,
                        size_t videoFull) {
    uint64_t most = 0;
    for (size_t begin = 0; begin < packets.size(); ++begin) {
        size_t audio = 0, video = 0;
        uint64_t bytes = 0;
        for (size_t i = begin; i < packets.size() && (audio < audioFull || video < videoFull);
             ++i) {
            ++(packets[i].kind == Kind::Audio ? audio : video);
            bytes += packets[i].bytes;
        }
        most = std::max(most, bytes);
    }
    return most;
}

std::vector<PacketSize> interleaved(int audioRun, int videoRun, int times) {
    std::vector<PacketSize> packets;
    for (int i = 0; i < times; ++i) {
        packets.insert(packets.end(), audioRun, {Kind::Audio, 10u + static_cast<uint32_t>(i % 7)});
        packets.insert(packets.end(), videoRun, {Kind::Video, 1000u + 37 * (i % 11)});
    }
    return packets;
}

TEST(FullRule, equalsAReadAheadFromEveryPacket) {
    const struct {
        const char* what;
        std::vector<PacketSize> packets;
        size_t audioFull, videoFull;
    } kCases[] = {
            {"sound alone", interleaved(1, 0, 300), 65, 0},
            {"pictures alone", interleaved(0, 1, 300), 0, 31},
            {"sound fills last", interleaved(1, 2, 300), 65, 31},
            {"pictures fill last", interleaved(9, 2, 300), 65, 31},
            {"long runs", interleaved(100, 80, 5), 65, 31},
            {"never full", interleaved(3, 1, 10), 65, 31},
            {"empty", {}, 0, 0},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(fullRuleBytes(row.packets),
                  fullRuleByHand(row.packets, row.audioFull, row.videoFull));
    }
    EXPECT_EQ(fullRuleBytes(std::vector<PacketSize>(100, {Kind::Audio, 10})), 650u);
}

TEST(Results, medianAndTargets) {
    EXPECT_EQ(median({}), 0);
    EXPECT_EQ(median({5, 1, 3}), 3);
    EXPECT_EQ(median({4, 1, 3, 2}), 2.5);

    Case row = {};
    CaseResult result;
    result.row = &row;
    result.medianRatio = 1.2;
    result.extraMemory = 8;
    result.fullRuleMemory = 4;
    const struct {
        Bound bound;
        double target;
        bool met;
    } kCases[] = {{Bound::Ratio, 1.2, true},
                  {Bound::Ratio, 1.19, false},
                  {Bound::Memory, 4, true},
                  {Bound::Memory, 3.9, false},
                  {Bound::None, 0, true}};
    for (const auto& expected : kCases) {
        row.bound = expected.bound;
        row.target = expected.target;
        EXPECT_EQ(result.meetsTarget(), expected.met) << expected.target;
    }
}

TEST(HeapCount, seesEveryWayToAllocate) {
    countHeap(true);
    void* volatile first = malloc(100000);
    void* volatile second = calloc(10, 10000);
    second = realloc(second, 300000);
    void* aligned = nullptr;
    const int failed = posix_memalign(&aligned, 64, 100000);
    free(first);
    free(second);
    free(aligned);
    char* volatile small = new char[10];
    delete[] small;
    const HeapCounts counts = heapCounts();
    countHeap(false);
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(counts.allocations, 5u);
    EXPECT_GE(counts.peakBytes, 500000);
    EXPECT_LT(counts.peakBytes, 510000);
}

TEST(Command, reportsWhatBothSidesDid) {
    const auto report = nlohmann::json::parse(
            run({ORVEL_BENCH, "--json", "--rounds", "2", "--media", ORVEL_BENCH_MEDIA, "--case",
                 "sniff-noise", "--case", "sniff-flac"}));
    ASSERT_EQ(report["cases"].size(), 2u);
    for (const auto& result : report["cases"]) {
        SCOPED_TRACE(result.dump());
        EXPECT_GT(result["ratio"]["median"], 0.0);
        EXPECT_EQ(result["ratio"]["rounds"].size(), 2u);
        EXPECT_EQ(result["plugin"]["samples"], result["bare"]["samples"]);
        // The same bytes: neither side may look at more of the file than the other.
        EXPECT_GT(result["bare"]["bytesRead"], 0);
        EXPECT_EQ(result["plugin"]["bytesRead"], result["bare"]["bytesRead"]);
        EXPECT_EQ(result["plugin"]["reads"], result["bare"]["reads"]);
        EXPECT_GE(result["bare"]["allocationsPerSample"], 1.0);
        EXPECT_GT(result["plugin"]["peakResidentBytes"], 1e6);
        EXPECT_EQ(result["met"], result["ratio"]["median"] <= result["target"]);
    }
    EXPECT_THROW(run({ORVEL_BENCH, "--case", "nonsense"}), std::runtime_error);
}

}  // namespace
}  // namespace orvel::bench
