// Any bytes as a packet, any width, any capacity. What comes out is a sequence of units that were
// in the packet, and the failure names a place in it.
#include <cstring>

#include "FuzzInput.h"
#include "bytes/NalConverter.h"

using namespace orvel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const size_t width = input.byte() % 6;
    const size_t capacity = input.word();
    const auto packet = input.rest();
    const size_t packetSize = input.restSize();
    std::unique_ptr<uint8_t[]> out(new uint8_t[capacity]);
    const NalResult result = convertNalUnits(packet.get(), packetSize, width, out.get(), capacity);
    fuzz::require(result.dstOffset <= capacity && result.srcOffset <= packetSize);
    fuzz::require(isNalLengthSize(width) || packetSize == 0 || result.status != NalStatus::Ok);
    if (!isNalLengthSize(width)) return 0;

    size_t in = 0;
    size_t written = 0;
    while (written < result.dstOffset) {
        const size_t length = parseNALSize(packet.get() + in, width);
        in += width;
        if (length == 0) continue;
        fuzz::require(memcmp(out.get() + written, "\0\0\0\1", 4) == 0);
        fuzz::require(memcmp(out.get() + written + 4, packet.get() + in, length) == 0);
        in += length;
        written += 4 + length;
    }
    fuzz::require(written == result.dstOffset);
    return 0;
}
