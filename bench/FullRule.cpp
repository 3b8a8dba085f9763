#include "FullRule.h"

#include <algorithm>
#include <array>

#include "BareLoop.h"

namespace orvel::bench {
namespace {

// By Kind.
constexpr std::array<size_t, 2> kFullCounts = {65, 31};

size_t indexOf(const PacketSize& packet) {
    return static_cast<size_t>(packet.kind);
}

}  // namespace

uint64_t fullRuleBytes(const std::vector<PacketSize>& packets) {
    std::array<size_t, 2> wanted = {0, 0};
    for (const PacketSize& packet : packets)
        wanted[indexOf(packet)] = kFullCounts[indexOf(packet)];
    std::array<size_t, 2> held = {0, 0};
    uint64_t bytes = 0;
    uint64_t most = 0;
    size_t end = 0;
    for (const PacketSize& first : packets) {
        while (end < packets.size() && (held[0] < wanted[0] || held[1] < wanted[1])) {
            ++held[indexOf(packets[end])];
            bytes += packets[end].bytes;
            ++end;
        }
        most = std::max(most, bytes);
        --held[indexOf(first)];
        bytes -= first.bytes;
    }
    return most;
}

std::vector<PacketSize> packetSizes(host::DataSource& source, const char* demuxer) {
    BareDemuxer opened(source, demuxer);
    const int video = opened.bestStream(AVMEDIA_TYPE_VIDEO);
    std::vector<PacketSize> packets;
    while (const AVPacket* packet = opened.next()) {
        packets.push_back(
                {packet->stream_index == video ? PacketSize::Kind::Video : PacketSize::Kind::Audio,
                 static_cast<uint32_t>(packet->size)});
    }
    return packets;
}

}  // namespace orvel::bench
