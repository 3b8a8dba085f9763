#include "NalConverter.h"

#include <cstring>

#include "ByteOrder.h"

namespace orvel {

namespace {

constexpr uint8_t kStartCode[kNalStartCodeSize] = {0, 0, 0, 1};

}  // namespace

size_t parseNALSize(const uint8_t* data, size_t nalLengthSize) {
    switch (nalLengthSize) {
        case 1:
            return data[0];
        case 2:
            return loadBe16(data);
        case 3:
            return loadBe24(data);
        case 4:
            return loadBe32(data);
        default:
            return 0;
    }
}

NalResult convertNalUnits(const uint8_t* src, size_t srcSize, size_t nalLengthSize, uint8_t* dst,
                          size_t dstCapacity) {
    size_t srcOffset = 0;
    size_t dstOffset = 0;
    while (srcOffset < srcSize) {
        // Every test subtracts from what is left, so no sum can overflow.
        if (nalLengthSize > srcSize - srcOffset) {
            return {NalStatus::Malformed, srcOffset, 0, dstOffset};
        }
        if (!isNalLengthSize(nalLengthSize)) {
            return {NalStatus::BadLengthSize, srcOffset, 0, dstOffset};
        }
        const size_t nalLength = parseNALSize(src + srcOffset, nalLengthSize);
        srcOffset += nalLengthSize;
        // A length field that ends the packet is malformed even when it holds 0.
        if (srcOffset >= srcSize || nalLength > srcSize - srcOffset) {
            return {NalStatus::Malformed, srcOffset, nalLength, dstOffset};
        }
        if (nalLength != 0) {
            const size_t room = dstCapacity - dstOffset;
            if (room < kNalStartCodeSize || room - kNalStartCodeSize < nalLength) {
                return {NalStatus::NoRoom, srcOffset, nalLength, dstOffset};
            }
            memcpy(dst + dstOffset, kStartCode, kNalStartCodeSize);
            memcpy(dst + dstOffset + kNalStartCodeSize, src + srcOffset, nalLength);
            dstOffset += kNalStartCodeSize + nalLength;
            srcOffset += nalLength;
        }
    }
    return {NalStatus::Ok, srcOffset, 0, dstOffset};
}

}  // namespace orvel
