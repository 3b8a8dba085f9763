#pragma once

#include <filesystem>
#include <vector>

#include "regression/Findings.h"

namespace orvel::fuzz {

/** The first inputs of the targets that take files, from a folder with the files of seeds.txt: each
 * file under two uses of the extractor, the MP4 files also for their boxes alone. Throws
 * std::runtime_error when the folder cannot be read. */
std::vector<test::Finding> makeSeeds(const std::filesystem::path& media);

}  // namespace orvel::fuzz
