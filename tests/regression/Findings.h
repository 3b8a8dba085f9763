#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/SyntheticFiles.h"

namespace orvel::test {

/** An input that once broke something, or is known to be hard. */
struct Finding {
    std::string target;  // the fuzz target that takes it
    std::string name;
    Bytes input;
};
void PrintTo(const Finding& finding, std::ostream* out);

/** The lines of findings.txt, whose head says what they look like. Throws std::runtime_error for
 * one that looks otherwise. */
std::vector<Finding> readFindings(const std::string& path);

/** Inputs of fuzz_extractor that are made out of the tests' media. */
std::vector<Finding> hostileMedia();

}  // namespace orvel::test
