#include "Seeds.h"

#include <fstream>
#include <iterator>
#include <map>

#include "support/ExtractorScript.h"
#include "support/SyntheticFiles.h"

namespace orvel::fuzz {

namespace {

using test::Bytes;
using test::operator+;
using H = test::ScriptHeader;

constexpr uint8_t kCut = H::kShortReads | H::kFault | H::kLastReadAll;

// The files take turns: every other file goes through every other row. A seek's argument: place and
// track.
const H kScripts[] = {
        {},
        // Every mode, inside the duration and outside.
        {H::kLastReadAll,
         0,
         0,
         {},
         0,
         11,
         {{H::kStartAll, 0},
          {H::kSeek0, 0x00},
          {H::kSeek0, 0xB1},
          {H::kSeek1, 0x20},
          {H::kSeek1, 0xC1},
          {H::kSeek2, 0x40},
          {H::kSeek2, 0xD1},
          {H::kSeek3, 0x60},
          {H::kSeek3, 0xE1},
          {H::kSeek4, 0x80},
          {H::kSeek4, 0xF1}}},
        // Tracks that start, stop and go while others live on without their extractor.
        {0,
         0,
         0,
         {},
         0,
         11,
         {{H::kTrackFormat, 0x10},
          {H::kFileFormat, 0},
          {H::kStart, 1},
          {H::kStart, 0},
          {H::kRead, 0x21},
          {H::kStop, 1},
          {H::kReadNonBlocking, 0x30},
          {H::kDropExtractor, 0},
          {H::kStart, 1},
          {H::kRead, 0x11},
          {H::kDropTrack, 0}}},
        // Short reads, the tenth of which fails.
        {kCut, 20, 9, {}, 0, 3, {{H::kStartAll, 0}, {H::kSeek0, 0x20}, {H::kSeek3, 0x60}}},
};

}  // namespace

std::vector<test::Finding> makeSeeds(const std::filesystem::path& media) {
    std::map<std::string, Bytes> files = {{"dsf", test::truncated(test::dsfFile(), 9000)},
                                          {"dff", test::truncated(test::dffFile(), 9000)},
                                          {"ape", test::truncated(test::apeFile(2), 9000)}};
    for (const auto& entry : std::filesystem::directory_iterator(media)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        files[entry.path().filename()] = {std::istreambuf_iterator<char>(file), {}};
    }
    std::vector<test::Finding> seeds;
    size_t turn = 0;
    for (const auto& [name, bytes] : files) {
        for (size_t i = turn++ % 2; i < std::size(kScripts); i += 2) {
            const auto* header = reinterpret_cast<const uint8_t*>(&kScripts[i]);
            seeds.push_back({"fuzz_extractor", name + "-" + std::to_string(i),
                             Bytes(header, header + sizeof(H)) + bytes});
        }
        if (std::string(bytes.begin() + 4, bytes.begin() + 8) == "ftyp")
            seeds.push_back({"fuzz_mp4_boxes", name, Bytes{0, 0, 64} + bytes});
    }
    return seeds;
}

}  // namespace orvel::fuzz
