// What the command says of real files: what they are, what is not well, and why.
#include <gtest/gtest.h>

#include <algorithm>

#include "ProbeCommand.h"
#include "support/Mp4Edit.h"
#include "support/SyntheticFiles.h"

namespace orvel::probe::test {
namespace {

const std::string kMedia = orvel::test::mediaPath("");

TEST(File, thatIsNotWellSaysSoInEveryForm) {
    const Workspace work;
    const auto part = [&work](const std::string& name, size_t percent) {
        const auto bytes = orvel::test::mediaBytes(name);
        return work.file(name,
                         {bytes.begin(),
                          bytes.begin() + static_cast<ptrdiff_t>(bytes.size() * percent / 100)});
    };
    // clang-format off
    const std::pair<Arguments, std::string> cases[] = {
        {{part("mp4_h264_eac3.mp4", 20)}, "no-track cut-off "},
        {{kMedia + "asf_wmv2_wma.wmv"}, "no-track skipped-stream skipped-stream "},
        {{part("mp4_faststart.mp4", 50)}, "cut-off ends-early "},
        {{part("wav_s16.wav", 50)}, "cut-off "},
        {{part("mkv_h264_eac3.mkv", 50)}, "cut-off ends-early ends-early "},
        {{kMedia + "wav_s16.wav", "--source", "error-at=140000"}, "ends-early source-error "},
        {{kMedia + "mp4_late_audio.mp4"}, ""}};
    // clang-format on
    for (const auto& [arguments, kinds] : cases) {
        SCOPED_TRACE(arguments[0]);
        for (const char* form : {"--json", "--pages", "--table"}) {
            Arguments all = arguments;
            all.insert(all.end(), {"--read", form});
            const RunResult run = work.real(all);
            EXPECT_EQ(run.exitCode, kinds.empty() ? 0 : 1) << run.out;
            EXPECT_EQ(run.says("warn"), !kinds.empty()) << run.out;
            if (form[2] != 'j') continue;
            std::string found;
            const Json warnings = run.object().value("warnings", Json::array());
            for (const Json& warning : warnings)
                found += warning["kind"].get<std::string>() + " ";
            EXPECT_EQ(found, kinds) << run.out;
        }
    }
}

TEST(File, reasonNamesWhatDecidedAndWhatTheFileIs) {
    const Workspace work;
    std::string ogg;  // pages of one byte each (RFC 3533, section 6)
    for (int i = 0; i < 100; i++)
        ogg += "OggS" + std::string(1, '\0') + (i ? '\0' : '\2') + std::string(20, '\0') + "\1\1x";
    const std::string only = "; the plug-in takes Matroska only for DTS or E-AC-3";
    auto logged = [&work, i = 0](const std::string& line) mutable {
        const std::string script =
                "FAKE\n" + line +
                "\nlog 4 mime:video/x-matroska, mediaFlag:0x4, finalScore:100\non sniff decline\n";
        return Arguments{work.file("f" + std::to_string(i++), script), "--plugin", FAKE_PLUGIN};
    };
    // clang-format off
    const std::pair<Arguments, std::string> cases[] = {
        {{kMedia + "mkv_h264_aac.mkv"}, "Matroska whose main audio is AAC" + only},
        {{kMedia + "mkv_h264_eac3.mkv"}, "Matroska whose main audio is E-AC-3 (probe score 100)"},
        {{kMedia + "wav_s16.wav"}, "WAV by its first bytes (probe score 99, more than 25 is needed)"},
        {{work.file("ogg", ogg)}, "Ogg, which the plug-in does not offer"},
        {{kMedia + "mkv_h264_eac3.mkv", "--property", "mm.enable.orvel_parser=16"},
         "the property enables no container that fits: Matroska is bit 4; mm.enable.orvel_parser=20 takes it"},
        {{kMedia + "wav_s24.wav", "--source", "short=900"}, "the source gave 900 bytes at offset 0, a probe needs 1024 in one read"},
        {{kMedia + "wav_s16.wav", "--source", "error-at=0"}, "the source could not be read: ERROR_IO (-1004) at offset 0"},
        {logged("log 2 main audio:none"), "Matroska without audio" + only},
        {logged(""), "Matroska whose main audio is neither DTS nor E-AC-3" + only},
        {logged("log 6 sniff: could not find stream information:Bad"),
         "Matroska whose streams FFmpeg cannot make out (Bad); the file is damaged or cut off"},
        {logged("log 6 index claims 9 samples"), "Matroska whose index claims 9 samples"}};
    // clang-format on
    for (const auto& [arguments, reason] : cases) {
        Arguments all = arguments;
        all.push_back("--json");
        EXPECT_EQ(work.real(all).object()["reason"], reason);
    }
}

// One track or all, the file lasts as long; listings are folded; a seek over files is a table.
TEST(File, textSaysWhatMattersInEightyColumns) {
    const Workspace work;
    const std::string movie = kMedia + "mp4_h264_eac3.mp4";
    // clang-format off
    const std::tuple<Arguments, size_t, std::vector<const char*>> cases[] = {
        {{"--read", "--track", "2", movie}, 20, {"video/mp4, 0:02.0", " kb/s overall", "edit lists, which the plug-in ignores:"}},
        {{"--read", movie}, 25, {"High@1.0", "keys at most 0.480 s", "largest 2.59 kB", "audio begins at -0.080 s", "sample after"}},
        {{kMedia + "mov_sounds.mov"}, 40, {"audio stream skipped: pcm_s32le"}},
        {{"--explain", kMedia + "mp4_long_gop.mp4"}, 250, {"... 286 more lines like it", "verdict taken: MP4 whose main audio is E-AC-3"}},
        {{"--verify", "--source", "error-at=40000", kMedia + "mp4_late_audio.mp4"}, 50, {"missing, libavformat has one at", "more lines like it"}},
        {{"--seek", "0:00.7:closest", "--seek", "1:23.5", "media/mp4_no_b.mp4", "media/wav_s16.wav"}, 10,
         {"0.700    closest      0 0.480    key -0.220   0.720    media/mp4_no_b.mp4", "83.500   closest-sync 0 no sample: end of stream"}},
        {{"--read", "media/"}, 100, {"warned     0:01.0  matroska dts+flac      105     53.8 kB  media/mkv_sounds.mkv"}}};
    // clang-format on
    setenv("COLUMNS", "80", 1);
    ASSERT_EQ(symlink(kMedia.c_str(), work.path("media").c_str()), 0);
    for (const auto& [arguments, most, says] : cases) {
        const RunResult run = work.real(arguments);
        EXPECT_LE(run.lines().size(), most) << run.out;
        for (const char* text : says)
            EXPECT_TRUE(run.says(text)) << text << "\n" << run.out;
        for (size_t i = 1; i < run.lines().size(); i++) {  // after the name of the file
            const std::string line = run.lines()[i];
            const auto starts = [](char byte) { return (byte & 0xC0) != 0x80; };  // of UTF-8
            EXPECT_LE(std::count_if(line.begin(), line.end(), starts), 80) << line;
        }
    }
}

}  // namespace
}  // namespace orvel::probe::test
