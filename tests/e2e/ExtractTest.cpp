// What the decoder gets: samples at the edges of conversion, and whole streams that must decode to
// the pictures and sounds of their file.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <tuple>

#include "e2e/FormatText.h"
#include "e2e/Opened.h"
#include "plugin/LogCapture.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

using namespace android;

namespace {

// The first track of the bytes, started, and what libavformat and the plain rules make of it.
struct Converted {
    host::MemorySource source;
    std::vector<Sample> expected;
    host::BufferGroup group;
    std::optional<host::Extractor> extractor;
    std::optional<host::Track> track;

    Converted(const Bytes& bytes, const std::string& demuxer, size_t maxBufferSize = SIZE_MAX)
        : source(bytes), expected(Oracle::read(source, demuxer).streams.at(0).samples) {
        group.setMaxBufferSize(maxBufferSize);
        extractor = open(source);
        track = extractor.value().track(0);
        EXPECT_EQ(track.value().start(group), OK);
    }
};

// The first sample is `expected`, and the errors logged for it are these.
void expectFirst(Converted& converted, const Sample& expected, const Lines& errors) {
    LogCapture log;
    const host::ReadResult read = converted.track->read();
    ASSERT_EQ(read.status, OK);
    const Sample sample = asSample(read.buffer);
    EXPECT_TRUE(sample == expected) << describe(sample) << ", not " << describe(expected);
    Lines lines;
    for (const std::string& line : log.take("FFmpegReader"))
        if (line[0] == 'E') lines.push_back(line);
    EXPECT_EQ(lines, errors);
}

// Place and size of the first sample, ISO/IEC 14496-12, 8.7.5 and 8.7.3.2.
size_t firstSample(const Bytes& file) {
    return be32(file, boxType(file, "stco") + 12);
}
uint32_t firstSize(const Bytes& file) {
    return be32(file, boxType(file, "stsz") + 16);
}

}  // namespace

TEST(Conversion, bufferThatIsOneByteTooSmallGivesAnEmptySampleUnlessItGrows) {
    for (const std::string file : {"mp4_small.mp4", "mp4_hevc_eac3.mp4", "wav_u8.wav",
                                   "aiff_s16.aiff", "aiff_s24.aiff", "mp3_cbr.mp3"}) {
        SCOPED_TRACE(file);
        const Bytes bytes = mediaBytes(file);
        const std::string demuxer = demuxerOf(file);
        Sample sample = Converted(bytes, demuxer).expected.at(0);
        const size_t size = sample.data.size();
        Converted fits(bytes, demuxer, size);
        expectFirst(fits, sample, {});
        Converted grows(bytes, demuxer, 1);
        grows.group.setMaxBufferSize(SIZE_MAX);
        expectFirst(grows, sample, {});

        const Bytes code = {0, 0, 0, 1};
        const auto unit =
                std::find_end(sample.data.begin(), sample.data.end(), code.begin(), code.end());
        const std::string at = std::to_string(unit - sample.data.begin());
        const std::string needed = std::to_string(size), room = std::to_string(size - 1);
        sample.data.clear();
        Converted overflows(bytes, demuxer, size - 1);
        expectFirst(overflows, sample,
                    {demuxer == "mov" ? "E FFmpegReader: Malformed NAL : " + at + " " + room
                                      : "E FFmpegReader: sample of " + needed +
                                                " bytes exceeds the buffer of " + room + " bytes"});
    }
}

TEST(Conversion, malformedUnitsGiveAnEmptySampleWithItsTime) {
    Bytes file = mediaBytes("mp4_small.mp4");
    const size_t at = firstSample(file);
    const uint32_t size = firstSize(file);
    const struct {
        uint32_t first, last;  // four bytes each of the sample
        uint32_t srcOffset, nalLength;
    } cases[] = {{size - 3, 1, 4, size - 3},
                 {0x80000000, 1, 4, 0x80000000},
                 {size - 6, 1, size - 2, 0},
                 {size - 8, 0, size, 0},
                 {size - 8, 1, size, 1}};
    for (const auto& c : cases) {
        putBe32(file, at, c.first);
        putBe32(file, at + size - 4, c.last);
        Converted converted(file, "mov");
        expectFirst(
                converted, {converted.expected.at(0).timeUs, converted.expected[0].sync, {}},
                {"E FFmpegReader: Video is malformed. srcOffset:" + std::to_string(c.srcOffset) +
                 ", nalSizeLength:4,                    " + "nalLength:" +
                 std::to_string(c.nalLength) + ", is not range[0 : " + std::to_string(size) + "]"});
    }
}

// The configuration record says another width (ISO/IEC 14496-15, 5.3.3.1 and 8.3.3.1), and the
// first sample is cut into units of about 100 bytes behind lengths of that width.
TEST(Conversion, lengthsOfEveryWidthBecomeStartCodes) {
    for (const auto& [name, record, field] :
         {std::tuple("mp4_small.mp4", "avcC", 8), {"mp4_hevc_eac3.mp4", "hvcC", 25}}) {
        for (size_t width = 1; width <= 4; ++width) {
            Bytes file = mediaBytes(name);
            uint8_t& widthField = file[boxType(file, record) + field];
            widthField = static_cast<uint8_t>((widthField & ~3u) | (width - 1));
            Bytes expected;
            auto at = file.begin() + firstSample(file);
            for (size_t left = firstSize(file); left > 0;) {
                const size_t unit = left < 120 ? left - width : 100;
                std::fill_n(at, width, 0);
                at[width - 1] = static_cast<uint8_t>(unit);
                expected.insert(expected.end(), {0, 0, 0, 1});
                expected.insert(expected.end(), at + width, at + width + unit);
                at += width + unit;
                left -= width + unit;
            }
            Converted converted(file, "mov");
            converted.expected.at(0).data = expected;
            expectFirst(converted, converted.expected[0], {});
        }
    }
}

struct Stream {
    const char* file;
    int index;  // of the track, too
    const char* suffix;
};
void PrintTo(const Stream& stream, std::ostream* out) {
    *out << stream.file << ", stream " << stream.index;
}

// Checksums of the decoded pictures or of the sound, cut into pieces of 1000 samples because
// containers cut it as they like; 32 bits hold every decoder's samples. What a file says to be no
// part of the sound (edit list, encoder delay) is left in: a decoder behind the plug-in gets it,
// and a bare stream cannot name it.
static std::vector<std::string> decodedFrames(const std::string& path, int stream,
                                              const char* options) {
    const std::string command =
            "ffmpeg -nostdin -loglevel error -flags2 +skip_manual " + std::string(options) +
            " -i '" + path + "' -map 0:" + std::to_string(stream) + " -af asetnsamples=1000:p=0" +
            " -c:a pcm_s32le -vsync passthrough -f framemd5 -";
    std::vector<std::string> sums;
    FILE* pipe = popen(command.c_str(), "r");
    for (char line[512]; std::fgets(line, sizeof(line), pipe);) {
        if (line[0] != '#') sums.push_back(std::strrchr(line, ',') + 1);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return sums;
}

// clang-format off
static const Stream kStreams[] = {
    {"mp4_h264_eac3.mp4", 0, "h264"}, {"mkv_h264_eac3.mkv", 0, "h264"},
    {"flv_h264_aac.flv", 0, "h264"}, {"avi_h264_ac3.avi", 0, "h264"},
    {"mp4_hevc_eac3.mp4", 0, "hevc"}, {"mkv_hevc_dts.mkv", 0, "hevc"},
    {"wav_u8.wav", 0, "wav"}, {"wav_s16.wav", 0, "wav"}, {"wav_s24.wav", 0, "wav"},
    {"aiff_s8.aiff", 0, "wav"}, {"aiff_s16.aiff", 0, "wav"}, {"aiff_s24.aiff", 0, "wav"},
    {"flv_h264_aac.flv", 1, "aac"}, {"mp3_vbr.mp3", 0, "mp3"}, {"avi_mpeg4_mp3.avi", 1, "mp3"},
    {"ac3.ac3", 0, "ac3"}, {"rm_rv20_ac3.rm", 1, "ac3"},
    {"eac3.eac3", 0, "eac3"}, {"mp4_h264_eac3.mp4", 1, "eac3"},
    {"dts.dts", 0, "dts"}, {"mkv_hevc_dts.mkv", 1, "dts"},
    {"avi_mpeg4_mp3.avi", 0, "m4v"}, {"mov_pcm_eac3.mov", 0, "m4v"},
    {"mkv_vp9_eac3.mkv", 0, "ivf"},
};
// clang-format on

class Extracted : public ::testing::TestWithParam<Stream> {};
INSTANTIATE_TEST_SUITE_P(Media, Extracted, ::testing::ValuesIn(kStreams), [](const auto& info) {
    return asTestName(info.param.file) + "_" + std::to_string(info.param.index);
});

TEST_P(Extracted, streamDecodesToTheFramesOfItsFile) {
    const auto& [file, index, suffix] = GetParam();
    const std::string out =
            ::testing::TempDir() + "extracted" + std::to_string(getpid()) + "." + suffix;
    const std::string command = ORVEL_PROBE_PATH " --plugin " ORVEL_PLUGIN_PATH " --extract " +
                                std::to_string(index) + "='" + out + "' '" + mediaPath(file) +
                                "' >/dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    const bool isMov = demuxerOf(file) == "mov";
    const auto expected = decodedFrames(mediaPath(file), index, isMov ? "-ignore_editlist 1" : "");
    EXPECT_GE(expected.size(), 25u);
    EXPECT_EQ(decodedFrames(out, 0, ""), expected);
    std::remove(out.c_str());
}

}  // namespace orvel::test
