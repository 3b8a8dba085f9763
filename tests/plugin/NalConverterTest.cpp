#include "ffmpeg/NalConverter.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace orvel {
namespace {

using Bytes = std::vector<uint8_t>;

struct Case {
    const char* name;
    size_t lengthSize;
    Bytes packet;
    size_t capacity;
    NalResult result;  // dstOffset is the length when Ok, and unspecified when Malformed
    Bytes output;
};

TEST(NalConverter, convertNalUnits_knownPackets_giveExactBytesOrTheLoggedPosition) {
    constexpr auto kOk = NalStatus::Ok;
    constexpr auto kBad = NalStatus::Malformed;
    // clang-format off
    const Case cases[] = {
            {"empty", 4, {}, 0, {kOk, 0, 0, 0}, {}},
            {"width 4", 4, {0, 0, 0, 2, 0xAA, 0xBB, 0, 0, 0, 1, 0xCC}, 11, {kOk, 11, 0, 11},
             {0, 0, 0, 1, 0xAA, 0xBB, 0, 0, 0, 1, 0xCC}},
            {"width 3", 3, {0, 0, 1, 0xAA}, 5, {kOk, 4, 0, 5}, {0, 0, 0, 1, 0xAA}},
            {"width 2", 2, {0, 2, 0xAA, 0xBB}, 6, {kOk, 4, 0, 6}, {0, 0, 0, 1, 0xAA, 0xBB}},
            {"width 1", 1, {2, 0xAA, 0xBB, 1, 0xCC}, 11, {kOk, 5, 0, 11},
             {0, 0, 0, 1, 0xAA, 0xBB, 0, 0, 0, 1, 0xCC}},
            {"empty unit", 4, {0, 0, 0, 0, 0, 0, 0, 1, 9}, 5, {kOk, 9, 0, 5}, {0, 0, 0, 1, 9}},
            {"unit overruns", 4, {0, 0, 0, 5, 0xAA}, 64, {kBad, 4, 5, 0}, {}},
            {"length field cut", 4, {0, 0, 0, 1, 0xAA, 0, 0}, 64, {kBad, 5, 0, 5}, {}},
            {"length field at the end", 4, {0, 0, 0, 1, 9, 0, 0, 0, 0}, 64, {kBad, 9, 0, 5}, {}},
            {"top bit", 4, {0x80, 0, 0, 0, 0xAA}, 64, {kBad, 4, 2147483648u, 0}, {}},
            {"no room", 1, {5, 1, 2, 3, 4, 5}, 8, {NalStatus::NoRoom, 1, 5, 0}, {}},
            {"no room for the second", 1, {1, 7, 1, 8}, 9, {NalStatus::NoRoom, 3, 1, 5}, {}},
            {"no room for a start code", 4, {0, 0, 0, 1, 9}, 3, {NalStatus::NoRoom, 4, 1, 0}, {}},
            {"bad width", 5, {0, 0, 0, 0, 1, 9}, 64, {NalStatus::BadLengthSize, 0, 0, 0}, {}},
            {"bad width, field cut", 5, {0, 0, 0, 1}, 64, {kBad, 0, 0, 0}, {}},
            {"width 0", 0, {0}, 64, {NalStatus::BadLengthSize, 0, 0, 0}, {}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes out(c.capacity);
        const NalResult result = convertNalUnits(c.packet.data(), c.packet.size(), c.lengthSize,
                                                 out.data(), out.size());
        ASSERT_EQ(result.status, c.result.status);
        EXPECT_EQ(result.srcOffset, c.result.srcOffset);
        EXPECT_EQ(result.nalLength, c.result.nalLength);
        EXPECT_EQ(result.dstOffset, c.result.dstOffset);
        if (result.status != NalStatus::Ok) continue;
        out.resize(result.dstOffset);
        EXPECT_EQ(out, c.output);
    }
}

// Damaged and whole packets into buffers around the needed size; the expectation is built unit by
// unit from what was put in, up to the damage.
TEST(NalConverter, convertNalUnits_randomPackets_equalTheUnitsPutIn) {
    std::mt19937 random(20200229);
    const auto below = [&random](size_t n) { return static_cast<size_t>(random() % n); };
    for (int round = 0; round < 20000; ++round) {
        const size_t width = 1 + below(4);
        Bytes packet;
        Bytes expected;
        for (size_t unit = 0, units = 1 + below(5); unit < units; ++unit) {
            // The last unit is not empty: a length field must not end the packet.
            const size_t length = below(60) + (unit + 1 == units ? 1 : 0);
            for (size_t i = 1; i <= width; ++i) {
                packet.push_back(static_cast<uint8_t>(length >> 8 * (width - i)));
            }
            if (length != 0) expected.insert(expected.end(), {0, 0, 0, 1});
            for (size_t i = 0; i < length; ++i) {
                packet.push_back(static_cast<uint8_t>(random()));
                expected.push_back(packet.back());
            }
        }
        const size_t cut = below(3) == 0 ? 1 + below(packet.size()) : 0;
        packet.resize(packet.size() - cut);
        Bytes(packet).swap(packet);  // no spare capacity behind the end
        Bytes out(below(2) == 0 ? expected.size() : below(expected.size()));
        const NalResult result =
                convertNalUnits(packet.data(), packet.size(), width, out.data(), out.size());
        if (cut == 0) {
            ASSERT_EQ(result.status == NalStatus::Ok, out.size() == expected.size());
        }
        if (result.status == NalStatus::Ok) {
            ASSERT_EQ(result.srcOffset, packet.size());
        }
        ASSERT_LE(result.dstOffset, out.size());
        out.resize(result.dstOffset);
        ASSERT_EQ(out, Bytes(expected.begin(), expected.begin() + result.dstOffset));
    }
}

}  // namespace
}  // namespace orvel
