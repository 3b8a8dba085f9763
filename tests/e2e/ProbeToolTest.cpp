// orvelprobe's explanations and comparison with the real plug-in.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>

#include "e2e/MediaTable.h"

namespace orvel::test {

using nlohmann::json;

namespace {

struct Ran {
    std::vector<json> lines;
    int exit;
};

Ran orvelprobe(const std::string& arguments) {
    FILE* pipe = popen(
            (ORVEL_PROBE_PATH " --plugin " ORVEL_PLUGIN_PATH " --json " + arguments).c_str(), "r");
    std::string output;
    char piece[65536];
    for (size_t got; (got = fread(piece, 1, sizeof(piece), pipe)) > 0;)
        output.append(piece, got);
    const int status = pclose(pipe);
    Ran ran{{}, WIFEXITED(status) ? WEXITSTATUS(status) : -1};
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);)
        ran.lines.push_back(json::parse(line));
    return ran;
}

}  // namespace

TEST(ProbeTool, explainNamesWhatDecided) {
    struct Case {
        const char* arguments;
        const char* verdict;
    };
    const Case cases[] = {
            {"mkv_h264_aac.mkv",
             "declined: Matroska whose main audio is AAC; the plug-in takes Matroska only for DTS "
             "or E-AC-3"},
            {"mkv_h264_eac3.mkv", "taken: Matroska whose main audio is E-AC-3 (probe score 100)"},
            {"wav_s16.wav",
             "taken: WAV by its first bytes (probe score 99, more than 25 is needed)"},
            {"mkv_h264_eac3.mkv --property mm.enable.orvel_parser=16",
             "declined: the property enables no container that fits: Matroska is bit 4; "
             "mm.enable.orvel_parser=20 takes it"},
            {"wav_s24.wav --source short=900",
             "declined: the source gave 900 bytes at offset 0, a probe needs 1024 in one read"},
            {"wav_s16.wav --source error-at=0",
             "declined: the source could not be read: ERROR_IO (-1004) at offset 0"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.arguments);
        const Ran ran = orvelprobe("--explain " + mediaPath(one.arguments));
        ASSERT_EQ(ran.lines.size(), 1u);
        const json& explain = ran.lines[0]["explain"];
        EXPECT_EQ(explain["verdict"], one.verdict);
        EXPECT_GT(explain["steps"].size(), 3u);
    }
}

TEST(ProbeTool, verifyFindsNoDifferenceInAnyFile) {
    std::string arguments = "--verify --jobs 2";
    size_t files = 0;
    for (const MediaFile& file : mediaFiles()) {
        if (file.make != mediaBytes) continue;  // has no path
        arguments += " " + mediaPath(file.name);
        files++;
    }
    const Ran ran = orvelprobe(arguments);
    EXPECT_EQ(ran.exit, 0);
    ASSERT_EQ(ran.lines.size(), files);
    for (const json& line : ran.lines) {
        SCOPED_TRACE(line["file"].get<std::string>());
        uint64_t samples = 0;
        for (const json& track : line["tracks"])
            samples += track["count"].get<uint64_t>();
        EXPECT_EQ(line["verify"]["compared"], samples);
        EXPECT_EQ(line["verify"]["differences"], json::array());
    }
}

TEST(ProbeTool, verifyTellsOfSamplesThatAFaultySourceCosts) {
    const Ran ran = orvelprobe("--verify --source error-at=60000 " +
                               mediaPath("mp4_late_audio.mp4") + " 2>/dev/null");
    EXPECT_EQ(ran.exit, 3);
    const json& differences = ran.lines.at(0)["verify"]["differences"];
    ASSERT_GE(differences.size(), 2u);
    EXPECT_EQ(differences.front()["what"], "missing");
    EXPECT_EQ(differences.back()["what"], "end");
    // No track at all is a difference to the file as it is on disk.
    const Ran unopened = orvelprobe("--verify --source error-at=20000 " +
                                    mediaPath("mp4_late_audio.mp4") + " 2>/dev/null");
    EXPECT_EQ(unopened.exit, 3);
    EXPECT_EQ(unopened.lines.at(0)["verify"]["differences"].size(), 2u);
}

}  // namespace orvel::test
