#include <media/stagefright/foundation/MediaDefs.h>
#include <strings.h>

#include "framework/Format.h"
#include "verify/Verifier.h"

namespace orvel::probe {
namespace {

using Bytes = std::vector<uint8_t>;

// Units stand behind their lengths (ISO/IEC 14496-15).
Bytes withStartCodes(const Bytes& packet, size_t lengthBytes) {
    Bytes out;
    for (size_t at = 0; at < packet.size();) {
        if (packet.size() - at < lengthBytes) return {};
        uint64_t length = 0;
        for (size_t i = 0; i < lengthBytes; i++)
            length = length << 8 | packet[at++];
        if (at >= packet.size() || length > packet.size() - at) return {};
        if (length > 0) out.insert(out.end(), {0, 0, 0, 1});
        out.insert(out.end(), packet.data() + at, packet.data() + at + length);
        at += length;
    }
    return out;
}

Bytes widened(const Bytes& packet, bool isSigned) {
    Bytes out;
    for (const uint8_t byte : packet)
        out.insert(out.end(), {0, static_cast<uint8_t>(isSigned ? byte : byte ^ 0x80)});
    return out;
}

// The rest of a cut sample: of three bytes as it is, of two bytes nothing.
Bytes swapped(Bytes packet, size_t sampleBytes) {
    const size_t whole = packet.size() / sampleBytes * sampleBytes;
    for (uint8_t* at = packet.data(); at < packet.data() + whole; at += sampleBytes)
        std::reverse(at, at + sampleBytes);
    if (sampleBytes == 2 && whole < packet.size()) packet.back() = 0;
    return packet;
}

}  // namespace

Bytes delivered(const Json& format, int codedBitsPerSample, const Bytes& packet) {
    const std::string mime = textOf(format, host::kKeyMime);
    const bool isAiff = textOf(format, "file-format") == android::MEDIA_MIMETYPE_AUDIO_AIFF;
    const int64_t lengthBytes = intOf(format, "nal-length-size");
    if (strcasecmp(mime.c_str(), android::MEDIA_MIMETYPE_AUDIO_RAW) != 0) {
        const bool hasLengths = lengthBytes >= 1 && lengthBytes <= 4;
        return hasLengths ? withStartCodes(packet, static_cast<size_t>(lengthBytes)) : packet;
    }
    if (codedBitsPerSample == 8) return widened(packet, isAiff);
    const bool swaps = isAiff && (codedBitsPerSample == 16 || codedBitsPerSample == 24);
    return swaps ? swapped(packet, static_cast<size_t>(codedBitsPerSample) / 8) : packet;
}

}  // namespace orvel::probe
