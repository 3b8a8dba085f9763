// Writes the fuzzers' first inputs: one small well-formed case of each kind.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

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

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::cerr << "usage: make_seeds FOLDER\n";
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
    return 0;
} catch (const std::exception& error) {
    std::cerr << "make_seeds: " << error.what() << '\n';
    return 1;
}
