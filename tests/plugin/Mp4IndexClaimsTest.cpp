// What boxes claim, however the demuxer's reads cut them.
#include "bytes/Mp4IndexClaims.h"

#include <gtest/gtest.h>

#include "Mp4Boxes.h"

namespace orvel {
namespace {

using namespace test;

constexpr uint64_t kEndless = UINT32_MAX;

Bytes table(const Bytes& handler, const Bytes& boxes) {
    return box("trak", join({box("tkhd", words({0, 0, 0, 1})),
                             box("mdia", join({handler, box("minf", box("stbl", boxes))}))}));
}

TEST(Mp4IndexClaims, areFoundBeforeTheDemuxerSeesThem) {
    const Bytes sound = box("hdlr", join({words({0, 0}), {'s', 'o', 'u', 'n'}}));
    const Bytes picture = box("hdlr", join({words({0, 0}), {'v', 'i', 'd', 'e'}}));
    const Bytes sizes = box("stsz", words({0, 1, 9000}));
    const Bytes ticks = box("stts", words({0, 1, 9000, 1}));
    const Bytes chunks = join({box("stsc", words({0, 2, 1, 5000, 1, 3, 10, 1})),
                               box("stco", words({0, 4, 0, 0, 0, 0}))});
    const Bytes groups = box(
            "sbgp", join({words({1 << 24}), {'s', 'y', 'n', 'c'}, words({0, 2, 20, 1, 700, 2})}));
    const Bytes run = box("trun", words({0, 700}));
    const Bytes fragment = box("moof", box("traf", run));
    const Bytes header = box("tkhd", words({0, 0, 0, 1}));
    const Bytes media = box("mdat", Bytes(3000, 1));
    const struct {
        const char* says;
        Bytes file;
        uint64_t most;  // that one block and what is known by then claim
    } cases[] = {
            {"samples", box("moov", table(picture, sizes)), 9000},
            {"samples of sound", box("moov", table(sound, sizes)), 9000},
            {"ticks of pictures", box("moov", table(picture, join({ticks, sizes}))), 9000},
            {"chunks", box("moov", table(sound, join({ticks, sizes, chunks}))), 2 * 5 + 2 + 4},
            {"the last of two",
             box("moov", table(picture, join({box("stsz", words({0, 1, 5})), sizes}))), 9000},
            {"a fragment behind media", join({media, fragment}), 700},
            {"with a large size", join({media, largeBox("moof", largeBox("traf", run))}), 700},
            {"in a parent that ends before it", join({box("moof", box("traf", run, 16), 24)}), 700},
            {"beside a track without header", join({box("moov", box("trak", {})), fragment}),
             kEndless},
            {"in a parent whose large size says eight",
             box("moov", box("trak", join({header, box("stbl", join({words({0, 8}), sizes}), 1)}))),
             9000},
            {"in a parent whose large size is beyond all numbers",
             box("moof", join({words({0x80000000, 3}), run}), 1), 700},
            {"behind a box whose large size is none",
             box("moof", join({box("skip", words({0, 0}), 1), run})), 0},
            {"before a track in a wrong place",
             box("moov", table(picture, join({sizes, box("trak", header)}))), 9000},
            {"chunks of what is sound by its codec", box("moov", table({}, join({ticks, chunks}))),
             2 * 5 + 2 + 4},
            {"in a hidden movie", box("hoov", join({box("mvhd", {}), table(picture, sizes)})),
             9000},
            {"runs that sync groups unroll",
             box("moov", table(picture, join({ctts({{9000, 0}, {5, 0}}), groups}))), 9005},
            {"the groups themselves", box("moov", table(picture, groups)), 720},
            {"runs that no runs follow",
             box("moov", table(picture, join({ctts({{9000, 0}}), ctts({}), groups}))), 9000},
            {"chunks of the first of two lists",
             box("moov", table(sound, join({ticks, sizes, chunks, box("stsc", words({0, 0}))}))),
             2 * 5 + 2 + 4},
            {"as many chunks as can be named",
             box("moov", table(sound, join({ticks, sizes, box("stco", words({0, UINT32_MAX})),
                                            box("stsc", words({0, 1, 1, 1, 1}))}))),
             kEndless},
            {"encrypted samples", box("moof", box("traf", box("senc", words({0, 700})))), 8400},
            {"fragments of many tracks",
             join({box("moov", join({table(picture, {}), table(sound, {})})), box("moof", {}),
                   box("sidx", words({0, 1, 1, 0, 0, 700})), box("moof", {})}),
             2 * 702},
            {"an index that is its own successor", box("mfra", box("tfra", words({0, 1}), 0)),
             kEndless},
            {"key samples", box("moov", table(picture, box("stss", words({0, 700})))), 700},
            {"keys of metadata",
             box("moov", box("meta", join({words({0}), sound, box("keys", words({0, 700}))}))),
             700},
            {"cut by the end of the file", Bytes(run.begin(), run.end() - 1), 700 & 0xFFFFFF00},
            {"media", box("mdat", fragment), 0},
    };
    for (const auto& one : cases) {
        for (const size_t length : {size_t{1}, size_t{7}, size_t{100}, one.file.size()}) {
            SCOPED_TRACE(testing::Message() << one.says << " in blocks of " << length);
            TestSource source(one.file);
            Mp4IndexClaims claims(source);
            uint64_t most = 0;
            for (size_t at = 0; at < one.file.size(); at += length) {
                const size_t size = std::min(length, one.file.size() - at);
                most = std::max(most,
                                claims.inBlock(static_cast<int64_t>(at), &one.file[at], size));
            }
            EXPECT_EQ(std::min(most, kEndless), one.most);
        }
    }
}

// The demuxer jumps to the next box, to a fragment, and to samples between them.
TEST(Mp4IndexClaims, areFoundWhereTheDemuxerJumpsTo) {
    const Bytes fragment = box("moof", box("traf", box("trun", words({0, 700}))));
    const Bytes samples(64, 1);
    TestSource source({});
    Mp4IndexClaims claims(source);
    EXPECT_EQ(claims.inBlock(0, fragment.data(), 8), 0u);
    EXPECT_EQ(claims.inBlock(5000, samples.data(), samples.size()), 0u);
    EXPECT_EQ(claims.inBlock(1000, fragment.data(), fragment.size()), 700u);
    EXPECT_EQ(claims.inBlock(900, samples.data(), 64), 0u);
    EXPECT_EQ(claims.inBlock(0, fragment.data(), fragment.size()), 700u);
    // A key that it reads to its place; what follows in the same box looks like one.
    const Bytes key = join({box("pssh", Bytes(100), 120), words({0}), fragment});
    EXPECT_EQ(claims.inBlock(9000, key.data(), 50), 0u);
    claims.passOver(9050, 58);
    EXPECT_EQ(claims.inBlock(9108, &key[108], key.size() - 108), 700u);
}

}  // namespace
}  // namespace orvel
