#pragma once

#include <cstdint>
#include <vector>

#include "framework/DataSource.h"

namespace orvel::bench {

/** A packet, in the order in which the demuxer delivers it. */
struct PacketSize {
    enum class Kind : uint8_t { Audio, Video };
    Kind kind;
    uint32_t bytes;
};

/**
 * The most bytes that a read-ahead over empty caches holds when it reads on until each kind of
 * track that the file has is full (65 audio packets, 31 video packets) or the file ends, wherever
 * in the file it begins.
 */
uint64_t fullRuleBytes(const std::vector<PacketSize>& packets);

/** The packets of a file with at most one track of each kind. Throws BareError. */
std::vector<PacketSize> packetSizes(host::DataSource& source, const char* demuxer);

}  // namespace orvel::bench
