// Writes the fuzzers' first inputs, and what they have found so far, into folders named for their
// targets.
#include <fstream>
#include <iostream>

#include "Seeds.h"

int main(int argc, char** argv) try {
    if (argc != 4) {
        std::cerr << "usage: make_seeds FOLDER MEDIA_FOLDER FINDINGS\n";
        return 2;
    }
    auto seeds = orvel::fuzz::makeSeeds(argv[2]);
    for (auto& finding : orvel::test::readFindings(argv[3]))
        seeds.push_back(std::move(finding));
    for (const auto& seed : seeds) {
        const std::filesystem::path folder = std::filesystem::path(argv[1]) / seed.target;
        std::filesystem::create_directories(folder);
        std::ofstream file(folder / seed.name, std::ios::binary);
        file.exceptions(std::ios::failbit | std::ios::badbit);
        file.write(reinterpret_cast<const char*>(seed.input.data()),
                   static_cast<std::streamsize>(seed.input.size()));
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "make_seeds: " << error.what() << '\n';
    return 1;
}
