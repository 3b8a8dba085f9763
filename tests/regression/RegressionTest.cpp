// What the fuzz targets found and what is known to be hard, through the entries that the fuzzer
// itself calls; and the inputs that it begins with. An entry that finds something wrong aborts.

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "Seeds.h"
#include "regression/Findings.h"

using FuzzEntry = int(const uint8_t* data, size_t size);
extern "C" FuzzEntry fuzz_extractor, fuzz_metadata, fuzz_mp4_boxes, fuzz_nal, fuzz_pcm;

namespace orvel::test {

namespace {

struct Target {
    const char* name;
    FuzzEntry* entry;
};
constexpr Target kTargets[] = {
        {"fuzz_extractor", fuzz_extractor},
        {"fuzz_metadata", fuzz_metadata},
        {"fuzz_mp4_boxes", fuzz_mp4_boxes},
        {"fuzz_nal", fuzz_nal},
        {"fuzz_pcm", fuzz_pcm},
};

void run(const std::string& target, const uint8_t* data, size_t size) {
    const auto found = std::find_if(std::begin(kTargets), std::end(kTargets),
                                    [&](const Target& one) { return one.name == target; });
    if (found == std::end(kTargets)) throw std::runtime_error("no fuzz target " + target);
    found->entry(data, size);
}

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
    run(GetParam().target, GetParam().input.data(), GetParam().input.size());
}

class Seeds : public ::testing::TestWithParam<Target> {};

INSTANTIATE_TEST_SUITE_P(Regression, Seeds, ::testing::ValuesIn(kTargets),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(Seeds, areHandled) {
    int replayed = 0;
    for (const fuzz::Seed& seed : fuzz::makeSeeds(ORVEL_SEED_MEDIA)) {
        if (seed.target != GetParam().name) continue;
        SCOPED_TRACE(seed.name);
        const auto* data = reinterpret_cast<const uint8_t*>(seed.bytes.data());
        run(seed.target, data, seed.bytes.size());
        ++replayed;
    }
    EXPECT_GT(replayed, 0);
}

}  // namespace

}  // namespace orvel::test
