// Many files at a glance.
#include <gtest/gtest.h>

#include <sstream>

#include "probe_command.h"

namespace orvel::probe::test {
namespace {

constexpr char kGood[] =
        "FAKE\nformat str mime video/x-fake\ntrack\nformat str mime video/avc\n"
        "format i64 durationUs 62500000\nsample 0 1 0102\ntrack\nformat str mime audio/mp4a-latm\n"
        "sample 0 1 030405\n";

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

TEST(Table, everyEndOfAFile_isOneLineInOrderAndOneCount) {
    const Workspace work;
    const std::string top = work.path("top");
    work.file("top/.hidden/x", kGood);
    work.file("top/a", kGood);
    work.file("top/b", "foreign\n");
    work.file("top/c", std::string(kGood) + "on read crash\n");
    work.file("top/d", std::string(kGood) + "on read hang\n");
    work.file("top/e", std::string(kGood) + "end -1004\n");
    work.file("top/f\n", "FAKE\n");
    const RunResult run =
            work.probe({"--read", "--jobs", "3", "--timeout", "1", top, work.path("none")});
    EXPECT_EQ(run.exitCode, 3);
    // An emulator, where one runs the command, has its own word about the crash.
    for (const std::string& line : linesOf(run.err))
        EXPECT_EQ(line.find("qemu: uncaught target signal 11"), 0u) << line;
    const std::vector<std::string> lines = linesOf(run.out);
    const std::vector<std::string> expected = {
            "RESULT      CONTAINER  DURATION     TRACKS                SAMPLES  SIZE       FILE",
            "taken       fake       1:02.500     avc+aac               2        5 B        " + top +
                    "/a",
            "declined    -" + std::string(65, ' ') + top + "/b: the plug-in left no reason",
            "crashed     ",
            "timed out   ",
            "failed      ",
            "taken       ",
            "unreadable  ",
            "",
            "7 files in "};
    ASSERT_EQ(lines.size(), expected.size()) << run.out;
    for (size_t i = 0; i < lines.size(); i++)
        EXPECT_EQ(lines[i].substr(0, expected[i].size()), expected[i]);
    EXPECT_NE(lines[3].find("avc+aac"), std::string::npos);  // known before the crash
    EXPECT_NE(lines[3].find("/c: crashed by signal 11"), std::string::npos);
    EXPECT_NE(lines[6].find("/f\\x0a"), std::string::npos);
    EXPECT_NE(run.out.find("s: 2 taken, 1 declined, 1 unreadable, 1 failed, 1 crashed, 1 timed "
                           "out; 8 samples, 20 B read"),
              std::string::npos)
            << run.out;
}

TEST(Table, isChosenByTheFilesUnlessAskedFor) {
    const Workspace work;
    const std::string file = work.file("top/a", kGood), top = work.path("top");
    struct Case {
        std::vector<std::string> arguments;
        bool table;
    };
    const Case cases[] = {
            {{file}, false},           {{file, file}, true},      {{top}, true},
            {{"--table", file}, true}, {{"--pages", top}, false}, {{"--keys", file, file}, false}};
    for (const Case& one : cases) {
        const RunResult run = work.probe(one.arguments);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.out.rfind("RESULT", 0) == 0, one.table)
                << testing::PrintToString(one.arguments) << run.out;
    }
}

}  // namespace
}  // namespace orvel::probe::test
