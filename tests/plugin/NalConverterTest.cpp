#include "bytes/NalConverter.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace orvel
