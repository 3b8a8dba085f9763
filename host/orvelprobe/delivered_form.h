// What a packet becomes on its way to a decoder, undone: byte work only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "report.h"

namespace orvel::probe {

// How a track delivers its packets.
struct DeliveredForm {
    enum class Kind {
        Plain,
        StartCodes,  // AVC and HEVC units behind 00 00 00 01 in place of their length
        WidenedPcm,  // 8 bits as the upper half of 16
        SwappedPcm,  // big-endian samples as little-endian ones
    };
    Kind kind = Kind::Plain;
    size_t bytes = 0;       // of a length field, or of a sample
    bool isSigned = false;  // of 8-bit samples
};

DeliveredForm deliveredForm(const FormatReport& track, int codedBitsPerSample);

// Where the sample differs from what the packet must have become: an offset in the sample, which
// is its size when it is a beginning of the right one. Nothing when they agree.
std::optional<size_t> firstDifference(const DeliveredForm& form, const uint8_t* packet,
                                      size_t packetSize, const uint8_t* sample, size_t sampleSize);
// The size that the sample must have.
size_t deliveredSize(const DeliveredForm& form, const uint8_t* packet, size_t packetSize);

}  // namespace orvel::probe
