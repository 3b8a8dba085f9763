// Writes the fuzzers' first inputs into folders named for their targets.
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "Seeds.h"

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::cerr << "usage: make_seeds FOLDER MEDIA_FOLDER\n";
        return 2;
    }
    for (const orvel::fuzz::Seed& seed : orvel::fuzz::makeSeeds(argv[2])) {
        const std::filesystem::path folder = std::filesystem::path(argv[1]) / seed.target;
        std::filesystem::create_directories(folder);
        std::ofstream file(folder / seed.name, std::ios::binary);
        file << seed.bytes;
        file.close();
        if (!file) throw std::runtime_error("cannot write " + (folder / seed.name).string());
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "make_seeds: " << error.what() << '\n';
    return 1;
}
