#include "ffmpeg/PcmConverter.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "ffmpeg/CodecConfig.h"

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
            {"empty 24", 24, true, {}, {}},
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
TEST(PcmConverter, helpers_everySizeAndAlignment_equalThePerSampleRule) {
    std::mt19937 random(8);
    for (size_t size = 0; size < 200; ++size) {
        for (size_t skew = 0; skew < 8; ++skew) {
            Bytes in(skew + size);
            for (uint8_t& byte : in)
                byte = static_cast<uint8_t>(random());
            const uint8_t* src = in.data() + skew;

            for (bool isSigned : {false, true}) {
                Bytes wide(2 * size);
                memcpyToI16FromU8(reinterpret_cast<int16_t*>(wide.data()), src, size, isSigned);
                Bytes inPlace(in.begin() + static_cast<ptrdiff_t>(skew), in.end());
                inPlace.resize(2 * size);
                memcpyToI16FromU8(reinterpret_cast<int16_t*>(inPlace.data()), inPlace.data(), size,
                                  isSigned);
                ASSERT_EQ(inPlace, wide);
                for (size_t i = 0; i < size; ++i) {
                    ASSERT_EQ(wide[2 * i], 0);
                    ASSERT_EQ(wide[2 * i + 1], isSigned ? src[i] : src[i] ^ 0x80);
                }
            }

            Bytes swapped(skew + size, 0xEE);
            memcpyToI16leFromUint8be(reinterpret_cast<int16_t*>(swapped.data() + skew), src, size);
            for (size_t i = 0; i < size; ++i) {
                const bool tail = i == size - 1 && size % 2 != 0;
                ASSERT_EQ(swapped[skew + i], tail ? 0xEE : src[i ^ 1]) << size << " at " << i;
            }

            Bytes reversed(size);
            memcpyToI24leFromUint8be(reversed.data(), src, size);
            for (size_t i = 0; i < size; ++i) {
                const bool tail = i >= size - size % 3;
                ASSERT_EQ(reversed[i], tail ? src[i] : src[i / 3 * 3 + 2 - i % 3]) << size;
            }
        }
    }
}

TEST(CodecConfig, alacCookie_isTheConfigInHostOrder_andOtherSizesAreRefused) {
    const uint8_t extradata[kAlacExtradataSize] = {0,    0,  0,  36,   'a',  'l',  'a', 'c',  0,
                                                   0,    0,  0,  0,    0,    0x10, 0,   0,    16,
                                                   40,   10, 14, 2,    0x01, 0xFF, 0,   0,    0x20,
                                                   0x18, 0,  1,  0x23, 0x45, 0,    0,   0xAC, 0x44};
    const AlacCookie expected = {0,    0x10, 0, 0, 0,    16,   40, 10, 14,   2,    0xFF, 0x01,
                                 0x18, 0x20, 0, 0, 0x45, 0x23, 1,  0,  0x44, 0xAC, 0,    0};
    EXPECT_EQ(alacCookieFromExtradata(extradata, sizeof(extradata)), expected);
    EXPECT_FALSE(alacCookieFromExtradata(extradata, 35));
    EXPECT_FALSE(alacCookieFromExtradata(extradata, 48));
    EXPECT_FALSE(flacBlockSizesFromStreamInfo(extradata, 42));
}

}  // namespace
}  // namespace orvel
