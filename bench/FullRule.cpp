#include "FullRule.h"

#include <algorithm>
#include <array>
#include <deque>

#include "BareLoop.h"

namespace orvel::bench {

uint64_t fullRuleBytes(host::DataSource& source, const char* demuxer) {
    BareDemuxer opened(source, demuxer);
    // Sound, pictures.
    const std::array<int, 2> streams = {opened.bestStream(AVMEDIA_TYPE_AUDIO),
                                        opened.bestStream(AVMEDIA_TYPE_VIDEO)};
    const std::array<size_t, 2> full = {streams[0] < 0 ? 0u : 65u, streams[1] < 0 ? 0u : 31u};
    struct Packet {
        size_t kind;
        uint64_t bytes;
    };
    std::deque<Packet> window;  // what a read-ahead holds that began at its first packet
    std::array<size_t, 2> held = {0, 0};
    uint64_t bytes = 0, most = 0;
    while (const AVPacket* packet = opened.next()) {
        const size_t kind = packet->stream_index == streams[1] ? 1 : 0;
        window.push_back({kind, static_cast<uint64_t>(packet->size)});
        ++held[kind];
        bytes += window.back().bytes;
        most = std::max(most, bytes);
        // A later beginning lets go of the first packets, until it has to read on.
        while (held[0] >= full[0] && held[1] >= full[1]) {
            --held[window.front().kind];
            bytes -= window.front().bytes;
            window.pop_front();
        }
    }
    return most;
}

}  // namespace orvel::bench
