// Writes the fuzzers' first inputs: one small well-formed case of each kind.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/ExtractorScript.h"
#include "support/SyntheticFiles.h"

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

void write(const std::filesystem::path& folder, const char* name, const Bytes& bytes) {
    std::filesystem::create_directories(folder);
    std::ofstream file(folder / name, std::ios::binary);
    file << bytes;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + (folder / name).string());
}

Bytes contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Bytes asText(const orvel::test::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

// Each a different use of the extractor; the files take turns.
std::vector<orvel::test::ScriptHeader> scripts() {
    using H = orvel::test::ScriptHeader;
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
void writeMedia(const std::filesystem::path& root, const std::filesystem::path& media) {
    std::vector<std::pair<std::string, Bytes>> files = {
            {"dsf", asText(orvel::test::truncated(orvel::test::dsfFile(), 9000))},
            {"dff", asText(orvel::test::truncated(orvel::test::dffFile(), 9000))},
            {"ape", asText(orvel::test::truncated(orvel::test::apeFile(2), 9000))}};
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
            write(root / "fuzz_extractor", (name + "-" + std::to_string(number)).c_str(),
                  Bytes(header, sizeof(script)) + bytes);
        }
        ++turn;
        if (bytes.compare(4, 4, "ftyp") == 0) {
            write(root / "fuzz_mp4_boxes", name.c_str(), Bytes("\0\0\x40", 3) + bytes);
        }
    }
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::cerr << "usage: make_seeds FOLDER MEDIA_FOLDER\n";
        return 2;
    }
    const std::filesystem::path root = argv[1];
    // Each begins with the bytes that the target takes for itself.
    const Bytes clean("\0\0\x40", 3);
    write(root / "fuzz_mp4_boxes", "plain", clean + plainMovie());
    write(root / "fuzz_mp4_boxes", "fragmented", clean + fragmentedMovie());
    for (char width = 1; width <= 4; ++width) {
        Bytes packet = {width, 0, 64};
        for (int unit = 1; unit <= 2; ++unit) {
            packet += Bytes(static_cast<size_t>(width - 1), '\0') + '\2' + "ab";
        }
        write(root / "fuzz_nal", ("width" + std::to_string(width)).c_str(), packet);
    }
    for (int choice : {0, 0x80 | 0, 0x82, 0x81, 1}) {
        write(root / "fuzz_pcm", ("choice" + std::to_string(choice)).c_str(),
              Bytes{static_cast<char>(choice), 1, 0} + Bytes(77, 'x'));
    }
    Bytes operations;
    std::minstd_rand random(1);
    for (int i = 0; i < 3000; ++i)
        operations += static_cast<char>(random() >> 8);
    write(root / "fuzz_metadata", "operations", operations);
    writeMedia(root, argv[2]);
    return 0;
} catch (const std::exception& error) {
    std::cerr << "make_seeds: " << error.what() << '\n';
    return 1;
}
