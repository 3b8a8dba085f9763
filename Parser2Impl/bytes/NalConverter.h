// Rewrites one H.264 or H.265 sample from the length-prefixed form of ISO/IEC 14496-15
// (clause 5.3.3, "sample format") into the byte-stream form of Annex B of ITU-T H.264 and H.265.
// Pure functions over bytes: no state, any thread, no allocation.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvel {

constexpr size_t kMinNalLengthSize = 1;
constexpr size_t kMaxNalLengthSize = 4;
constexpr size_t kNalStartCodeSize = 4;

constexpr bool isNalLengthSize(size_t nalLengthSize) {
    return nalLengthSize >= kMinNalLengthSize && nalLengthSize <= kMaxNalLengthSize;
}

// The unsigned value of the nalLengthSize bytes at data, most significant first. The caller has
// checked isNalLengthSize(); for any other width the answer is 0 and nothing is read.
size_t parseNALSize(const uint8_t* data, size_t nalLengthSize);

enum class NalStatus {
    Ok,             // dstOffset is the length of the output
    Malformed,      // srcOffset and nalLength say where and what
    NoRoom,         // dstOffset is the position at which the next unit did not fit
    BadLengthSize,  // a length field of such a width was about to be read: the caller's mistake
};

struct NalResult {
    NalStatus status;
    // Bytes read. Malformed: the start of a length field that runs past the packet, else the first
    // byte after the length field.
    size_t srcOffset;
    // Malformed: the length of the unit that runs past the packet, 0 for a cut length field.
    size_t nalLength;
    size_t dstOffset;
};

// Writes each non-empty unit of src after a start code 00 00 00 01. Reads only [src, src +
// srcSize), writes only [dst, dst + dstCapacity); the two do not overlap. After a failure the bytes
// written so far are garbage to the caller. An empty source is Ok with length 0.
NalResult convertNalUnits(const uint8_t* src, size_t srcSize, size_t nalLengthSize, uint8_t* dst,
                          size_t dstCapacity);

}  // namespace orvel
