// What becomes of files that are fine, foreign, broken, crashing or hanging, one or many at a time.
#include <gtest/gtest.h>

#include "ProbeCommand.h"

namespace orvel::probe::test {
namespace {

const std::string kGood =
        "FAKE\nformat str title Bad \x1B[31mtitle\x07\ntrack\nformat str mime audio/fake\n"
        "sample 0 1 0102\nsample 20000 1 0304\n";

TEST(Outcome, exitCodeAndSentenceByHowTheFileEnds) {
    const Workspace work;
    // clang-format off
    const struct {
        std::string more;  // behind kGood
        Arguments options;
        int exitCode;
        const char* says;  // on the page
    } cases[] = {
        {"", {"--read"}, 0, "Bad \\x1b[31mtitle\\x07"},
        {"sample 30000 1 \n", {"--read"}, 1, "track 0: 1 sample delivered empty"},
        {"format i32 max-input-size 1\n", {"--read"}, 1, "a sample of 2 bytes, max-input-size is 1"},
        {"end -1004\n", {"--read"}, 3, "track 0: reading ended with ERROR_IO (-1004)"},
        {"end -1004\n", {}, 0, "audio/fake"},
        {"end -1004\n", {"--seek", "0", "--limit", "9"}, 3, "ERROR_IO"},
        {"on sniff crash\n", {}, 3, "SIGSEGV"},
        {"on start crash\n", {"--read"}, 3, "audio/fake"},
        {"on read crash\n", {"--read"}, 3, "after 2 samples (the"},
        {"on free crash\n", {"--read"}, 3, "2 samples"},
        {"on read hang\n", {"--read", "--timeout", "1"}, 3, "timed out after 1 s while"},
        {"on read exit\n", {"--read"}, 3, "exit status 0 while"},
        {"", {"--track", "4"}, 2, "no track 4; its only track is 0"},
        {"", {"--source", "error-at=4"}, 1, "declined"},
        {"bit 4\n", {"--property", "mm.enable.orvel_parser=0x4"}, 1, "a decimal number"},
        // Nothing is known of what the second offer would have said.
        {"bit 4\non sniff crash\n", {"--property", "mm.enable.orvel_parser=16"}, 1, "no container"},
    };
    // clang-format on
    for (const auto& one : cases) {
        SCOPED_TRACE(one.more);
        Arguments arguments = one.options;
        arguments.push_back(work.file("f", kGood + one.more));
        const RunResult run = work.fake(arguments);
        EXPECT_EQ(run.exitCode, one.exitCode) << run.err;
        EXPECT_TRUE(run.says(one.says)) << run.out;
        EXPECT_EQ(run.err.find(work.path("f")) != std::string::npos, one.exitCode > 1) << run.err;
        arguments.push_back("--json");
        const RunResult json = work.fake(arguments);
        EXPECT_EQ(json.exitCode, one.exitCode);
        EXPECT_EQ(json.object().contains("error"), one.exitCode > 1);
    }
}

TEST(Outcome, manyFilesStayInOrderAndOneBrokenFileIsItsOwnAffair) {
    const Workspace work;
    for (int i = 10; i < 24; i++) {
        const char* more = i == 10   ? "on read linger"
                           : i == 17 ? "on read crash"
                                     : "on sniff print";
        work.file("top/" + std::to_string(i), i == 19 ? "x" : kGood + more + "\n");
    }
    work.file("top/.hidden/x", kGood);
    const Arguments arguments = {"--read", "--jobs", "6", "top", "missing"};
    Arguments asJson = arguments;
    asJson.push_back("--json");
    const RunResult run = work.fake(asJson);
    EXPECT_EQ(run.exitCode, 3);
    ASSERT_EQ(run.lines().size(), 15u);
    for (size_t i = 0; i < 14; i++)
        EXPECT_EQ(run.object(i)["file"], "top/" + std::to_string(10 + i));
    EXPECT_EQ(run.object(5)["tracks"][0]["count"], 2);
    EXPECT_EQ(run.object(9).dump(), R"({"file":"top/19","taken":false,"reason":"the plug-in left )"
                                    R"(no reason","fileBytes":1})");
    EXPECT_EQ(run.object(14).size(), 2u);
    const RunResult table = work.fake(arguments);
    EXPECT_TRUE(table.says("s: 12 taken, 1 declined, 1 unreadable, 1 crashed; 26 samples"))
            << table.out;
}

// Nothing is opened or written for a command that cannot mean what it says.
TEST(Outcome, wrongUsageIsExplainedWithExitCode2) {
    const Workspace work;
    work.file("f", kGood);
    // clang-format off
    const std::vector<Arguments> cases = {
        {}, {"--no-such-option", "f"}, {"--seek", "99999999999999999999", "f"}, {"--source", "short=1,", "f"},
        {"--property", "k=" + std::string(92, 'v'), "f"}, {"--extract", "0=-", "--cover", "-", "f"},
        {"--cover", "c", "f", "f"}, {"--plugin", "none.so", "f", "f"}, {"--cover", "-", "f"}};
    // clang-format on
    for (const Arguments& arguments : cases) {
        const RunResult run = work.fake(arguments);
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(run.out, "") << testing::PrintToString(arguments);
        EXPECT_NE(run.err.find("orvelprobe: "), std::string::npos) << run.err;
    }
}

TEST(Outcome, terminalGetsColourAndAProgressLineThatGoesAway) {
    const Workspace work;
    work.file("f", kGood + "on read linger\n");
    ASSERT_EQ(system(("cd '" + work.path("") +
                      "' && TERM=xterm script -qec '" ORVELPROBE " --plugin " FAKE_PLUGIN
                      " --read f' terminal >/dev/null")
                             .c_str()),
              0);
    const std::string out = work.content("terminal");
    EXPECT_NE(out.find("\r\x1B[K0:00.020 4 B f"), std::string::npos) << out;
    EXPECT_GT(out.find("taken"), out.rfind("\r\x1B[K"));
    EXPECT_NE(out.find("\x1B[1mf\x1B[0m"), std::string::npos);
}

}  // namespace
}  // namespace orvel::probe::test
