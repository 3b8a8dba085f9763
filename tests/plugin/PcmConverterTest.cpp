#include "bytes/PcmConverter.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace orvel {
namespace {

using Bytes = std::vector<uint8_t>;

TEST(PcmConverter, convertPcm_knownPackets_giveExactBytes) {
    const struct {
        const char* name;
        int32_t bits;
        bool isAiff;
        Bytes packet;
        Bytes output;
    } cases[] = {
            {"8 unsigned", 8, false, {0x80, 0, 0xFF, 0x7F}, {0, 0, 0, 0x80, 0, 0x7F, 0, 0xFF}},
            {"8 signed", 8, true, {0, 0x80, 0xFF, 0x7F}, {0, 0, 0, 0x80, 0, 0xFF, 0, 0x7F}},
            {"16 big", 16, true, {0x12, 0x34, 0xAB, 0xCD}, {0x34, 0x12, 0xCD, 0xAB}},
            {"16 little", 16, false, {0x12, 0x34, 0xAB, 0xCD}, {0x12, 0x34, 0xAB, 0xCD}},
            {"16 odd tail", 16, true, {0x12, 0x34, 0xAB}, {0x34, 0x12, 0}},
            {"24 big", 24, true, {1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}},
            {"24 little", 24, false, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}},
            {"24 one over", 24, true, {1, 2, 3, 4}, {3, 2, 1, 4}},
            {"24 two over", 24, true, {1, 2, 3, 4, 5}, {3, 2, 1, 4, 5}},
            {"24 two only", 24, true, {1, 2}, {1, 2}},
            {"32", 32, true, {1, 2, 3, 4}, {1, 2, 3, 4}},
            {"width unknown", 0, true, {1, 2, 3}, {1, 2, 3}},
            {"empty", 8, false, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes out(c.output.size(), 0xEE);
        const PcmResult result = convertPcm(out.data(), out.size(), c.packet.data(),
                                            c.packet.size(), c.bits, c.isAiff);
        EXPECT_TRUE(result.ok);
        EXPECT_EQ(result.length, c.output.size());
        EXPECT_EQ(out, c.output);
        if (out.empty()) continue;
        Bytes small(out.size() - 1, 0xEE);
        const PcmResult refused = convertPcm(small.data(), small.size(), c.packet.data(),
                                             c.packet.size(), c.bits, c.isAiff);
        EXPECT_FALSE(refused.ok);
        EXPECT_EQ(refused.length, c.output.size());
        EXPECT_EQ(small, Bytes(small.size(), 0xEE));
    }
}

// Every size around the vector steps, at every alignment of a word, against the per-sample rules.
TEST(PcmConverter, convertPcm_everySizeAndAlignment_equalsThePerSampleRule) {
    std::mt19937 random(8);
    for (size_t size = 0; size < 200; ++size) {
        for (size_t skew = 0; skew < 8; ++skew) {
            Bytes in(skew + size);
            for (uint8_t& byte : in)
                byte = static_cast<uint8_t>(random());
            const uint8_t* src = in.data() + skew;
            for (const size_t width : {1u, 2u, 3u}) {
                Bytes out(skew + 2 * size);
                uint8_t* dst = out.data() + skew;
                const auto bits = static_cast<int32_t>(8 * width);
                ASSERT_TRUE(convertPcm(dst, 2 * size, src, size, bits, true).ok);
                for (size_t i = 0; i < size - size % width; ++i) {
                    const uint8_t expected = src[i / width * width + width - 1 - i % width];
                    ASSERT_EQ(width == 1 ? dst[2 * i + 1] : dst[i], expected) << size << " " << i;
                }
            }
        }
    }
}

}  // namespace
}  // namespace orvel
