// The forms that others rely on: JSON, the page for browsers, and what --verify finds.
#include <gtest/gtest.h>

#include <functional>
#include <regex>

#include "ProbeCommand.h"
#include "support/SyntheticFiles.h"

namespace orvel::probe::test {
namespace {

const std::string kTwoTracks =
        "FAKE\nformat str mime video/fake\nformat str title A \xFFtitle\x01 with \"quotes\"\n"
        "format f32 capture-rate 29.97\nformat buf albumart 89504e47\ntrack\n"
        "format str mime video/avc\nformat rect crop 1,2,3,-4\nformat i64 durationUs 9000000000\n"
        "sample 66667 1 000102\nsample 100000 0 616263\ntrack\nformat str mime audio/fake\n"
        "sample 0 1 616263\nsample 90000 1 00\nend -1004\n";

// Byte by byte: order of the keys, number formats and spelling are what others rely on.
TEST(JsonLines, shapeIsTheOneThatIsPromised) {
    const Workspace work;
    work.file("f", kTwoTracks);
    const RunResult run = work.fake({"--json", "--samples", "f"});
    // clang-format off
    EXPECT_EQ(run.out,
        R"({"file":"f","taken":true,"reason":"the plug-in left no reason","fileBytes":)" + std::to_string(kTwoTracks.size()) +
        R"(,"confidence":0.9,"extractor":"FakeExtractor","format":{"albumart":{"size":4,"hex":"89504e47"},)"
        R"("capture-rate":29.97,"mime":"video/fake","title":"A �title\u0001 with \"quotes\""},"tracks":[{"index":0,)"
        R"("format":{"crop":[1,2,3,-4],"durationUs":9000000000,"mime":"video/avc"},"count":2,"bytes":6,"keys":1,)"
        R"("firstUs":66667,"lastUs":100000,"largest":3,"end":-1011,"samples":[)"
        R"({"timeUs":66667,"size":3,"sync":true,"md5":"b95f67f61ebb03619622d798f45fc2d3"},)"
        R"({"timeUs":100000,"size":3,"sync":false,"md5":"900150983cd24fb0d6963f7d28e17f72"}]},{"index":1,)"
        R"("format":{"mime":"audio/fake"},"count":2,"bytes":4,"keys":2,"firstUs":0,"lastUs":90000,"largest":3,)"
        R"("keyIntervalUs":90000,"end":-1004,"samples":[)"
        R"({"timeUs":0,"size":3,"sync":true,"md5":"900150983cd24fb0d6963f7d28e17f72"},)"
        R"({"timeUs":90000,"size":1,"sync":true,"md5":"93b885adfe0da089cdf634904fd59f71"}]}],"durationUs":9000000000,)"
        R"("warnings":)" + run.object()["warnings"].dump() + R"(,"error":)" + run.object()["error"].dump() + "}\n");
    const Json seeks = work.fake({"--json", "--seek", "0.08:closest", "--seek=9999", "f"}).object()["seeks"];
    EXPECT_EQ(seeks[0].dump(),
        R"({"timeUs":80000,"mode":3,"tracks":[{"index":0,"status":0,"samples":[)"
        R"({"timeUs":66667,"size":3,"sync":true,"md5":"b95f67f61ebb03619622d798f45fc2d3","targetTimeUs":80000}]},)"
        R"({"index":1,"status":0,"samples":[)"
        R"({"timeUs":0,"size":3,"sync":true,"md5":"900150983cd24fb0d6963f7d28e17f72","targetTimeUs":80000}]}]})");
    EXPECT_EQ(seeks[1]["tracks"][0].dump(), R"({"index":0,"status":-1011,"samples":[]})");
    // clang-format on
}

TEST(Page, textOfFilesIsTextAndNothingElse) {
    const Workspace work;
    const std::string evil =
            "</script></style>{{script}}<script>alert(1)</script><img src=x onerror='alert(2)'>\" "
            "onload=\"x\xE2\x80\xA8\x01\xFF";
    work.file("in/<b>\"&\x1e.fake", "FAKE\nformat str title " + evil + "\nformat str k<i>ey " +
                                            evil + "\ntrack\nformat str mime video/" + evil +
                                            "\nsample 0 1 01\nlog 5 " + evil + "\n");
    work.file("in/declined\xE2\x80\xAE<b>", "x");
    EXPECT_EQ(work.fake({"--html", "p", "--explain", "--seek", "0", "in"}).exitCode, 1);
    std::string page = work.content("p");
    EXPECT_NE(page.find("&lt;img src=x onerror=&#39;alert(2)&#39;&gt;&quot; onload=&quot;"),
              std::string::npos);
    EXPECT_LT(page.find("declined</b>"), page.find("taken</b>"));
    // Only our own elements, with our own attributes, and one script.
    const size_t style = page.find("<style>"), rest = page.find("</style>");
    page = page.substr(0, style) + page.substr(rest, page.find("<script nonce=") - rest);
    const std::regex element("<(/?)([a-z0-9]+)((?: [a-z-]+(?:=\"[^\"<>]*\")?)*)>");
    long elements = 1;  // the document type
    for (std::sregex_iterator it(page.begin(), page.end(), element), end; it != end;
         ++it, elements++) {
        const std::string name = (*it)[2].str(), attributes = (*it)[3].str();
        EXPECT_TRUE(attributes.find(" on") == std::string::npos && name != "img") << it->str();
        EXPECT_EQ(name == "script" && (*it)[1].length() == 0,
                  attributes == " type=\"application/json\"");
    }
    EXPECT_EQ(elements, std::count(page.begin(), page.end(), '<'));
}

// Bins lose neither the largest sample nor a key, and a long file makes no large page.
TEST(Page, samplesArePlainNumbersInTheOrderOfTime) {
    const Workspace work;
    work.file("long",
              "FAKE\ntrack\nformat str mime video/avc\nsamples 300000 40000 7\nsample 12000000000 "
              "1 " + std::string(120, '0') +
                      "\nsamples 199999 40000 9\n");
    EXPECT_EQ(work.fake({"--html", "p", "--seek", "1:40", "long"}).exitCode, 0);
    const std::string page = work.content("p"), mark = "<script type=\"application/json\">";
    EXPECT_LT(page.size(), 2000000u);
    const size_t at = page.find(mark) + mark.size();
    const Json plot = Json::parse(page.substr(at, page.find("</script>", at) - at));
    const Json& track = plot["tracks"][0];
    const size_t perBin = track["perBin"];
    int64_t bytes = 0;
    for (const Json& sum : track["sum"])
        bytes += sum.get<int64_t>();
    EXPECT_EQ(bytes, 300000 * 7 + 60 + 199999 * 9);
    EXPECT_EQ(track["max"][300000 / perBin], 60);
    EXPECT_EQ(track["keys"][300000 / perBin], 1);
    EXPECT_EQ(track["times"][1], perBin * 40000);
    EXPECT_EQ(plot["to"], 499999 * int64_t{40000});
    EXPECT_EQ(plot["seeks"][0]["asked"], 100000000);
}

struct Scripted {
    int64_t timeUs;
    int key;
    std::string hex;  // 16 bits a sample
};
using Samples = std::vector<Scripted>;

// A WAVE file of 8-bit mono at a rate of which every libavformat reads 4096 bytes at once: five
// such packets, and the fake plug-in's script in a chunk behind the sound.
std::string waveFile(const std::function<void(Samples&)>& spoil, const std::string& more) {
    const auto field = [](size_t value) {
        return std::string({static_cast<char>(value), static_cast<char>(value >> 8),
                            static_cast<char>(value >> 16), 0});
    };
    std::string sound,
            script =
                    "FAKE\ntrack\nformat str file-format audio/x-wav\nformat str mime audio/raw\n" +
                    more;
    Samples samples;
    for (size_t at = 0; at < 5 * 4096; at++) {
        sound += static_cast<char>(at * at / 64);
        if (at % 4096 == 0) samples.push_back({static_cast<int64_t>(at) * 100000 / 4096, 1, {}});
        const uint8_t upper = static_cast<uint8_t>(sound.back() ^ 0x80);
        samples.back().hex +=
                {'0', '0', "0123456789abcdef"[upper >> 4], "0123456789abcdef"[upper & 15]};
    }
    spoil(samples);
    for (const Scripted& sample : samples)
        script += "sample " + std::to_string(sample.timeUs) + " " + std::to_string(sample.key) +
                  " " + sample.hex + "\n";
    return "RIFF" + field(36 + 8 + sound.size() + script.size()) + "WAVEfmt " + field(16) +
           std::string("\x01\0\x01\0\0\xA0\0\0\0\xA0\0\0\x01\0\x08\0", 16) + "data" +
           field(sound.size()) + sound + "junk" + field(script.size()) + script;
}

TEST(Verify, everyKindOfDifferenceIsFoundAndOnlyThat) {
    // clang-format off
    const std::tuple<std::string, std::function<void(Samples&)>, std::string> cases[] = {
        {"", [](Samples&) {}, ""},
        {"time 2 200001 200000,", [](Samples& s) { s[2].timeUs += 1; }, ""},
        {"key 1 0 1,", [](Samples& s) { s[1].key = 0; }, ""},
        {"payload 4 - -,", [](Samples& s) { s[4].hex[154] = s[4].hex[154] == '1' ? '0' : '1'; }, ""},
        {"size 0 8191 8192,", [](Samples& s) { s[0].hex.resize(2 * 8191); }, ""},
        {"missing 1 - 100000,missing 1 - 200000,", [](Samples& s) { s.erase(s.begin() + 1, s.begin() + 3); }, ""},
        {"missing 4 - 400000,", [](Samples& s) { s.pop_back(); }, ""},
        {"extra 3 7 -,", [](Samples& s) { s.insert(s.begin() + 3, {7, 1, "abcd"}); }, ""},
        {"end - -1004 -1011,", [](Samples&) {}, "end -1004\n"},
        {"track - - -,", [](Samples&) {}, "format str mime audio/flac\n"},
        {"track - - -,", [](Samples&) {}, "format str file-format video/none\n"}};
    // clang-format on
    const Workspace work;
    for (const auto& [expected, spoil, more] : cases) {
        const RunResult run =
                work.fake({"--verify", "--json", work.file("f", waveFile(spoil, more))});
        const Json verify = run.object()["verify"];
        std::string whats;
        for (const Json& difference : verify["differences"]) {
            whats += difference["what"];
            for (const char* key : {"sample", "plugin", "reference"})
                whats += " " + (difference.contains(key) ? difference[key].dump() : "-");
            whats += ",";
        }
        EXPECT_EQ(whats, expected);
        EXPECT_EQ(run.exitCode, whats.empty() ? 0 : 3) << run.err;
    }
}

TEST(Verify, findsNoDifferenceInAnyFile) {
    const RunResult run =
            Workspace().real({"--verify", "--json", "--jobs", "2", orvel::test::mediaPath("")});
    for (size_t i = 0; i < run.lines().size(); i++) {
        const Json line = run.object(i);
        uint64_t samples = 0;
        for (const Json& track : line.value("tracks", Json::array()))
            samples += track["count"].get<uint64_t>();
        if (!line["taken"]) continue;
        EXPECT_EQ(line["verify"]["compared"], samples) << line["file"];
        EXPECT_EQ(line["verify"]["differences"], Json::array()) << line["file"];
    }
    EXPECT_GT(run.lines().size(), 40u);
}

}  // namespace
}  // namespace orvel::probe::test
