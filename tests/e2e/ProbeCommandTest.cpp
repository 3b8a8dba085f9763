// orvelprobe as a program: its JSON against plain libavformat, its exit code, its folder walk.

extern "C" {
#include <libavutil/md5.h>
}
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "e2e/Opened.h"
#include "framework/FileSource.h"

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
    for (size_t at = 0; at < output.size();) {
        const size_t end = output.find('\n', at);
        ran.lines.push_back(json::parse(output.substr(at, end - at)));
        at = end == std::string::npos ? output.size() : end + 1;
    }
    return ran;
}

std::string md5(const Bytes& data) {
    uint8_t sum[16];
    av_md5_sum(sum, data.data(), data.size());
    std::string text;
    for (uint8_t byte : sum) {
        char hex[3];
        std::snprintf(hex, sizeof(hex), "%02x", byte);
        text += hex;
    }
    return text;
}

json asJson(const std::vector<Sample>& samples) {
    json list = json::array();
    for (const Sample& sample : samples) {
        list.push_back({{"timeUs", sample.timeUs},
                        {"size", sample.data.size()},
                        {"sync", sample.sync},
                        {"md5", md5(sample.data)}});
    }
    return list;
}

}  // namespace

TEST(ProbeCommand, samplesOfEveryFileEqualLibavformats) {
    for (const MediaFile& file : mediaFiles()) {
        if (file.make != mediaBytes) continue;  // has no path
        SCOPED_TRACE(file.name);
        const std::string path = mediaPath(file.name);
        host::FileSource source(path);
        const std::vector<size_t> tracks = playedTracks(file);
        const Oracle oracle = readOracle(source, file, tracks);
        std::string arguments = "--samples " + path;
        if (tracks.size() < file.tracks.size()) {
            for (size_t track : tracks)
                arguments += " --track " + std::to_string(track);
        }
        const Ran ran = orvelprobe(arguments);
        EXPECT_EQ(ran.exit, 0);
        ASSERT_EQ(ran.lines.size(), 1u);
        const json& line = ran.lines[0];
        EXPECT_EQ(line["file"], path);
        EXPECT_EQ(line["taken"], true);
        EXPECT_EQ(line["extractor"], "OrvelExtractor2");
        ASSERT_EQ(line["tracks"].size(), tracks.size());
        for (size_t i = 0; i < tracks.size(); ++i) {
            const json& track = line["tracks"][i];
            const auto& samples = oracle.streams[file.tracks[tracks[i]].stream].samples;
            EXPECT_EQ(track["index"], tracks[i]);
            EXPECT_EQ(track["format"]["mime"], file.tracks[tracks[i]].mime);
            EXPECT_EQ(track["count"], samples.size());
            EXPECT_EQ(track["end"], oracle.end);
            EXPECT_EQ(track["samples"], asJson(samples)) << "track " << i;
        }
    }
}

// The time lies between two frames, and the key frame before them is seconds away.
TEST(ProbeCommand, exactSeekTargetsTheClosestFrame) {
    const std::string path = mediaPath("mp4_long_gop.mp4");
    host::FileSource source(path);
    const Oracle oracle = Oracle::read(source, "mov");
    int64_t closest = INT64_MAX, key = 0;
    for (const Sample& sample : oracle.streams[0].samples) {
        const int64_t away = std::abs(sample.timeUs - 12500000);
        if (away < std::abs(closest - 12500000)) closest = sample.timeUs;
        if (sample.sync && sample.timeUs <= 12500000) key = sample.timeUs;
    }
    const Ran ran = orvelprobe("--track 0 --limit 1 --seek 12.5:closest " + path);
    ASSERT_EQ(ran.lines.size(), 1u);
    const json& seek = ran.lines[0]["seeks"][0];
    EXPECT_EQ(seek["timeUs"], 12500000);
    EXPECT_EQ(seek["mode"], 3);
    const json& sample = seek["tracks"][0]["samples"][0];
    EXPECT_EQ(sample["targetTimeUs"], closest);
    EXPECT_EQ(sample["timeUs"], key);
    EXPECT_EQ(sample["sync"], true);
}

TEST(ProbeCommand, declinedFileIsExitOneAndTheNextGoesOn) {
    const Ran ran = orvelprobe(mediaPath("mp4_aac.m4a") + " " + mediaPath("wav_u8.wav"));
    EXPECT_EQ(ran.exit, 1);
    ASSERT_EQ(ran.lines.size(), 2u);
    EXPECT_EQ(ran.lines[0], json({{"file", mediaPath("mp4_aac.m4a")}, {"taken", false}}));
    EXPECT_EQ(ran.lines[1]["taken"], true);
}

TEST(ProbeCommand, missingFileIsExitTwo) {
    EXPECT_EQ(orvelprobe(mediaPath("no such file") + " 2>/dev/null").exit, 2);
}

}  // namespace orvel::test
