// What the fuzz targets found and what is known to be hard, through the entries that the fuzzer
// itself calls; and the inputs that it begins with. An entry that finds something wrong aborts.

#include <gtest/gtest.h>

#include <map>

#include "Seeds.h"
#include "regression/Findings.h"

using FuzzEntry = int(const uint8_t* data, size_t size);
extern "C" FuzzEntry fuzz_extractor, fuzz_mp4_boxes, fuzz_nal, fuzz_pcm;

namespace orvel::test {

namespace {

const std::map<std::string, FuzzEntry*> kTargets = {{"fuzz_extractor", fuzz_extractor},
                                                    {"fuzz_mp4_boxes", fuzz_mp4_boxes},
                                                    {"fuzz_nal", fuzz_nal},
                                                    {"fuzz_pcm", fuzz_pcm}};

std::vector<Finding> findings() {
    std::vector<Finding> all = readFindings(ORVEL_FINDINGS);
    for (Finding& made : hostileMedia())
        all.push_back(std::move(made));
    return all;
}

class KnownInput : public ::testing::TestWithParam<Finding> {};

INSTANTIATE_TEST_SUITE_P(Regression, KnownInput, ::testing::ValuesIn(findings()),
                         [](const auto& info) {
                             return info.param.target + "_" + info.param.name;
                         });

TEST_P(KnownInput, isHandled) {
    kTargets.at(GetParam().target)(GetParam().input.data(), GetParam().input.size());
}

TEST(Regression, seedsAreHandled) {
    const std::vector<Finding> seeds = fuzz::makeSeeds(ORVEL_SEED_MEDIA);
    EXPECT_GT(seeds.size(), 60u);
    for (const Finding& seed : seeds) {
        SCOPED_TRACE(seed.name);
        kTargets.at(seed.target)(seed.input.data(), seed.input.size());
    }
}

}  // namespace

}  // namespace orvel::test
