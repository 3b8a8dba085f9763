// Why a file was taken or declined: the steps in their order and the sentence, where media files
// do not lead to it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "probe_command.h"

namespace orvel::probe::test {
namespace {

using Json = nlohmann::json;

constexpr char kMatroska[] = "log 4 mime:video/x-matroska, mediaFlag:0x4, finalScore:100\n";

TEST(Explain, verdict_saysWhatDecidedAndWhatToChange) {
    struct Case {
        std::string script;  // behind "FAKE\n"
        std::vector<std::string> options;
        std::string verdict;
    };
    const std::string declined = "on sniff decline\n";
    const std::string matroska = kMatroska + declined;
    const std::string only = "; the plug-in takes Matroska only for DTS or E-AC-3";
    const auto property = [](const char* mask) {
        return std::vector<std::string>{"--property",
                                        std::string("mm.enable.orvel_parser=") + mask};
    };
    const Case cases[] = {
            {"log 2 main audio:none\n" + matroska, {}, "declined: Matroska without audio" + only},
            // A build of the plug-in without verbose lines.
            {matroska, {}, "declined: Matroska whose main audio is neither DTS nor E-AC-3" + only},
            {"log 6 sniff: could not find stream information:Bad data\n" + matroska,
             {},
             "declined: Matroska whose streams FFmpeg cannot make out (Bad data); the file is "
             "damaged or cut off"},
            {"log 6 id3 tag size is corrupted\n" + declined,
             {},
             "declined: its ID3 tags take 3 MiB or more, fewer are skipped; shorten them"},
            {"log 4 mime:audio/mpeg, mediaFlag:0x10, finalScore:25\n" + declined,
             {},
             "declined: no container fits: the best is MP3 with probe score 25, more than 25 is "
             "needed"},
            {"log 5 tmpFmt is NULL\nlog 4 mime:(null), mediaFlag:0x0, finalScore:0\n" + declined,
             {},
             "declined: no container fits, but this FFmpeg lacks 1 demuxer of enabled containers; "
             "build it in"},
            {"bit 4\n", property("0x4"),
             "declined: mm.enable.orvel_parser is \"0x4\", which enables no container (it takes a "
             "decimal number): Matroska is bit 4; mm.enable.orvel_parser=4 takes it"},
            {"bit 4\nlog 2 main audio:aac\n" + declined, property("16"),
             "declined: the property enables no container that fits: Matroska is bit 4, but "
             "Matroska whose main audio is AAC" +
                     only},
            // Nothing is known of what the second offer would have said.
            {"bit 4\non sniff crash\n", property("16"),
             "declined: the property enables no container that fits"},
            {declined, {}, "declined: the plug-in left no reason"},
            {"log 6 avformat open input failed: Bad data\n" + std::string(kMatroska),
             {},
             "taken: Matroska by its first bytes (probe score 100) and by these alone: FFmpeg "
             "cannot open it (Bad data)"},
    };
    const Workspace work;
    for (const Case& one : cases) {
        SCOPED_TRACE(one.script);
        std::vector<std::string> arguments = one.options;
        arguments.insert(arguments.end(), {"--explain", "--json"});
        arguments.push_back(work.file("f", "FAKE\n" + one.script));
        EXPECT_EQ(Json::parse(work.probe(arguments).out)["explain"]["verdict"], one.verdict);
    }
}

TEST(Explain, steps_areReadsSizesAndLinesInTheirOrder) {
    const Workspace work;
    const std::string script = "FAKE\nlog 2 first\nlog 6 sec\x1Bond\n" + std::string(9000, '\n');
    const std::string file = work.file("f", script);
    const Json steps =
            Json::parse(work.probe({"--explain", "--json", file}).out)["explain"]["steps"];
    const auto read = [](int offset, int result) {
        return Json{{"read", {{"offset", offset}, {"length", 4096}, {"result", result}}}};
    };
    const int size = static_cast<int>(script.size());
    EXPECT_EQ(steps,
              Json({read(0, 4096), read(4096, 4096), read(8192, size - 8192), read(size, 0),
                    Json{{"size", size}},
                    Json{{"log", {{"priority", "V"}, {"tag", "FFmpegObject"}, {"text", "first"}}}},
                    Json{{"log",
                          {{"priority", "E"}, {"tag", "FFmpegObject"}, {"text", "sec\x1Bond"}}}}}));
    const std::string page = work.probe({"--explain", file}).out;
    const std::string expected =
            file +
            "\n    read at 0, 4096 bytes, 2 times on end: all\n"
            "    read at 8192, 4096 bytes: " +
            std::to_string(size - 8192) + " bytes\n    read at " + std::to_string(size) +
            ", 4096 bytes: none, the end\n    size asked: " + std::to_string(size) +
            "\n    V  FFmpegObject     first\n"
            "    E  FFmpegObject     sec\\x1bond\n"
            "  verdict     taken: the plug-in left no reason\n";
    EXPECT_EQ(page.substr(0, expected.size()), expected);
}

}  // namespace
}  // namespace orvel::probe::test
