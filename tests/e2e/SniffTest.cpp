// What the plug-in takes and what it declines, what it says in the log meanwhile, and what the
// formats of a taken file say.

#include <gtest/gtest.h>

#include "e2e/Opened.h"
#include "framework/CountingSource.h"
#include "plugin/LogCapture.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

using namespace android;

namespace {

// Offers the bytes; a file that is taken is created and let go, as a framework would.
bool isTaken(const Bytes& bytes) {
    host::MemorySource source(bytes);
    host::SniffResult result = plugin().sniff(source);
    if (!result.taken()) return false;
    EXPECT_FLOAT_EQ(result.confidence(), 0.9f);
    plugin().create(source, std::move(result));
    return true;
}

constexpr uint32_t kMp3 = 0x10;
constexpr uint32_t kDts = 0x80;
std::string maskOf(uint32_t flags) {
    return std::to_string(flags);
}

}  // namespace

class TakenFile : public ::testing::TestWithParam<MediaFile> {};

INSTANTIATE_TEST_SUITE_P(Media, TakenFile, ::testing::ValuesIn(mediaFiles()),
                         [](const auto& info) { return asTestName(info.param.name); });

TEST_P(TakenFile, isTakenOnlyWhenItsContainerIsEnabled) {
    const Bytes bytes = GetParam().bytes();
    const uint32_t flag = GetParam().flag;
    {
        // DTS is recognised only in the 128 KiB that a row with tags (here MP3) asks for.
        const EnabledContainers own(maskOf(flag == kDts ? flag | kMp3 : flag));
        EXPECT_TRUE(isTaken(bytes));
    }
    // A container that carries DTS is recognised as DTS.
    const EnabledContainers others(maskOf(32767 & ~(flag | kDts)));
    EXPECT_FALSE(isTaken(bytes));
}

TEST_P(TakenFile, hasTheTracksOfItsStreams) {
    const MediaFile& file = GetParam();
    host::MemorySource source(file.bytes());
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    EXPECT_EQ(extractor->name(), "OrvelExtractor2");
    ASSERT_EQ(extractor->countTracks(), file.tracks.size());
    EXPECT_FALSE(extractor->track(file.tracks.size()));
    for (size_t i = 0; i < file.tracks.size(); ++i) {
        host::Format format, own;
        ASSERT_EQ(extractor->trackFormat(i, 0, &format), OK);
        EXPECT_EQ(format.string("mime"), file.tracks[i].mime);
        EXPECT_EQ(format.string("file-format"), file.container);
        EXPECT_GT(format.int64("durationUs").value_or(0), 0);
        EXPECT_EQ(format.int64("thumbnail-time"), std::nullopt);
        ASSERT_EQ(extractor->track(i)->format(&own), OK);
        EXPECT_EQ(own.toString(), format.toString());
    }
    host::Format untouched;
    EXPECT_NE(extractor->trackFormat(file.tracks.size(), 0, &untouched), OK);
    EXPECT_TRUE(untouched.entries().empty());
}

static const char kLowScore[] = "W finalScore is low, can not handle this file";
struct Declined {
    const char* name;
    Bytes (*make)();
    const char* mask = "32767";
    const char* lastLine = kLowScore;  // of the container object, before the entry's own
};
void PrintTo(const Declined& declined, std::ostream* out) {
    *out << declined.name;
}

class DeclinedFile : public ::testing::TestWithParam<Declined> {};

// The main audio decides, and the log ends with the container.
static const char kMatroska[] = "I mime:video/x-matroska, mediaFlag:0x4, finalScore:100";
static const char kMp4[] = "I mime:video/mp4, mediaFlag:0x1, finalScore:100";
static const Declined kDeclined[] = {
        {"MainAudioOfMatroskaIsAac", [] { return mediaBytes("mkv_h264_aac.mkv"); }, "4", kMatroska},
        {"MainAudioOfMp4IsAac", [] { return mediaBytes("mp4_aac_main.mp4"); }, "1", kMp4},
        {"OnlyAudioOfMp4IsAac", [] { return mediaBytes("mp4_aac.m4a"); }, "1", kMp4},
        {"MainAudioIsUnknown",
         [] {
             Bytes file = mediaBytes("mkv_h264_aac.mkv");
             replace(file, {'A', '_', 'A', 'A', 'C'}, {'A', '_', 'X', 'Y', 'Z'});
             return file;
         },
         "4", kMatroska},
        // Six frames of MP3, and then nothing.
        {"ScoreOf25", [] { return truncated(mediaBytes("mp3_cbr.mp3"), 1253) + Bytes(1000); }},
        {"NothingEnabled", [] { return mediaBytes("wav_s16.wav"); }, "0"},
        {"ShorterThan1024Bytes", [] { return truncated(mediaBytes("wav_s16.wav"), 1023); }},
        {"Zeros", [] { return Bytes(200000); }},
        {"Id3ChainOf3MiB", [] { return id3Tag(3145728 - 10) + mediaBytes("mp3_cbr.mp3"); }},
};
INSTANTIATE_TEST_SUITE_P(Files, DeclinedFile, ::testing::ValuesIn(kDeclined),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(DeclinedFile, isDeclinedWithItsReasonInTheLog) {
    const EnabledContainers mask(GetParam().mask);
    LogCapture log;
    EXPECT_FALSE(isTaken(GetParam().make()));
    std::string last;
    for (const std::string& line : log.take("FFmpegObject"))
        if (line[0] != 'V') last = line.substr(0, 2) + line.substr(line.find(": ") + 2);
    EXPECT_EQ(last, GetParam().lastLine);
}

TEST(Sniff, costsTwoReadsAndTheSearchForTags) {
    for (const char* name : {"wav_s24.wav", "dsf.dsf"}) {
        host::MemorySource bytes(mediaFile(name).bytes());
        host::CountingSource source(bytes);
        host::SniffResult result = plugin().sniff(source);
        ASSERT_TRUE(result.taken());
        // 1 KiB, 128 KiB, and the ten bytes that each of the five rows with tags looks at first.
        EXPECT_LE(source.counts().calls, 7u) << name;
        EXPECT_LE(source.counts().bytes, 1024u + 131072u + 5 * 10u) << name;
        plugin().create(source, std::move(result));
    }
}

}  // namespace orvel::test
