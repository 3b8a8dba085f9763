#pragma once

#include <stddef.h>

#include "FFmpegCompat.h"

namespace orvel {

// Packets that have been delivered, on their way back to the thread that reads new ones: memory is
// freed where it was allocated, and a packet structure is used again. Holds few of them and little
// data; what is beyond that is freed at once. Owns the packets in it; no lock.
class PacketRecycler {
  public:
    PacketRecycler() = default;
    ~PacketRecycler() {
        while (mCount > 0) {
            AVPacket* packet = pop();
            av_packet_free(&packet);
        }
    }
    PacketRecycler(const PacketRecycler&) = delete;
    PacketRecycler& operator=(const PacketRecycler&) = delete;

    // Takes ownership. Not null.
    void give(AVPacket* packet) {
        const auto size = static_cast<size_t>(packet->size);
        if (mCount == kMaxPackets || size > kMaxBytes - mBytes) {
            av_packet_free(&packet);
            return;
        }
        mBytes += size;
        mPackets[mCount++] = packet;
    }

    // An empty packet, now the caller's; null when there is no memory.
    AVPacket* take() {
        if (mCount == 0) return av_packet_alloc();
        AVPacket* packet = pop();
        av_packet_unref(packet);
        return packet;
    }

  private:
    static constexpr size_t kMaxPackets = 64;
    static constexpr size_t kMaxBytes = 1 << 20;  // of payload

    AVPacket* pop() {
        AVPacket* packet = mPackets[--mCount];
        mBytes -= static_cast<size_t>(packet->size);
        return packet;
    }

    size_t mCount = 0;
    size_t mBytes = 0;
    AVPacket* mPackets[kMaxPackets];
};

}  // namespace orvel
