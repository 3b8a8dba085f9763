#include "CodecConfig.h"

#include <cstring>

#include "ByteOrder.h"

namespace orvel {

namespace {

constexpr size_t kAlacAtomHeadSize = kAlacExtradataSize - kAlacCookieSize;

// The multi-byte fields of ALACSpecificConfig by their offset in the cookie. The six bytes between
// the first two (version, bit depth, tuning and channels) have no byte order.
constexpr size_t kAlacFrameLength = 0;
constexpr size_t kAlacMaxRun = 10;
constexpr size_t kAlacWords[] = {kAlacFrameLength, 12 /* maxFrameBytes */, 16 /* avgBitRate */,
                                 20 /* sampleRate */};

}  // namespace

std::optional<AlacCookie> alacCookieFromExtradata(const uint8_t* data, size_t size) {
    if (size != kAlacExtradataSize) return std::nullopt;
    const uint8_t* config = data + kAlacAtomHeadSize;
    AlacCookie cookie;
    memcpy(cookie.data(), config, cookie.size());
    for (size_t offset : kAlacWords) {
        const uint32_t value = loadBe32(config + offset);
        memcpy(cookie.data() + offset, &value, sizeof(value));
    }
    const uint16_t maxRun = loadBe16(config + kAlacMaxRun);
    memcpy(cookie.data() + kAlacMaxRun, &maxRun, sizeof(maxRun));
    return cookie;
}

std::optional<FlacBlockSizes> flacBlockSizesFromStreamInfo(const uint8_t* data, size_t size) {
    if (size != kFlacStreamInfoSize) return std::nullopt;
    return FlacBlockSizes{loadBe16(data), loadBe16(data + 2),
                          static_cast<int32_t>(loadBe24(data + 4)),
                          static_cast<int32_t>(loadBe24(data + 7))};
}

}  // namespace orvel
