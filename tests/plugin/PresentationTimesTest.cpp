#include "bytes/PresentationTimes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace orvel {
namespace {

using Entries = std::vector<IndexEntry>;

PresentationTimes snapshot(const Entries& entries, CompositionTable table = {},
                           uint64_t movieSamples = 0) {
    const auto at = [&entries](size_t i) { return entries[i]; };
    return PresentationTimes(entries.size(), at, std::move(table), movieSamples);
}

CompositionTable withOffsets(std::vector<int32_t> offsets, int32_t shift = 0) {
    CompositionTable table;
    table.movieOffsets = std::move(offsets);
    table.movieShift = shift;
    return table;
}

TEST(PresentationTimes, pts_behindTheLastOffset_isTheDecodeTime) {
    const Entries entries = {{0, 0, true}, {1, 10, false}, {2, 20, false}};
    const PresentationTimes times = snapshot(entries, withOffsets({5, -3}, 3));
    EXPECT_EQ(times.pts(0), 0 + 3 + 5);
    EXPECT_EQ(times.pts(1), 1 + 3 - 3);
    EXPECT_EQ(times.pts(2), 2);
}

// The rules of the search, word for word over all entries.
int64_t bruteForce(const PresentationTimes& t, int64_t wanted, ClosestMode mode, bool cra) {
    size_t c = 0;
    for (size_t i = 1; i < t.count(); ++i) {
        const int64_t a = std::abs(t.pts(i) - wanted);
        const int64_t b = std::abs(t.pts(c) - wanted);
        if (a < b || (a == b && t.pts(i) > t.pts(c))) c = i;
    }
    if (mode == ClosestMode::PresentationTime) return t.pts(c);
    size_t k = 0;
    for (size_t i = 0; i <= c; ++i) {
        if (t.isKey(i) && t.pts(i) <= t.pts(c)) k = i;
    }
    size_t n = k + 1;
    while (n < t.count() && !t.isKey(n))
        ++n;
    int64_t v = n <= c ? t.timestamp(n) - 1 : t.timestamp(c);
    if (cra) v = std::max(v, t.pts(k));
    if (cra && n < t.count()) v = std::min(v, t.timestamp(n) - 1);
    return v + t.shift();
}

TEST(PresentationTimes, searches_randomTables_equalBruteForce) {
    std::mt19937 random(7);
    const auto below = [&random](int64_t n) {
        return static_cast<int64_t>(random() % static_cast<uint64_t>(n));
    };
    for (int round = 0; round < 300; ++round) {
        const auto count = static_cast<size_t>(1 + below(round % 10 == 0 ? 2000 : 40));
        const int64_t keyEvery = 1 + below(20);
        const int64_t reorder = 1 + below(12);
        const int32_t shift = static_cast<int32_t>(below(4));
        Entries entries;
        std::vector<int32_t> offsets;
        int64_t time = -shift;
        for (size_t i = 0; i < count; ++i) {
            entries.push_back({time, 0, below(keyEvery) == 0});
            offsets.push_back(static_cast<int32_t>(below(reorder) - shift));
            time += 1 + below(3);
        }
        if (below(4) == 0)
            offsets.resize(static_cast<size_t>(below(static_cast<int64_t>(count) + 1)));
        const PresentationTimes times = snapshot(entries, withOffsets(offsets, shift));
        for (int64_t wanted = -5; wanted < time + 20; wanted += 1 + below(1 + time / 200)) {
            for (ClosestMode mode : {ClosestMode::SeekTimestamp, ClosestMode::PresentationTime}) {
                ASSERT_EQ(times.searchClosest(wanted, mode),
                          bruteForce(times, wanted, mode, false));
                ASSERT_EQ(times.searchClosest(wanted, mode, BackwardSeek::ByPresentationOfCra),
                          bruteForce(times, wanted, mode, true));
            }
            const auto first = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) {
                return entry.key && entry.timestamp + shift >= wanted;
            });
            ASSERT_EQ(times.firstKeyAtOrAfter(wanted),
                      first == entries.end() ? -1 : first - entries.begin());
        }
    }
}

TEST(PresentationTimes, hostileNumbers_saturate) {
    const Entries entries = {{INT64_MIN, 0, true}, {INT64_MAX, 0, true}, {INT64_MAX, 0, true}};
    const PresentationTimes times =
            snapshot(entries, withOffsets({INT32_MIN, INT32_MAX, 0}, INT32_MAX));
    EXPECT_EQ(times.pts(0), INT64_MIN);
    EXPECT_EQ(times.pts(1), INT64_MAX);
    EXPECT_EQ(times.searchClosest(INT64_MAX, ClosestMode::SeekTimestamp), INT64_MAX);
    EXPECT_EQ(times.searchClosest(INT64_MIN, ClosestMode::PresentationTime), INT64_MIN);
    EXPECT_EQ(PresentationTimes().searchClosest(0, ClosestMode::SeekTimestamp), -1);
    EXPECT_EQ(PresentationTimes().firstKeyAtOrAfter(0), -1);
}

// Three samples of the movie box, then two runs with offsets (one sample of them without bytes, so
// that two share a position) and a run of two samples without.
TEST(PresentationTimes, fragments_offsetsGoByPosition_andOnlyAFullIndexAnswers) {
    CompositionTable table = withOffsets({7, 8, 9, 99, 99, 99, 99, 99, 99, 99}, 1);
    table.runSampleCount = 7;
    for (const auto& [position, offset] : std::initializer_list<std::pair<int64_t, int32_t>>{
                 {900, 3}, {910, 4}, {500, -6}, {500, 5}, {530, 1}}) {
        table.fragmentOffsets.append(position, offset);
    }
    ASSERT_TRUE(table.fragmentOffsets.finish());
    Entries entries;
    for (int64_t position : {100, 110, 120, 500, 500, 530, 900, 910, 950, 960}) {
        entries.push_back({static_cast<int64_t>(10 * entries.size()), position, entries.empty()});
    }
    const auto at = [&entries](size_t i) { return entries[i]; };
    const CompositionTable& kept = table;
    const PresentationTimes full(entries.size(), at, kept, 3);
    EXPECT_TRUE(full.complete());
    EXPECT_EQ(full.shift(), 6);
    const int64_t offsets[] = {7, 8, 9, -6, 5, 1, 3, 4, 0, 0};
    for (size_t i = 0; i < full.count(); ++i) {
        EXPECT_EQ(full.pts(i), 10 * static_cast<int64_t>(i) + 6 + offsets[i]) << i;
    }
    EXPECT_EQ(full.searchClosest(60, ClosestMode::PresentationTime), 57);

    const PresentationTimes partial(3, at, kept, 3);
    EXPECT_FALSE(partial.complete());
    EXPECT_EQ(partial.shift(), 1);  // no entry with -6 yet
    EXPECT_EQ(partial.pts(2), 20 + 1 + 9);
    EXPECT_EQ(partial.searchClosest(60, ClosestMode::PresentationTime), -1);
    entries[3].position = 501;  // as many entries as expected, but one that no run explains
    EXPECT_FALSE(PresentationTimes(entries.size(), at, kept, 3).complete());
}

}  // namespace
}  // namespace orvel
