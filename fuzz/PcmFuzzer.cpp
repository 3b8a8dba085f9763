// Any bytes as a packet of any width, into a buffer of any size: all of the result is written and
// equals the per-sample rule, or nothing is written.
#include "FuzzInput.h"
#include "bytes/PcmConverter.h"

using namespace orvel;

namespace {

uint8_t expectedByte(const uint8_t* src, size_t size, int32_t bits, bool isAiff, size_t i) {
    if (bits == 8) return i % 2 == 0 ? 0 : isAiff ? src[i / 2] : src[i / 2] ^ 0x80;
    if (bits == 16 && isAiff) return (i ^ 1) < size ? src[i ^ 1] : 0;
    if (bits == 24 && isAiff && i < size - size % 3) return src[i / 3 * 3 + 2 - i % 3];
    return src[i];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const uint8_t choice = input.byte();
    constexpr int32_t kWidths[] = {8, 16, 24, 32, 0, -8};
    const int32_t bits = kWidths[choice % 6];
    const bool isAiff = (choice & 0x80) != 0;
    const size_t capacity = input.word();
    const auto packet = input.rest();
    const size_t packetSize = input.restSize();
    std::unique_ptr<uint8_t[]> out(new uint8_t[capacity]);
    memset(out.get(), 0xEE, capacity);
    const PcmResult result =
            convertPcm(out.get(), capacity, packet.get(), packetSize, bits, isAiff);
    fuzz::require(result.length == (bits == 8 ? 2 * packetSize : packetSize));
    fuzz::require(result.ok == (result.length <= capacity));
    const size_t written = result.ok ? result.length : 0;
    for (size_t i = 0; i < capacity; ++i) {
        const uint8_t expected =
                i < written ? expectedByte(packet.get(), packetSize, bits, isAiff, i) : 0xEE;
        fuzz::require(out[i] == expected);
    }
    return 0;
}
