// The page for people: that it says what matters, and that a file cannot misuse a terminal.
#include <gtest/gtest.h>

#include "probe_command.h"

namespace orvel::probe::test {
namespace {

constexpr char kMovie[] =
        "FAKE\n"
        "format str mime video/mp4\n"
        "format str title Bad \x1B[31mtitle\x07\n"
        "format str artist J\xC3\xB6rg\n"
        "format buf albumart ffd8ff00\n"
        "track\n"
        "format str mime video/avc\n"
        "format i32 width 1920\n"
        "format i32 height 1080\n"
        "format i32 rotation-degrees 90\n"
        "format i32 frame-rate 25\n"
        "format i32 nal-length-size 4\n"
        "format buf csd-avc 0164001f\n"
        "format i64 durationUs 3723004000\n"
        "sample 40000 1 00000001\n"
        "sample 120000 0 00000001\n"
        "sample 80000 0 00000001\n"
        "track\n"
        "format str mime audio/raw\n"
        "format i32 sample-rate 44100\n"
        "format i32 channel-count 6\n"
        "format i32 bits-per-sample 24\n"
        "format i32 pcm-encoding 100\n"
        "format i32 bitrate 6350400\n"
        "format i32 encoder-delay 105\n"
        "format i32 encoder-padding 7\n"
        "format str language eng\n"
        "sample 0 1 0000\n";

void expectAll(const std::string& text, const std::vector<const char*>& parts) {
    for (const char* part : parts)
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
}

TEST(TextOutput, page_showsWhatMattersForEachKind) {
    const Workspace work;
    const std::string file = work.file("f", kMovie);
    const std::string page = work.probe({"--read", file}).out;
    expectAll(
            page,
            {"by FakeExtractor, confidence 0.90", "video/mp4, 1:02:03.004", "Jörg", "JPEG, 4 B",
             "video/avc  1920x1080, rotated 90, 25 fps, csd-avc 4 B (4-byte lengths)",
             "44100 Hz, 6 channels, 24 bits, as 32-bit PCM, 6350 kb/s, delay 105 + padding 7, eng",
             "3 samples (1 key), 12 B, 0.040 s to 0.120 s, end of stream", "MB/s"});
    EXPECT_NE(page.find("Bad \\x1b[31mtitle\\x07"), std::string::npos) << page;
    EXPECT_EQ(page.find('\x1B'), std::string::npos);
    EXPECT_EQ(page.find("pcm-encoding"), std::string::npos);
    expectAll(work.probe({"--keys", file}).out,
              {"keys of the file", "keys of track 1", "pcm-encoding     100", "4 B  0164001f"});
    expectAll(work.probe({"--samples", "--track", "0", file}).out,
              {"0             0.040 s           4  key\n", "2             0.080 s           4\n"});
}

TEST(TextOutput, seek_showsAskedLandedTargetAndDistance) {
    const Workspace work;
    const std::string file = work.file("f", kMovie);
    expectAll(work.probe({"--seek", "0.1:closest", "--limit", "2", "--track", "0", file}).out,
              {"seek to 0.100 s, closest",
               "track 0  landed at 0.040 s, key, -0.060 s; target 0.100 s, +0.000 s",
               "then at 0.120 s, not key"});
    expectAll(work.probe({"--seek", "12.0000005", file}).out,
              {"seek to 12.000001 s, closest-sync", "no sample: end of stream"});
}

TEST(TextOutput, terminal_getsColourAndAProgressLineThatGoesAway) {
    const Workspace work;
    const std::string file = work.file("f", std::string(kMovie) + "on read hang\n");
    const RunResult run = work.probeOnTerminal({"--read", "--timeout", "2.5", file});
    EXPECT_EQ(run.exitCode, 3);
    const size_t progress = run.out.find("\r\x1B[K[");
    ASSERT_NE(progress, std::string::npos) << run.out;
    const size_t cleared = run.out.rfind("\r\x1B[K");
    EXPECT_GT(run.out.find("timed out"), cleared);
    EXPECT_NE(run.out.find("\x1B[1m" + file), std::string::npos);
    // Nothing after a moment: a short read leaves no trace.
    EXPECT_EQ(work.probeOnTerminal({work.file("short", kMovie)})
                      .out.find('\r' + std::string("\x1B[K")),
              std::string::npos);
}

TEST(TextOutput, log_reachesStderrOnlyWhenAskedFor) {
    const Workspace work;
    const std::string file = work.file("f", std::string(kMovie));
    EXPECT_EQ(work.probe({file}).err, "");
    expectAll(work.probe({"--log", "info", file}).err, {"fake extractor created"});
    EXPECT_EQ(work.probe({"--log", "error", file}).err, "");
}

}  // namespace
}  // namespace orvel::probe::test
