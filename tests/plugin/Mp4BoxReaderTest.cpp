#include "bytes/Mp4BoxReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Mp4Boxes.h"

namespace orvel {
namespace {

using namespace test;

std::optional<CompositionTable> tableOf(const Bytes& file, Mp4TrackRef ref = {1, 0},
                                        size_t maxSamples = 1000) {
    TestSource source(file);
    return Mp4BoxReader(source).compositionTable(ref, maxSamples);
}

TEST(Mp4BoxReader, compositionTable_ctts_followsTheDemuxersRules) {
    constexpr int32_t kMost = 1 << 28;
    constexpr int64_t kOver = kMost + 1;
    constexpr int64_t kMin = INT32_MIN;
    using Offsets = std::vector<int32_t>;
    const struct {
        const char* name;
        Bytes tables;
        Offsets offsets;
        int32_t shift;
    } cases[] = {
            {"none", {}, {}, 0},
            {"runs", ctts({{2, 5}, {1, 0}}), {5, 5, 0}, 0},
            {"negative", ctts({{1, -7}, {1, -9}, {1, 1}, {1, 1}}), {-7, -9, 1, 1}, 9},
            {"last two left out", ctts({{1, -2}, {1, -7}, {1, -9}}), {-2, -7, -9}, 2},
            {"empty runs", ctts({{0, -7}, {-1, -8}, {1, 4}, {1, 5}, {1, 6}}), {4, 5, 6}, 0},
            {"huge", ctts({{1, -3}, {1, kOver}, {1, -9}, {1, 1}, {1, 1}}), {}, 3},
            {"most", ctts({{1, kMost}, {1, -kMost}, {1, 1}, {1, 1}}), {kMost, -kMost, 1, 1}, kMost},
            {"huge but last", ctts({{1, 1}, {1, kMin}, {1, kOver}}), {1, INT32_MIN, kMost + 1}, 0},
            {"capped", ctts({{4, 5}, {INT32_MAX, 6}, {1, -7}, {1, 1}, {1, 1}}), {5, 5, 5, 5, 6}, 7},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto table = tableOf(box("moov", trak(1, c.tables)), {1, 0}, 5);
        ASSERT_TRUE(table);
        EXPECT_EQ(table->movieOffsets, c.offsets);
        EXPECT_EQ(table->movieShift, c.shift);
        EXPECT_EQ(table->runSampleCount, 0u);
    }
    const Bytes broken[] = {ctts({{1, 1}, {1, 2}}, 3), ctts({{1, 1}}, 0xFFFFFFFF),
                            box("ctts", words({0})), join({ctts({{1, 1}}), ctts({{1, 1}})})};
    for (const Bytes& tables : broken)
        EXPECT_FALSE(tableOf(box("moov", trak(1, tables))));
}

TEST(Mp4BoxReader, structure_oddFiles_givesTheDemuxersTrackOrNone) {
    const Bytes track = trak(1, ctts({{1, 5}}));
    const Bytes moov = box("moov", track);
    const Bytes other = box("moov", trak(1, ctts({{1, 6}})));
    const Bytes mdat = box("mdat", Bytes(100, 0xFF));
    const Bytes toTheEnd = box("moov", track, 0);
    const struct {
        const char* name;
        Bytes file;
        int offset;  // 0: unknown
    } cases[] = {
            {"behind the media", join({box("ftyp", {}), mdat, moov}), 5},
            {"64-bit media", join({largeBox("mdat", Bytes(5000, 1)), moov}), 5},
            {"64-bit movie", join({largeBox("moov", track), mdat}), 5},
            {"movie to the end", join({mdat, toTheEnd}), 5},
            {"media to the end", join({box("mdat", {}, 0), moov}), 0},
            {"first of two", join({moov, other}), 5},
            {"claims more than the file", box("moov", track, 99999), 5},
            {"among others", box("moov", join({box("mvhd", Bytes(100)), track})), 5},
            {"smaller than its header", join({box("moov", track, 7), moov}), 0},
            {"64-bit size too small", join({box("mdat", words({0, 15}), 1), moov}), 0},
            {"64-bit size negative", join({box("mdat", words({0xFFFFFFFF, 0}), 1), moov}), 0},
            {"table claims more", join({box("moov", trak(1, ctts({{1, 5}}, 2))), mdat}), 0},
            {"compressed", box("moov", join({box("cmov", Bytes(20)), track})), 0},
            {"hidden", join({box("hoov", track), moov}), 0},
            {"no movie", mdat, 0},
            {"empty", {}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto table = tableOf(c.file);
        ASSERT_EQ(table.has_value(), c.offset != 0);
        if (table) {
            EXPECT_EQ(table->movieOffsets, std::vector<int32_t>{c.offset});
        }
    }
}

TEST(Mp4BoxReader, tracks_areNamedByIdAndPlaceAmongThoseWithIt) {
    const Bytes version1 =
            box("trak", join({box("tkhd", words({1 << 24, 0, 0, 0, 0, 7, 0})),
                              box("mdia", box("minf", box("stbl", ctts({{1, 4}}))))}));
    const Bytes file =
            box("moov", join({trak(2, ctts({{1, 1}})), trak(1, ctts({{1, 2}})),
                              trak(2, ctts({{1, 3}})), version1, trak(-1, ctts({{1, 5}}))}));
    const struct {
        Mp4TrackRef ref;
        int offset;
    } cases[] = {{{2, 0}, 1}, {{1, 0}, 2}, {{2, 1}, 3}, {{7, 0}, 4}, {{-1, 0}, 5}};
    for (const auto& c : cases) {
        EXPECT_EQ(tableOf(file, c.ref)->movieOffsets, std::vector<int32_t>{c.offset});
    }
    // A table that claims more than its parents hold does not reach into what follows them.
    const Bytes reaching = box("mdia", box("minf", box("stbl", {}, 500)));
    const Bytes head = box("tkhd", words({0, 0, 0, 1}));
    const auto own =
            tableOf(box("moov", join({box("trak", join({head, reaching})), ctts({{1, 6}})})));
    ASSERT_TRUE(own);
    EXPECT_TRUE(own->movieOffsets.empty());
    const auto isSync = [](const Bytes& groups) {
        TestSource source(
                box("moov", trak(1, join({groups, box("free", {}, fourCharacterCode("sync"))}))));
        return Mp4BoxReader(source).hasSyncGroups({1, 0});
    };
    EXPECT_TRUE(isSync(box("sbgp", words({0, fourCharacterCode("sync"), 0}))));
    EXPECT_FALSE(
            isSync(box("sbgp", words({0, fourCharacterCode("rap "), fourCharacterCode("sync")}))));
    EXPECT_FALSE(isSync(box("sbgp", words({0}))));
    EXPECT_FALSE(tableOf(file, {2, 2}));
    EXPECT_FALSE(tableOf(file, {3, 0}));
}

Bytes stsd(const Bytes& entries, int64_t count) {
    return box("stsd", join({words({0, count}), entries}));
}

std::optional<Bytes> textsOf(Mp4BoxReader& reader, int32_t id) {
    const auto ranges = reader.timedTextDescriptions({id, 0});
    if (!ranges) return std::nullopt;
    size_t total = 0;
    for (const ByteRange& range : *ranges)
        total += static_cast<size_t>(range.size());
    Bytes texts(total);
    if (!reader.readRanges(*ranges, texts.data())) return std::nullopt;
    return texts;
}

TEST(Mp4BoxReader, timedTextDescriptions_areTheWholeTx3gEntriesInOrder) {
    const Bytes first = entry("tx3g", 40, 1);
    const Bytes second = entry("tx3g", 48, 2);
    const Bytes text = entry("text", 30, 3);
    const Bytes huge = box("tx3g", Bytes(100), 0xFFFFFFF0);
    Bytes many;
    for (int i = 0; i < 1025; ++i)
        many = join({many, entry("text", 16, 0)});
    const struct {
        const char* name;
        Bytes tables;
        std::optional<Bytes> expected;
    } cases[] = {
            {"two", stsd(join({first, second}), 2), join({first, second})},
            {"among others", stsd(join({first, text, second}), 3), join({first, second})},
            {"only counted ones", stsd(join({first, second}), 1), first},
            {"none", stsd(text, 1), Bytes{}},
            {"most entries", stsd(join({first, many}), 1024), first},
            {"too many entries", stsd(join({first, many}), 1025), std::nullopt},
            {"count too high", stsd(first, 2), std::nullopt},
            {"entry overruns", stsd(join({first, huge}), 2), std::nullopt},
            {"entry below its head", stsd(box("tx3g", Bytes(20), 15), 1), std::nullopt},
            {"no table", {}, std::nullopt},
            {"two tables", join({stsd(first, 1), stsd(first, 1)}), std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TestSource source(box("moov", trak(3, c.tables)));
        Mp4BoxReader reader(source);
        EXPECT_EQ(textsOf(reader, 3), c.expected);
    }
    // Every box claims a gigabyte, which nobody should allocate for a file of a few hundred bytes.
    constexpr int64_t kClaim = 1 << 30;
    Bytes claiming = join({words({0, 1}), box("tx3g", Bytes(100), kClaim)});
    for (const char* type : {"stsd", "stbl", "minf", "mdia"})
        claiming = box(type, claiming, 2 * kClaim);
    claiming = box("trak", join({box("tkhd", words({0, 0, 0, 3})), claiming}), 2 * kClaim);
    TestSource source(box("moov", claiming, 2 * kClaim));
    for (int64_t size : {source.claimedSize, int64_t{-1}, 4 * kClaim}) {
        source.claimedSize = size;
        EXPECT_FALSE(Mp4BoxReader(source).timedTextDescriptions({3, 0})) << size;
    }
}

Bytes trex(int64_t id, int64_t sampleSize) {
    return box("trex", words({0, id, 1, 1, sampleSize, 0}));
}

// A track fragment of one run: the words of tfhd and of trun.
Bytes traf(std::initializer_list<int64_t> header, std::initializer_list<int64_t> run) {
    return box("traf", join({box("tfhd", words(header)), box("trun", words(run))}));
}

Bytes moof(const std::vector<Bytes>& fragments) {
    return box("moof", join(fragments));
}

// Tracks 1 and 2 exist; 9 has defaults without a track.
const Bytes kMovie = box(
        "moov", join({trak(1, ctts({{1, 50}, {1, 0}})), trak(2, {}),
                      box("mvex", join({trex(2, 1000), trex(1, 100), trex(9, 7), trex(1, 5)}))}));

TEST(Mp4BoxReader, fragments_positionsFollowTheBases) {
    constexpr int64_t kBaseIsMoof = 0x20000;
    constexpr int64_t kOff = 0x800;
    const auto start = static_cast<int64_t>(kMovie.size());
    const struct {
        const char* name;
        Bytes fragments;
        uint64_t runSamples;
        std::vector<std::pair<int64_t, int32_t>> placed;
        // clang-format off
    } cases[] = {
            {"fragment's start, default size", moof({traf({kBaseIsMoof, 1}, {0x801, 2, 300, 10, -20})}),
             2, {{start + 300, 10}, {start + 400, -20}}},
            {"64-bit header", largeBox("moof", traf({kBaseIsMoof, 1}, {0x801, 1, 300, 10})),
             1, {{start + 8 + 300, 10}}},
            {"explicit base and size", moof({traf({0x11, 1, 0, 9000, 60}, {0x801, 2, -1000, 1, 2})}),
             2, {{8000, 1}, {8060, 2}}},
            {"behind another track", moof({traf({0, 2}, {0x201, 2, 500, 1000, 2000}),
                                           traf({0, 1}, {kOff, 1, 4})}),
             1, {{start + 3500, 4}}},
            {"not behind no track", moof({traf({0, 9}, {1, 3, 500}), traf({0, 1}, {kOff, 1, 4})}),
             1, {{start, 4}}},
            {"every field", moof({traf({kBaseIsMoof | 0x3A, 1, 1, 1, 77, 0},
                                       {0xF05, 2, 300, 0, 1, 20, 0, 5, 1, 30, 0, 6})}),
             2, {{start + 300, 5}, {start + 320, 6}}},
            {"media in another order", join({moof({traf({1, 1, 0, 9000}, {kOff, 1, 1})}),
                                             moof({traf({1, 1, 0, 8000}, {kOff, 1, 2})})}),
             2, {{8000, 2}, {9000, 1}}},
            {"no offsets, no table", moof({traf({0, 1}, {0, 0xFFFFFFFF})}), 0xFFFFFFFF, {}},
            // To walk 128 of them sample by sample would take minutes.
            {"many without a table", moof(std::vector<Bytes>(128, traf({0, 1}, {0, 0xFFFFFFFF}))),
             128 * uint64_t{0xFFFFFFFF}, {}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto table = tableOf(join({kMovie, c.fragments, box("mdat", {})}));
        ASSERT_TRUE(table);
        EXPECT_EQ(table->runSampleCount, c.runSamples);
        EXPECT_EQ(table->fragmentOffsets.sampleCount(), c.placed.size());
        FragmentOffsets::Lookup lookup(table->fragmentOffsets);
        for (const auto& [position, offset] : c.placed) {
            EXPECT_EQ(lookup.find(position), offset) << position;
            EXPECT_EQ(lookup.find(position - 1), std::nullopt);
        }
    }
    const std::pair<const char*, Bytes> broken[] = {
            {"more samples than the run holds", traf({0, 1}, {kOff, 3, 1, 2})},
            {"far more samples", traf({0, 1}, {kOff, 0xFFFFFFFF, 1, 2})},
            {"table cut", traf({0, 1}, {0x100, 2, 1})},
            {"no defaults", traf({0, 8}, {0, 0})},
            {"no header", box("traf", box("trun", words({0, 1})))},
            {"before the file", traf({0, 1}, {0x801, 1, -99999, 1})},
            {"runs beyond every file", traf({1, 1, 0x7FFFFFFF, 0xFFFFFFFF}, {kOff, 2, 1, 2})},
            {"base beyond every file", traf({1, 1, 0xFFFFFFFF, 0}, {kOff, 1, 1})},
            {"runs that interleave", join({traf({kBaseIsMoof, 1}, {kOff, 3, 1, 2, 3}),
                                           traf({kBaseIsMoof, 1}, {0x801, 1, 50, 4})})},
    };
    for (const auto& [name, fragment] : broken) {
        EXPECT_FALSE(tableOf(join({kMovie, box("moof", fragment)}))) << name;
    }
    const Bytes twins =
            join({box("moov", join({trak(1, {}), trak(1, {}), box("mvex", trex(1, 5))})),
                  moof({traf({0, 1}, {0, 2})})});
    EXPECT_EQ(tableOf(twins, {1, 0})->runSampleCount, 2u);
    EXPECT_EQ(tableOf(twins, {1, 1})->runSampleCount, 0u);
    // Defaults that are cut leave the samples unknown, not the movie.
    const Bytes text = entry("tx3g", 40, 1);
    TestSource cut(box("moov", join({box("mvex", join({trex(1, 5), box("trex", words({0, 2}))})),
                                     trak(1, stsd(text, 1))})));
    Mp4BoxReader reader(cut);
    EXPECT_EQ(textsOf(reader, 1), text);
    EXPECT_FALSE(reader.compositionTable({1, 0}, 10));
}

TEST(Mp4BoxReader, failures_areNotWalkedAgainForEver) {
    const Bytes runs = ctts({{1, 1}, {1, 2}}, 3);
    for (const Bytes& file :
         {box("mdat", {}), box("moov", join({trak(1, {}), box("cmov", {})})),
          box("moov", trak(1, runs)), join({kMovie, moof({traf({0, 8}, {0, 0})})})}) {
        TestSource broken(file);
        Mp4BoxReader reader(broken);
        EXPECT_FALSE(reader.compositionTable({1, 0}, 10));
        const int walked = broken.reads;
        EXPECT_FALSE(reader.compositionTable({1, 0}, 10));
        EXPECT_FALSE(reader.timedTextDescriptions({1, 0}));
        // A track that is known has no descriptions, which takes no reading either.
        EXPECT_EQ(broken.reads, walked);
    }
    // A source may fail for once, in the movie or in a fragment, but not for ever.
    const Bytes file = join({kMovie, moof({traf({0, 1}, {0x801, 1, 0, 1})})});
    const auto size = static_cast<int64_t>(file.size());
    for (const int64_t failFrom : {int64_t{0}, size / 4, size - 8}) {
        for (const int failures : {2, 3}) {
            TestSource source(file);
            source.failFrom = failFrom;
            Mp4BoxReader reader(source);
            for (int i = 0; i < failures; ++i)
                EXPECT_FALSE(reader.compositionTable({1, 0}, 10));
            source.failFrom = INT64_MAX;
            const int walked = source.reads;
            EXPECT_EQ(reader.compositionTable({1, 0}, 10).has_value(), failures < 3) << failFrom;
            EXPECT_EQ(source.reads > walked, failures < 3) << failFrom;
        }
    }
}

// Two questions to a file of all kinds: every source either gets the true answers or none.
TEST(Mp4BoxReader, faultySources_giveTheTrueAnswersOrNone) {
    const Bytes description = entry("tx3g", 5000, 7);
    Bytes longTable = words({0, 20000});
    for (int i = 0; i < 20000; ++i) {
        const Bytes run = words({1, i % 50});
        longTable.insert(longTable.end(), run.begin(), run.end());
    }
    Bytes file = box("moov", join({trak(1, box("ctts", longTable)), trak(2, stsd(description, 1)),
                                   box("mvex", trex(1, 10))}));
    for (int i = 0; i < 20; ++i) {
        file = join({file, moof({traf({0x20000, 1}, {0x801, 2, 100, i, i + 1})}),
                     box("mdat", Bytes(6000))});
    }
    struct Answers {
        std::optional<Bytes> texts;
        std::optional<CompositionTable> table;
    };
    const auto ask = [](TestSource& source) {
        Mp4BoxReader reader(source);
        EXPECT_EQ(source.reads, 0);
        Answers answers;
        answers.texts = textsOf(reader, 2);
        answers.table = reader.compositionTable({1, 0}, 100000);
        return answers;
    };
    const auto expectTrue = [&](const Answers& answers) {
        if (answers.texts) {
            EXPECT_EQ(*answers.texts, description);
        }
        if (answers.table) {
            EXPECT_EQ(answers.table->movieOffsets.size(), 20000u);
            EXPECT_EQ(answers.table->movieOffsets.back(), 19999 % 50);
            EXPECT_EQ(answers.table->runSampleCount, 40u);
        }
        return answers.texts && answers.table;
    };
    TestSource clean(file);
    EXPECT_TRUE(expectTrue(ask(clean)));
    // A jump per fragment, a handful for the long table, and the media is left alone.
    EXPECT_LT(clean.reads, 20 + 20);
    EXPECT_LT(clean.bytesRead, 20000 * 8 + 40 * 4096u);
    for (int failAt = 0; failAt < clean.reads; ++failAt) {
        TestSource source(file);
        source.failAt = failAt;
        EXPECT_FALSE(expectTrue(ask(source))) << failAt;
    }
    TestSource drop(file);
    drop.longest = 7;
    EXPECT_TRUE(expectTrue(ask(drop)));
    TestSource sizeless(file);
    sizeless.claimedSize = -1;
    EXPECT_TRUE(expectTrue(ask(sizeless)));
}

}  // namespace
}  // namespace orvel
