// What the command writes: never over what it reads, whole or not at all, and no failure unnoticed.
#include <gtest/gtest.h>

#include <filesystem>

#include "ProbeCommand.h"
#include "support/SyntheticFiles.h"

namespace orvel::probe::test {
namespace {

namespace fs = std::filesystem;
using orvel::test::mediaPath;

TEST(Output, inputsAndOtherFilesAreNeverReplaced) {
    const Workspace work;
    fs::copy_file(mediaPath("mp4_h264_eac3.mp4"), work.path("v"));
    fs::copy_file(mediaPath("mp3_cover.mp3"), work.path("song"));
    fs::create_symlink(work.path("v"), work.path("link"));
    fs::create_hard_link(work.path("v"), work.path("hard"));
    work.file("other", "x");
    const std::string before = work.content("v"), songBefore = work.content("song");
    // clang-format off
    const std::vector<Arguments> cases = {
        {"--extract", "0=v", "v"}, {"--force", "--extract", "0=link", "v"}, {"--force", "--html", "hard", "v"},
        {"--cover", "song", "song"}, {"--html", "v", "song", "song"}, {"--extract", "0=other", "v"},
        {"--html", "no/such/page", "v"}, {"--html", ".", "v"}, {"--extract", "0=o", "--extract", "1=./o", "v"}};
    // clang-format on
    for (const Arguments& arguments : cases) {
        const RunResult run = work.real(arguments);
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find("orvelprobe: --"), std::string::npos) << run.err;
    }
    EXPECT_TRUE(work.content("v") == before && work.content("song") == songBefore);
    EXPECT_EQ(work.content("other"), "x");
    EXPECT_EQ(work.real({"--force", "--cover", "other", "song"}).exitCode, 0);
    EXPECT_EQ(work.content("other").substr(0, 3), "\xFF\xD8\xFF");
    // A page of its own is replaced, and not read with the folder that it is in.
    for (int i = 0; i < 2; i++) {
        const RunResult run = work.real({"--html", "page.html", "."});
        EXPECT_FALSE(run.says("page.html")) << run.out;
        EXPECT_EQ(work.content("page.html").substr(0, 15), "<!DOCTYPE html>") << run.err;
    }
}

TEST(Output, everyFailureIsSaidAndNothingHalfRemains) {
    const Workspace work;
    const std::string file = mediaPath("mp4_faststart.mp4");
    // clang-format off
    for (const Arguments& arguments : std::vector<Arguments>{
            {"--json", "--samples", file}, {"--samples", file}, {file, file}, {"--html", "-", file}, {"--extract", "0=-", file}}) {
        const RunResult run = work.real(arguments, ">/dev/full");
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_NE(run.err.find("No space left"), std::string::npos) << run.err;
    }
    // clang-format on
    EXPECT_EQ(work.real({"--json", "--samples", file}, "| head -c 9").err, "");
    const std::string track = "FAKE\ntrack\nformat str mime a/b\nsample 0 1 0102\n";
    for (const char* end : {"on read crash\n", "end -1004\n"})
        EXPECT_EQ(work.fake({"--extract", "0=out", work.file("f", track + end)}).exitCode, 3);
    for (const auto& entry : fs::directory_iterator(work.path("")))
        EXPECT_NE(entry.path().filename().string().substr(0, 3), "out");
}

// The report gives way to what is asked for on standard output.
TEST(Output, dashIsStandardOutput) {
    const Workspace work;
    EXPECT_EQ(work.real({"--cover", "-", mediaPath("mp3_cover.mp3")}).out.substr(0, 3),
              "\xFF\xD8\xFF");
    const RunResult text =
            work.real({"--extract", "2=-", mediaPath("mp4_h264_eac3.mp4")}, "| cat >.out");
    EXPECT_EQ(text.exitCode, 0) << text.err;
    EXPECT_EQ(text.out.rfind("1\n00:00:00,", 0), 0u) << text.out;
    EXPECT_NE(text.err.find("text/3gpp-tt"), std::string::npos);
}

}  // namespace
}  // namespace orvel::probe::test
