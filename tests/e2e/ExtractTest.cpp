// What the decoder gets: samples at the edges of conversion, and whole streams that must decode to
// the pictures and sounds of their file.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <tuple>

#include "e2e/FormatText.h"
#include "e2e/Opened.h"
#include "plugin/LogCapture.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

using namespace android;

namespace {

// The first sample is `expected`, and the error logged for it, if any, begins so.
void expectFirst(StartedFile& converted, const Sample& expected, const std::string& error = {}) {
    LogCapture log;
    const host::ReadResult read = converted.track->read();
    ASSERT_EQ(read.status, OK);
    const Sample sample = asSample(read.buffer);
    EXPECT_TRUE(sample == expected) << describe(sample) << ", not " << describe(expected);
    std::string errors;
    for (const std::string& line : log.take("FFmpegReader"))
        if (line[0] == 'E') errors += line;
    EXPECT_EQ(error.empty() ? errors : errors.substr(0, error.size()), error);
}

}  // namespace

TEST(Conversion, bufferThatIsOneByteTooSmallGivesAnEmptySampleUnlessItGrows) {
    for (const std::string file : {"mp4_small.mp4", "mp4_hevc_eac3.mp4", "wav_u8.wav",
                                   "aiff_s16.aiff", "aiff_s24.aiff", "mp3_cbr.mp3"}) {
        SCOPED_TRACE(file);
        const Bytes bytes = mediaBytes(file);
        const std::string demuxer = demuxerOf(file);
        Sample sample = StartedFile(bytes, demuxer).expected.at(0);
        const size_t size = sample.data.size();
        StartedFile fits(bytes, demuxer, size);
        expectFirst(fits, sample);
        StartedFile grows(bytes, demuxer, 1);
        grows.group.setMaxBufferSize(SIZE_MAX);
        expectFirst(grows, sample);

        sample.data.clear();
        StartedFile overflows(bytes, demuxer, size - 1);
        const char* line =
                demuxer == "mov" ? "E FFmpegReader: Malformed NAL" : "E FFmpegReader: sample of";
        expectFirst(overflows, sample, line);
    }
}

// Lengths at the edges are the unit tests' business.
TEST(Conversion, malformedUnitsGiveAnEmptySampleWithItsTime) {
    Bytes file = mediaBytes("mp4_small.mp4");
    const std::string size = std::to_string(be32(file, boxType(file, "stsz") + 16));
    // The length of the first unit (ISO/IEC 14496-12, 8.7.5).
    putBe32(file, be32(file, boxType(file, "stco") + 12), 0x80000000);
    StartedFile converted(file, "mov");
    expectFirst(converted, {converted.expected.at(0).timeUs, converted.expected[0].sync, {}},
                "E FFmpegReader: Video is malformed. srcOffset:4, nalSizeLength:4,"
                "                    nalLength:2147483648, is not range[0 : " +
                        size + "]");
}

using Stream = std::tuple<const char*, int, const char*>;  // file, index, suffix of the output

// Checksums of the decoded pictures or of the sound, cut into pieces of 1000 samples because
// containers cut it as they like; 32 bits hold every decoder's samples. What a file says to be no
// part of the sound (edit list, encoder delay) is left in: a decoder behind the plug-in gets it,
// and a bare stream cannot name it.
static std::string decodedFrames(const std::string& path, int stream, const char* options) {
    const std::string command =
            "ffmpeg -nostdin -loglevel error -flags2 +skip_manual " + std::string(options) +
            " -i '" + path + "' -map 0:" + std::to_string(stream) + " -af asetnsamples=1000:p=0" +
            " -c:a pcm_s32le -vsync passthrough -f framemd5 - | sed '/^#/d; s/.*,//'";
    std::string sums(1 << 20, '\0');
    FILE* pipe = popen(command.c_str(), "r");
    sums.resize(std::fread(sums.data(), 1, sums.size(), pipe));
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
    return asTestName(std::get<0>(info.param)) + "_" + std::to_string(std::get<1>(info.param));
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
    EXPECT_GE(std::count(expected.begin(), expected.end(), '\n'), 25);
    EXPECT_EQ(decodedFrames(out, 0, ""), expected);
    std::remove(out.c_str());
}

}  // namespace orvel::test
