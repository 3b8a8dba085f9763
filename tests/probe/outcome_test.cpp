// What becomes of files that are fine, foreign, broken, crashing or hanging, one or many at a time.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "probe_command.h"

namespace orvel::probe::test {
namespace {

using Json = nlohmann::json;
using testing::Test;

constexpr char kGood[] =
        "FAKE\ntrack\nformat str mime audio/fake\nsample 0 1 0102\nsample 20000 1 0304\n";

std::string good(const std::string& more) {
    return kGood + more + "\n";
}

std::vector<Json> lines(const std::string& text) {
    std::vector<Json> objects;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        objects.push_back(Json::parse(line));
    return objects;
}

TEST(Outcome, exitCodeAndSentence_byHowTheFileEnds) {
    struct Case {
        const char* name;
        std::string content;
        std::vector<std::string> options;
        int exitCode;
        std::vector<const char*> says;  // on the page
    };
    const Case cases[] = {
            {"good", good(""), {"--read"}, 0, {"2 samples", "end of stream"}},
            {"declined", "something else", {}, 1, {"declined"}},
            {"noContainer", "x", {"--property", "mm.enable.orvel_parser=0"}, 1, {"no container"}},
            {"readError", good("end -1004"), {"--read"}, 3, {"track 0", "ERROR_IO (-1004)"}},
            {"readErrorUnread", good("end -1004"), {}, 0, {"audio/fake"}},
            {"seekError", good("end -1004"), {"--seek", "0", "--limit", "9"}, 3, {"ERROR_IO"}},
            {"crashInSniff", good("on sniff crash"), {}, 3, {"SIGSEGV", "sniffed"}},
            {"crashInCreate", good("on create crash"), {}, 3, {"SIGSEGV", "created"}},
            {"crashInStart", good("on start crash"), {"--read"}, 3, {"audio/fake", "started"}},
            {"crashInRead",
             good("on read crash"),
             {"--read"},
             3,
             {"audio/fake", "SIGSEGV", "after 2 samples (the last: track 0 at 0.020 s)"}},
            {"crashInStop", good("on stop crash"), {"--read"}, 3, {"2 samples", "were closed"}},
            {"crashInFree", good("on free crash"), {}, 3, {"audio/fake", "were closed"}},
            {"hang",
             good("on read hang"),
             {"--read", "--timeout", "1"},
             3,
             {"timed out after 1 s while reading", "--timeout"}},
            {"exit", good("on read exit"), {"--read"}, 3, {"exit status 0 while reading"}},
            {"noSuchTrack", good(""), {"--track", "4"}, 2, {"no track 4", "only track is 0"}},
            {"noCover", good(""), {"--cover", "/dev/null"}, 2, {"no album art"}},
            {"sourceFails", good(""), {"--source", "error-at=4"}, 1, {"declined"}},
    };
    const Workspace work;
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        std::vector<std::string> arguments = one.options;
        arguments.push_back(work.file(one.name, one.content));
        const RunResult run = work.probe(arguments);
        EXPECT_EQ(run.exitCode, one.exitCode) << run.err;
        EXPECT_EQ(run.out.substr(0, arguments.back().size() + 1), arguments.back() + "\n");
        for (const char* text : one.says)
            EXPECT_NE(run.out.find(text), std::string::npos) << run.out;
        EXPECT_EQ(run.err.find(arguments.back()) != std::string::npos, one.exitCode > 1) << run.err;

        arguments.push_back("--json");
        const RunResult json = work.probe(arguments);
        EXPECT_EQ(json.exitCode, one.exitCode);
        ASSERT_EQ(lines(json.out).size(), 1u);
        const Json object = lines(json.out)[0];
        EXPECT_EQ(object["file"], arguments[arguments.size() - 2]);
        EXPECT_EQ(object.contains("error"), one.exitCode > 1);
        if (one.exitCode == 1) {
            EXPECT_EQ(object, Json({{"file", object["file"]}, {"taken", false}}));
        }
    }
}

TEST(Outcome, unreadableFile_isNamedWithTheReason) {
    const Workspace work;
    for (const std::string& path : {work.path("missing"), std::string("/dev/null")}) {
        const RunResult run = work.probe({"--json", path});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_NE(run.err.find(path), std::string::npos) << run.err;
        ASSERT_EQ(lines(run.out).size(), 1u);
        EXPECT_EQ(lines(run.out)[0].size(), 2u);
        EXPECT_EQ(lines(run.out)[0]["file"], path);
    }
}

TEST(Outcome, manyFiles_stayInOrderAndOneBrokenFileIsItsOwnAffair) {
    const Workspace work;
    std::vector<std::string> arguments = {"--json", "--read", "--timeout", "2.5", "--jobs", "0"};
    std::vector<std::string> files;
    for (int i = 0; i < 24; i++) {
        std::string content = kGood;
        for (int extra = 0; extra < i; extra++)
            content += "sample 30000 0 00\n";
        if (i == 0) content = good("on read hang");  // everything else is done long before it
        if (i == 7) content = good("on read crash");
        if (i == 9) content = "foreign";
        files.push_back(work.file("f" + std::to_string(i), content));
    }
    arguments.insert(arguments.end(), files.begin(), files.end());
    for (const char* jobs : {"1", "6"}) {
        SCOPED_TRACE(jobs);
        arguments[5] = jobs;
        const RunResult run = work.probe(arguments);
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_LT(run.seconds, 30);
        const std::vector<Json> objects = lines(run.out);
        ASSERT_EQ(objects.size(), files.size());
        for (size_t i = 0; i < files.size(); i++) {
            SCOPED_TRACE(i);
            EXPECT_EQ(objects[i]["file"], files[i]);
            if (i == 0 || i == 7) {
                EXPECT_FALSE(objects[i].contains("taken"));
            } else if (i != 9) {
                EXPECT_EQ(objects[i]["tracks"][0]["count"], 2 + i);
            }
        }
        EXPECT_NE(objects[0]["error"].get<std::string>().find("timed out"), std::string::npos);
        EXPECT_NE(objects[7]["error"].get<std::string>().find("SIGSEGV"), std::string::npos);
    }
}

TEST(Outcome, libraryThatPrints_doesNotReachStdout) {
    const Workspace work;
    const RunResult run = work.probe({"--json", work.file("f", good("on sniff print"))});
    EXPECT_EQ(lines(run.out).size(), 1u);
    EXPECT_NE(run.err.find("writes to stdout"), std::string::npos);
}

TEST(Outcome, folder_meansEveryFileBelowSorted) {
    const Workspace work;
    const std::string top = work.path("top");
    for (const char* name : {"top/b/2", "top/a", "top/b/1", "top/c/d/e"})
        work.file(name, good(""));
    const RunResult run = work.probe({"--json", "--jobs", "3", top, work.file("single", good(""))});
    EXPECT_EQ(run.exitCode, 0);
    std::vector<std::string> seen;
    for (const Json& object : lines(run.out))
        seen.push_back(object["file"]);
    EXPECT_EQ(seen, (std::vector<std::string>{top + "/a", top + "/b/1", top + "/b/2",
                                              top + "/c/d/e", work.path("single")}));
    ASSERT_EQ(mkdir(work.path("empty").c_str(), 0700), 0);
    const RunResult empty = work.probe({work.path("empty")});
    EXPECT_EQ(empty.exitCode, 2);
    EXPECT_NE(empty.err.find(work.path("empty")), std::string::npos);
}

TEST(Outcome, pluginThatCannotBeLoaded_isSaidOnce) {
    const Workspace work;
    const std::string file = work.file("f", good(""));
    const RunResult run = work.probe({"--plugin", work.path("none.so"), file, file, file});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
    const size_t first = run.err.find("none.so");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(run.err.find("orvelprobe:", first), std::string::npos) << run.err;
}

TEST(Outcome, wrongUsage_isExplainedWithExitCode2) {
    const Workspace work;
    const std::string file = work.file("f", good(""));
    const std::vector<std::vector<std::string>> cases = {
            {},
            {"--no-such-option", file},
            {"--limit", "0", file},
            {"--limit", "x", file},
            {"--jobs", "0", file},
            {"--timeout", "0", file},
            {"--seek", "soon", file},
            {"--seek", "1:backwards", file},
            {"--seek", "99999999999999999999", file},
            {"--source", "latency", file},
            {"--source", "latency=-1", file},
            {"--source", "short=0", file},
            {"--source", "size=5", file},
            {"--source", "short=1,", file},
            {"--property", "novalue", file},
            {"--property", "k=" + std::string(92, 'v'), file},
            {"--log", "loud", file},
            {"--extract", "0", file},
            {"--extract", "x=out", file},
            {"--extract", "0=out", "--seek", "1", file},
            {"--verify", "--seek", "1", file},
            {"--table", "--json", file},
            {"--table", "--explain", file},
            {"--cover", work.path("c"), file, file},
    };
    for (const auto& arguments : cases) {
        const RunResult run = work.probe(arguments);
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(run.out, "") << testing::PrintToString(arguments);
        EXPECT_EQ(run.err.rfind("orvelprobe: ", 0), 0u) << run.err;
    }
}

TEST(Outcome, help_fitsTwoScreensAndNamesEveryOption) {
    const Workspace work;
    const RunResult run = work.probe({"--help"});
    EXPECT_EQ(run.exitCode, 0);
    std::istringstream in(run.out);
    size_t count = 0;
    for (std::string line; std::getline(in, line); count++)
        EXPECT_LE(line.size(), 80u) << line;
    EXPECT_LE(count, 100u);
    for (const char* option :
         {"--json",     "--read",    "--samples",    "--track",  "--seek",  "--limit", "--extract",
          "--property", "--source",  "--plugin",     "--log",    "--keys",  "--cover", "--jobs",
          "--timeout",  "--version", "--explain",    "--verify", "--table", "--pages", "--html",
          "previous",   "next",      "closest-sync", "closest "}) {
        EXPECT_NE(run.out.find(option), std::string::npos) << option;
    }
    EXPECT_EQ(work.probe({"-V"}).out.rfind("orvelprobe ", 0), 0u);
}

}  // namespace
}  // namespace orvel::probe::test
