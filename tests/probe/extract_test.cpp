// Files written from samples, against bytes that were worked out by hand: what a decoder would not
// notice, and what is refused.
#include <gtest/gtest.h>

#include "probe_command.h"

namespace orvel::probe::test {
namespace {

std::string bytes(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values)
        text += static_cast<char>(value);
    return text;
}

TEST(Extract, forms_haveTheHeadersThatReadersExpect) {
    struct Case {
        const char* name;
        std::string track;
        std::string expected;
        const char* error;  // of the page; null: exit code 0
    };
    const std::string avcRecord = "0164001fffe1000367640a01000268ee";
    const std::string sps = bytes({0, 0, 0, 1, 0x67, 0x64, 0x0A}),
                      pps = bytes({0, 0, 0, 1, 0x68, 0xEE});
    const Case cases[] = {
            {"avcLengthsLeftAlone",
             "format str mime video/avc\nformat buf raw-codec-specific-data 0164001ffd" +
                     avcRecord.substr(10) + "\nsample 0 1 00026588000141\n",
             sps + pps + bytes({0, 0, 0, 1, 0x65, 0x88, 0, 0, 0, 1, 0x41}), nullptr},
            {"avcRecordCutOff",
             "format str mime video/avc\nformat buf csd-avc 0164001fffe10003\nsample 0 1 00\n", "",
             "configuration record is cut off"},
            {"wav",
             "format str mime audio/raw\nformat i32 sample-rate 48000\nformat i32 channel-count 2\n"
             "format i32 bits-per-sample 24\nformat i32 pcm-encoding 100\nsample 0 1 "
             "010203040506\nsample 9 1 07\n",
             "RIFF" + bytes({44, 0, 0, 0}) + "WAVEfmt " +
                     bytes({16, 0, 0, 0,    1, 0, 2, 0, 0x80, 0xBB,
                            0,  0, 0, 0x65, 4, 0, 6, 0, 24,   0}) +
                     "data" + bytes({7, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 0}),
             nullptr},
            {"wavWithoutRate", "format str mime audio/raw\nsample 0 1 00\n", "",
             "WAV cannot hold 0 Hz"},
            // AAC LC, 44100 Hz, stereo: 7 + 3 bytes.
            {"adts",
             "format str mime audio/mp4a-latm\nformat buf aac-codec-specific-data 1210\nsample 0 1 "
             "aabbcc\n",
             bytes({0xFF, 0xF1, 0x50, 0x80, 0x01, 0x5F, 0xFC, 0xAA, 0xBB, 0xCC}), nullptr},
            // HE-AAC announced explicitly: object type 5, 22050 Hz core, mono, 44100 Hz, core LC.
            {"adtsOfSbr",
             "format str mime audio/mp4a-latm\nformat buf aac-codec-specific-data 2b8a08\nsample 0 "
             "1 aa\n",
             bytes({0xFF, 0xF1, 0x5C, 0x40, 0x01, 0x1F, 0xFC, 0xAA}), nullptr},
            // 24000 Hz spelled out in 24 bits.
            {"adtsOfSpelledRate",
             "format str mime audio/mp4a-latm\nformat buf aac-codec-specific-data "
             "17802ee010\nsample 0 1 aa\n",
             bytes({0xFF, 0xF1, 0x58, 0x80, 0x01, 0x1F, 0xFC, 0xAA}), nullptr},
            {"adtsNotForLd",
             "format str mime audio/mp4a-latm\nformat buf aac-codec-specific-data ba10\nsample 0 1 "
             "aa\n",
             "", "ADTS cannot carry audio object type 23"},
            {"adtsNotFor960",
             "format str mime audio/mp4a-latm\nformat buf aac-codec-specific-data 1214\nsample 0 1 "
             "aa\n",
             "", "ADTS cannot carry frames of 960 samples"},
            {"adtsNotForPce",
             "format str mime audio/mp4a-latm\nformat buf aac-codec-specific-data 1200\nsample 0 1 "
             "aa\n",
             "", "program config element"},
            {"adtsCutOff",
             "format str mime audio/mp4a-latm\nformat buf aac-codec-specific-data 12\nsample 0 1 "
             "aa\n",
             "", "AudioSpecificConfig is cut off"},
            {"ivf",
             "format str mime video/x-vnd.on2.vp9\nformat i32 width 320\nformat i32 height "
             "240\nsample 40000 1 aabb\n",
             "DKIF" + bytes({0, 0, 32, 0}) + "VP90" +
                     bytes({0x40, 1, 0xF0, 0, 0x40, 0x42, 0x0F, 0, 1, 0, 0, 0}) +
                     bytes({1, 0,    0,    0, 0, 0, 0, 0, 2, 0,    0,
                            0, 0x40, 0x9C, 0, 0, 0, 0, 0, 0, 0xAA, 0xBB}),
             nullptr},
    };
    const Workspace work;
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        // The track before it shows that only what is written out is read.
        const std::string file =
                work.file(one.name, "FAKE\ntrack\nsample 0 1 ff\ntrack\n" + one.track);
        const std::string out = std::string(one.name) + ".out";
        const RunResult run = work.probe({"--extract", "1=" + work.path(out), file});
        EXPECT_EQ(run.exitCode, one.error ? 2 : 0) << run.out;
        if (one.error) {
            EXPECT_NE(run.out.find(one.error), std::string::npos) << run.out;
        } else {
            EXPECT_EQ(testing::PrintToString(work.content(out)),
                      testing::PrintToString(one.expected));
            EXPECT_EQ(run.out.find("track 0"), std::string::npos) << run.out;
        }
    }
}

TEST(Extract, coverAndSeveralTracks_areWrittenInOneRun) {
    const Workspace work;
    const std::string file = work.file(
            "f",
            "FAKE\nformat buf albumart 89504e470d\ntrack\nformat str mime a/b\nsample 0 1 01\n"
            "track\nformat str mime a/b\nsample 0 1 02\nsample 5 1 03\n");
    const RunResult run =
            work.probe({"--cover", work.path("cover"), "--extract", "0=" + work.path("t0"),
                        "--extract", "1=" + work.path("t1"), "--limit", "1", file});
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(work.content("cover"), "\x89PNG\r");
    EXPECT_EQ(work.content("t0"), "\x01");
    EXPECT_EQ(work.content("t1"), "\x02");
    EXPECT_EQ(work.probe({"--extract", "0=" + work.path("no/such/folder"), file}).exitCode, 2);
    EXPECT_EQ(work.probe({"--extract", "5=" + work.path("t5"), file}).exitCode, 2);
}

}  // namespace
}  // namespace orvel::probe::test
