#include "Seeds.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <random>
#include <stdexcept>

#include "support/ExtractorScript.h"
#include "support/SyntheticFiles.h"

namespace orvel::fuzz {

namespace {

using Bytes = std::string;

Bytes words(const std::vector<uint32_t>& values) {
    Bytes out;
    for (uint32_t value : values) {
        for (int shift = 24; shift >= 0; shift -= 8)
            out += static_cast<char>(value >> shift & 0xFF);
    }
    return out;
}

Bytes box(const char* type, const Bytes& payload) {
    return words({static_cast<uint32_t>(payload.size() + 8)}) + type + payload;
}

Bytes trak(uint32_t id, const Bytes& tables) {
    return box("trak", box("tkhd", words({0, 0, 0, id, 0, 0})) +
                               box("mdia", box("minf", box("stbl", tables))));
}

Bytes plainMovie() {
    const Bytes text = box("tx3g", words({0, 1}) + Bytes(30, '\1'));
    return box("ftyp", "isom") +
           box("moov", trak(1, box("ctts", words({0, 4, 1, 20, 2, 0, 1, 10, 1, 0}))) +
                               trak(2, box("stsd", words({0, 2}) + text + text))) +
           box("mdat", Bytes(40, '\2'));
}

Bytes fragmentedMovie() {
    const Bytes run = words({0xF05, 2, 120, 0, 1, 20, 0, 5, 1, 30, 0, 0xFFFFFFFA});
    const Bytes first = box("traf", box("tfhd", words({0x20000, 1})) + box("trun", run));
    const Bytes second = box("traf", box("tfhd", words({0x39, 2, 0, 500, 1, 10, 0})) +
                                             box("trun", words({0x801, 3, 8, 1, 2, 3})));
    const Bytes fragment = box("moof", box("mfhd", words({0, 1})) + first + second);
    return box("moov", trak(1, "") + trak(2, "") +
                               box("mvex", box("trex", words({0, 1, 1, 10, 10, 0})) +
                                                   box("trex", words({0, 2, 1, 10, 10, 0})))) +
           fragment + box("mdat", Bytes(60, '\3')) + fragment + box("mdat", Bytes(60, '\3'));
}

Bytes contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Bytes asText(const test::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

// Each a different use of the extractor; the files take turns.
std::vector<test::ScriptHeader> scripts() {
    using H = test::ScriptHeader;
    H readAll;
    H seeks;
    seeks.step[seeks.steps++] = {H::kStartAll, 0};
    for (uint8_t mode = 0; mode < 5; ++mode) {
        const auto operation = static_cast<uint8_t>(H::kSeek0 + mode);
        seeks.step[seeks.steps++] = {operation, static_cast<uint8_t>(mode << 5)};
        seeks.step[seeks.steps++] = {operation, static_cast<uint8_t>(0xB0 + (mode << 4) + 1)};
    }
    H orders;
    orders.habits = 0;
    for (const H::Step step :
         {H::Step{H::kTrackFormat, 0x10}, H::Step{H::kFileFormat, 0}, H::Step{H::kStart, 1},
          H::Step{H::kStart, 0}, H::Step{H::kRead, 0x21}, H::Step{H::kStop, 1},
          H::Step{H::kReadNonBlocking, 0x30}, H::Step{H::kDropExtractor, 0}, H::Step{H::kStart, 1},
          H::Step{H::kRead, 0x11}, H::Step{H::kDropTrack, 0}}) {
        orders.step[orders.steps++] = step;
    }
    H cut = seeks;
    cut.habits = H::kShortReads | H::kFault | H::kLastReadAll;
    cut.amount = 20;
    cut.call = 9;
    return {readAll, seeks, orders, cut};
}

// Every container, every script over it in turn; and the same MP4 files for their boxes alone.
void addMedia(const std::filesystem::path& media, std::vector<Seed>* seeds) {
    std::vector<std::pair<std::string, Bytes>> files = {
            {"dsf", asText(test::truncated(test::dsfFile(), 9000))},
            {"dff", asText(test::truncated(test::dffFile(), 9000))},
            {"ape", asText(test::truncated(test::apeFile(2), 9000))}};
    for (const auto& entry : std::filesystem::directory_iterator(media)) {
        if (!entry.is_regular_file()) continue;
        files.emplace_back(entry.path().filename().string(), contents(entry.path()));
    }
    std::sort(files.begin(), files.end());
    size_t turn = 0;
    for (const auto& [name, bytes] : files) {
        size_t number = 0;
        for (const auto& script : scripts()) {
            // Two scripts for each file keep the start short.
            if ((number++ + turn) % 2 != 0) continue;
            const auto* header = reinterpret_cast<const char*>(&script);
            seeds->push_back({"fuzz_extractor", name + "-" + std::to_string(number),
                              Bytes(header, sizeof(script)) + bytes});
        }
        ++turn;
        if (bytes.compare(4, 4, "ftyp") == 0) {
            seeds->push_back({"fuzz_mp4_boxes", name, Bytes("\0\0\x40", 3) + bytes});
        }
    }
}

}  // namespace

std::vector<Seed> makeSeeds(const std::filesystem::path& media) {
    std::vector<Seed> seeds;
    // Each begins with the bytes that the target takes for itself.
    const Bytes clean("\0\0\x40", 3);
    seeds.push_back({"fuzz_mp4_boxes", "plain", clean + plainMovie()});
    seeds.push_back({"fuzz_mp4_boxes", "fragmented", clean + fragmentedMovie()});
    for (char width = 1; width <= 4; ++width) {
        Bytes packet = {width, 0, 64};
        for (int unit = 1; unit <= 2; ++unit) {
            packet += Bytes(static_cast<size_t>(width - 1), '\0') + '\2' + "ab";
        }
        seeds.push_back({"fuzz_nal", "width" + std::to_string(width), packet});
    }
    for (int choice : {0, 0x80 | 0, 0x82, 0x81, 1}) {
        seeds.push_back({"fuzz_pcm", "choice" + std::to_string(choice),
                         Bytes{static_cast<char>(choice), 1, 0} + Bytes(77, 'x')});
    }
    Bytes operations;
    std::minstd_rand random(1);
    for (int i = 0; i < 3000; ++i)
        operations += static_cast<char>(random() >> 8);
    seeds.push_back({"fuzz_metadata", "operations", operations});
    addMedia(media, &seeds);
    return seeds;
}

}  // namespace orvel::fuzz
