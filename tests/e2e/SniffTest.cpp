// What the plug-in takes and what it declines, what it says in the log meanwhile, and what the
// formats of a taken file say.

#include <android/log.h>
#include <gtest/gtest.h>
#include <media/stagefright/foundation/MediaDefs.h>
#include <standin/log_control.h>

#include <cstdio>
#include <cstring>
#include <mutex>

#include "e2e/Opened.h"
#include "framework/CountingSource.h"
#include "framework/FaultSource.h"

namespace orvel::test {

using namespace android;

namespace {

// The plug-in's own log lines of a scope, debug priority and above, as "priority tag: text".
class LogLines {
  public:
    LogLines() { standin::setLogHook(hook, this); }
    ~LogLines() { standin::setLogHook(nullptr, nullptr); }

    std::vector<std::string> get() const {
        const std::lock_guard<std::mutex> lock(mLock);
        return mLines;
    }

  private:
    static void hook(void* cookie, int priority, const char* tag, const char* text) {
        static constexpr const char* kTags[] = {"Parser2Creater", "OrvelExtractor2", "FFmpegObject",
                                                "FFmpegIO", "FFmpegReader"};
        if (priority < ANDROID_LOG_DEBUG) return;
        for (const char* own : kTags) {
            if (std::strcmp(tag, own) != 0) continue;
            LogLines* self = static_cast<LogLines*>(cookie);
            const std::lock_guard<std::mutex> lock(self->mLock);
            self->mLines.push_back(std::string(1, "??VDIWEFS"[priority]) + " " + tag + ": " + text);
        }
    }

    mutable std::mutex mLock;
    std::vector<std::string> mLines;  // guarded by mLock
};

struct Sniffed {
    bool taken;
    float confidence;
    std::vector<std::string> log;
};

// Offers the bytes; a file that is taken is created and let go, as a framework would.
Sniffed sniff(const Bytes& bytes) {
    host::MemorySource source(bytes);
    plugin();
    LogLines lines;
    host::SniffResult result = plugin().sniff(source);
    const Sniffed sniffed{result.taken(), result.confidence(), lines.get()};
    if (result.taken()) plugin().create(source, std::move(result));
    return sniffed;
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
        const Sniffed sniffed = sniff(bytes);
        EXPECT_TRUE(sniffed.taken);
        EXPECT_FLOAT_EQ(sniffed.confidence, 0.9f);
    }
    // A container that carries DTS is recognised as DTS.
    const EnabledContainers others(maskOf(32767 & ~(flag | kDts)));
    EXPECT_FALSE(sniff(bytes).taken);
}

TEST_P(TakenFile, hasTheTracksOfItsStreams) {
    const MediaFile& file = GetParam();
    host::MemorySource source(file.bytes());
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    EXPECT_EQ(extractor->name(), "OrvelExtractor2");
    EXPECT_EQ(extractor->flags(), 15u);
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

struct Declined {
    const char* name;
    Bytes (*make)();
    const char* mask;
    const char* lastLine;  // of the container object, before the entry's own
};
void PrintTo(const Declined& declined, std::ostream* out) {
    *out << declined.name;
}

class DeclinedFile : public ::testing::TestWithParam<Declined> {};

static const char kLowScore[] = "W FFmpegObject: finalScore is low, can not handle this file";
static const Declined kDeclined[] = {
        {"MainAudioOfMatroskaIsAac", [] { return mediaBytes("mkv_h264_aac.mkv"); }, "32767",
         "I FFmpegObject: mime:%s, mediaFlag:0x4, finalScore:100"},
        {"MainAudioOfMp4IsAac", [] { return mediaBytes("mp4_aac_main.mp4"); }, "32767",
         "I FFmpegObject: mime:%s, mediaFlag:0x1, finalScore:100"},
        {"OnlyAudioOfMp4IsAac", [] { return mediaBytes("mp4_aac.m4a"); }, "32767",
         "I FFmpegObject: mime:%s, mediaFlag:0x1, finalScore:100"},
        {"NothingEnabled", [] { return mediaBytes("wav_s16.wav"); }, "0", kLowScore},
        {"MaskIsNoDecimalNumber", [] { return mediaBytes("wav_s16.wav"); }, "0x4000", kLowScore},
        {"ShorterThan1024Bytes", [] { return truncated(mediaBytes("wav_s16.wav"), 1023); }, "32767",
         kLowScore},
        {"Empty", [] { return Bytes(); }, "32767", kLowScore},
        {"Zeros", [] { return Bytes(200000); }, "32767", kLowScore},
        {"Id3ChainOf3MiB", [] { return id3Tag(3145728 - 10) + mediaBytes("mp3_cbr.mp3"); }, "32767",
         kLowScore},
};
INSTANTIATE_TEST_SUITE_P(Files, DeclinedFile, ::testing::ValuesIn(kDeclined),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(DeclinedFile, isDeclinedWithItsReasonInTheLog) {
    const EnabledContainers mask(GetParam().mask);
    const Sniffed sniffed = sniff(GetParam().make());
    EXPECT_FALSE(sniffed.taken);
    ASSERT_GE(sniffed.log.size(), 2u);
    char expected[200];
    const bool isMp4 = std::strstr(GetParam().lastLine, "0x1,") != nullptr;
    std::snprintf(expected, sizeof(expected), GetParam().lastLine,
                  isMp4 ? MEDIA_MIMETYPE_CONTAINER_MPEG4 : MEDIA_MIMETYPE_CONTAINER_MATROSKA);
    EXPECT_EQ(sniffed.log[sniffed.log.size() - 2], expected);
    EXPECT_EQ(sniffed.log.back(),
              "W Parser2Creater: ffmpeg probe failed, then will try qcom parser");
}

TEST(Sniff, mp3BehindTagsWritesItsLines) {
    const EnabledContainers mask("16");
    const std::vector<std::string> expected = {
            "D FFmpegObject: skip id3 tag length 4216",
            std::string("I FFmpegObject: mime:") + MEDIA_MIMETYPE_AUDIO_MPEG +
                    ", mediaFlag:0x10, finalScore:51",
            std::string("I FFmpegObject: sniff successful, mime:") + MEDIA_MIMETYPE_AUDIO_MPEG +
                    " !!!"};
    EXPECT_EQ(sniff(mediaFile("mp3_two_tags.mp3").bytes()).log, expected);
}

TEST(Sniff, mp4WithEac3SaysWhyItIsTaken) {
    const EnabledContainers mask("1");
    const std::vector<std::string> log = sniff(mediaBytes("mp4_small.mp4")).log;
    ASSERT_GE(log.size(), 2u);
    EXPECT_EQ(log[log.size() - 2],
              std::string("I FFmpegObject: special audio, mimetype:") + MEDIA_MIMETYPE_AUDIO_EAC3);
    EXPECT_EQ(log.back(), std::string("I FFmpegObject: sniff successful, mime:") +
                                  MEDIA_MIMETYPE_CONTAINER_MPEG4 + " !!!");
}

TEST(Sniff, shortReadSaysHowShort) {
    const EnabledContainers mask("16384");
    const std::vector<std::string> log = sniff(Bytes(100)).log;
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.front(), std::string("W FFmpegObject: Wanna read 1024 bytes, but got 100 bytes, "
                                       "at least we") +
                                   std::string(25, ' ') +
                                   "need 1024 bytes. Resource itself issue, give up with mime is " +
                                   MEDIA_MIMETYPE_CONTAINER_WAV);
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

TEST(Sniff, readErrorsNeverDoMoreThanDecline) {
    for (const char* name : {"mp3_cover.mp3", "mp4_small.mp4", "mkv_h264_eac3.mkv", "dts.dts"}) {
        const Bytes bytes = mediaBytes(name);
        for (const auto repeat : {host::Fault::Repeat::Once, host::Fault::Repeat::ForGood}) {
            for (uint64_t call = 1;; ++call) {
                host::MemorySource whole(bytes);
                host::FaultSource source(whole, host::Fault{{}, call, repeat});
                host::SniffResult result = plugin().sniff(source);
                const bool met = source.faults() > 0;
                if (call == 1 || !met) {
                    EXPECT_EQ(result.taken(), !met) << name << " call " << call;
                }
                if (result.taken()) plugin().create(source, std::move(result));
                if (!met) break;
            }
        }
    }
}

}  // namespace orvel::test
