// The fuzzers' first inputs: one small well-formed case of each kind.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvel::fuzz {

struct Seed {
    std::string target;
    std::string name;
    std::string bytes;
};

// `media`: a folder with the files of seeds.txt. Throws std::runtime_error when one cannot be read.
std::vector<Seed> makeSeeds(const std::filesystem::path& media);

}  // namespace orvel::fuzz
