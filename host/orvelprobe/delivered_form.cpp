#include "delivered_form.h"

#include <media/stagefright/foundation/MediaDefs.h>
#include <strings.h>

#include <algorithm>

namespace orvel::probe {
namespace {

constexpr uint8_t kStartCode[] = {0, 0, 0, 1};

// Calls visit(data, size) for each unit that is not empty, behind its length field of `bytes`
// (ISO/IEC 14496-15). False for a malformed packet.
template <typename Visit>
bool forEachUnit(const uint8_t* packet, size_t size, size_t bytes, Visit visit) {
    for (size_t at = 0; at < size;) {
        if (size - at < bytes) return false;
        uint64_t length = 0;
        for (size_t i = 0; i < bytes; i++)
            length = length << 8 | packet[at++];
        if (at >= size || length > size - at) return false;
        if (length > 0) visit(packet + at, static_cast<size_t>(length));
        at += static_cast<size_t>(length);
    }
    return true;
}

// Byte `i` of the sample that PCM becomes.
uint8_t pcmByte(const DeliveredForm& form, const uint8_t* packet, size_t packetSize, size_t i) {
    if (form.kind == DeliveredForm::Kind::WidenedPcm) {
        if (i % 2 == 0) return 0;
        return form.isSigned ? packet[i / 2] : static_cast<uint8_t>(packet[i / 2] ^ 0x80);
    }
    const size_t whole = packetSize / form.bytes * form.bytes;
    // The rest of a cut sample: of three bytes as it is, of two bytes nothing.
    if (i >= whole) return form.bytes == 3 ? packet[i] : 0;
    const size_t first = i / form.bytes * form.bytes;
    return packet[first + form.bytes - 1 - (i - first)];
}

}  // namespace

DeliveredForm deliveredForm(const FormatReport& track, int codedBitsPerSample) {
    const std::string mime = track.text(host::kKeyMime);
    const bool isAiff = track.text("file-format") == android::MEDIA_MIMETYPE_AUDIO_AIFF;
    DeliveredForm form;
    const int32_t lengthSize = track.int32("nal-length-size");
    if (strcasecmp(mime.c_str(), android::MEDIA_MIMETYPE_AUDIO_RAW) == 0) {
        if (codedBitsPerSample == 8) {
            form = {DeliveredForm::Kind::WidenedPcm, 1, isAiff};
        } else if (isAiff && (codedBitsPerSample == 16 || codedBitsPerSample == 24)) {
            form = {DeliveredForm::Kind::SwappedPcm, static_cast<size_t>(codedBitsPerSample) / 8,
                    true};
        }
    } else if (lengthSize >= 1 && lengthSize <= 4) {
        form = {DeliveredForm::Kind::StartCodes, static_cast<size_t>(lengthSize), false};
    }
    return form;
}

size_t deliveredSize(const DeliveredForm& form, const uint8_t* packet, size_t packetSize) {
    if (form.kind == DeliveredForm::Kind::WidenedPcm) return 2 * packetSize;
    if (form.kind != DeliveredForm::Kind::StartCodes) return packetSize;
    size_t total = 0;
    const bool good = forEachUnit(packet, packetSize, form.bytes, [&](const uint8_t*, size_t size) {
        total += sizeof(kStartCode) + size;
    });
    return good ? total : 0;  // a malformed packet is delivered as an empty sample
}

std::optional<size_t> firstDifference(const DeliveredForm& form, const uint8_t* packet,
                                      size_t packetSize, const uint8_t* sample, size_t sampleSize) {
    const size_t wanted = deliveredSize(form, packet, packetSize);
    const size_t common = std::min(wanted, sampleSize);
    size_t at = 0;
    // False from the first byte on that differs; `at` stays there.
    const auto agrees = [&](const uint8_t* data, size_t size) {
        const size_t length = std::min(size, common - at);
        const uint8_t* end = data + length;
        const uint8_t* differs = std::mismatch(data, end, sample + at).first;
        at += static_cast<size_t>(differs - data);
        return differs == end;
    };
    bool same = true;
    switch (form.kind) {
        case DeliveredForm::Kind::Plain:
            same = agrees(packet, packetSize);
            break;
        case DeliveredForm::Kind::StartCodes:
            if (wanted == 0) break;
            forEachUnit(packet, packetSize, form.bytes, [&](const uint8_t* unit, size_t size) {
                same = same && agrees(kStartCode, sizeof(kStartCode)) && agrees(unit, size);
            });
            break;
        default:
            while (at < common && sample[at] == pcmByte(form, packet, packetSize, at))
                at++;
            same = at == common;
    }
    if (!same) return at;
    return wanted == sampleSize ? std::nullopt : std::optional<size_t>(common);
}

}  // namespace orvel::probe
