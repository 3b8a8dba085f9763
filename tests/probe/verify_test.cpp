// The plug-in's samples against libavformat's, in files that both can read: a WAVE file with the
// fake plug-in's script in a chunk behind the sound.
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "probe_command.h"

namespace orvel::probe::test {
namespace {

using Json = nlohmann::json;

constexpr size_t kPackets = 5;
constexpr size_t kPacketBytes = 4096;  // what libavformat reads at once
constexpr int64_t kPacketUs = 512000;  // 8-bit mono at 8 kHz

struct Scripted {
    int64_t timeUs;
    int key;
    std::string data;  // 16 bits a sample
};

std::string littleEndian(uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; i++)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

uint8_t soundByte(size_t at) {
    return static_cast<uint8_t>(at * at / 64);
}

std::vector<Scripted> rightSamples() {
    std::vector<Scripted> samples;
    for (size_t i = 0; i < kPackets; i++) {
        Scripted& sample =
                samples.emplace_back(Scripted{static_cast<int64_t>(i) * kPacketUs, 1, {}});
        for (size_t at = i * kPacketBytes; at < (i + 1) * kPacketBytes; at++) {
            sample.data += '\0';
            sample.data += static_cast<char>(soundByte(at) - 128);
        }
    }
    return samples;
}

std::string waveFile(const std::vector<Scripted>& samples, const std::string& more) {
    std::string sound;
    for (size_t at = 0; at < kPackets * kPacketBytes; at++)
        sound += static_cast<char>(soundByte(at));
    std::string script =
            "FAKE\ntrack\nformat str file-format audio/x-wav\n"
            "format str mime audio/raw\n" +
            more;
    static constexpr char kDigits[] = "0123456789abcdef";
    for (const Scripted& sample : samples) {
        script +=
                "sample " + std::to_string(sample.timeUs) + " " + std::to_string(sample.key) + " ";
        for (const char byte : sample.data)
            script += {kDigits[(byte >> 4) & 15], kDigits[byte & 15]};
        script += "\n";
    }
    return "RIFF" + littleEndian(static_cast<uint32_t>(sound.size() + script.size() + 44), 4) +
           "WAVEfmt " + littleEndian(16, 4) + littleEndian(1, 2) + littleEndian(1, 2) +
           littleEndian(8000, 4) + littleEndian(8000, 4) + littleEndian(1, 2) + littleEndian(8, 2) +
           "data" + littleEndian(static_cast<uint32_t>(sound.size()), 4) + sound + "junk" +
           littleEndian(static_cast<uint32_t>(script.size()), 4) + script;
}

TEST(Verify, everyKindOfDifference_isFoundAndOnlyThat) {
    struct Case {
        const char* name;
        std::function<void(std::vector<Scripted>&)> spoil;
        std::string more;               // of the script
        std::vector<Json> differences;  // a list of one would be that one with some compilers
    };
    using Samples = std::vector<Scripted>;
    const auto at = [](const char* what, int sample, Json more) {
        more.update({{"track", 0}, {"what", what}, {"sample", sample}});
        return more;
    };
    const Case cases[] = {
            {"same", [](Samples&) {}, "", {}},
            {"time",
             [](Samples& s) { s[2].timeUs += 1; },
             "",
             {at("time", 2, {{"plugin", 1024001}, {"reference", 1024000}})}},
            {"key",
             [](Samples& s) { s[1].key = 0; },
             "",
             {at("key", 1, {{"plugin", 0}, {"reference", 1}})}},
            {"payload",
             [](Samples& s) { s[4].data[77] ^= 1; },
             "",
             {at("payload", 4, {{"byte", 77}})}},
            {"size",
             [](Samples& s) { s[0].data.pop_back(); },
             "",
             {at("size", 0, {{"plugin", 8191}, {"reference", 8192}})}},
            {"missing",
             [](Samples& s) { s.erase(s.begin() + 1, s.begin() + 3); },
             "",
             {at("missing", 1, {{"reference", 512000}}),
              at("missing", 1, {{"reference", 1024000}})}},
            {"missingAtTheEnd",
             [](Samples& s) { s.pop_back(); },
             "",
             {at("missing", 4, {{"reference", 2048000}})}},
            {"extra",
             [](Samples& s) {
                 s.insert(s.begin() + 3, {7, 1, "ab"});
             },
             "",
             {at("extra", 3, {{"plugin", 7}})}},
            {"end",
             [](Samples&) {},
             "end -1004\n",
             {{{"track", 0}, {"what", "end"}, {"plugin", -1004}, {"reference", -1011}}}},
            {"track",
             [](Samples&) {},
             "format str mime audio/flac\n",
             {{{"track", 0},
               {"what", "track"},
               {"text", "is audio/flac, libavformat's stream 0 is audio/raw"}}}},
            {"container",
             [](Samples&) {},
             "format str file-format video/none\n",
             {{{"what", "track"}, {"text", "libavformat has no demuxer for \"video/none\""}}}},
    };
    const Workspace work;
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        Samples samples = rightSamples();
        one.spoil(samples);
        const std::string file = work.file(one.name, waveFile(samples, one.more));
        const RunResult run = work.probe({"--verify", "--json", file});
        EXPECT_EQ(run.exitCode, one.differences.empty() ? 0 : 3) << run.err;
        const Json verify = Json::parse(run.out)["verify"];
        EXPECT_EQ(verify["differences"], Json(one.differences));
        EXPECT_EQ(verify["reference"].get<std::string>().rfind("libavformat ", 0), 0u);
        const RunResult text = work.probe({"--verify", file});
        EXPECT_NE(text.out.find(one.differences.empty() ? "5 samples compared" : "difference"),
                  std::string::npos)
                << text.out;
    }
    // A limit ends the comparison, too.
    const std::string cut = work.file("cut", waveFile(rightSamples(), ""));
    EXPECT_EQ(work.probe({"--verify", "--limit", "2", cut}).exitCode, 0);
    const RunResult table = work.probe({"--verify", "--table", cut, work.path("time")});
    EXPECT_EQ(table.exitCode, 3);
    EXPECT_NE(table.out.find(": 1 taken, 1 with differences; 10 samples"), std::string::npos)
            << table.out;
}

}  // namespace
}  // namespace orvel::probe::test
