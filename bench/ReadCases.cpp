// A whole file: every sample of every track, as fast as it comes or with a consumer that works.
#include <media/stagefright/MediaErrors.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "BareLoop.h"
#include "Case.h"
#include "PluginSide.h"

namespace orvel::bench {
namespace {

// What a consumer does with a sample: nothing but computing, the same amount on both sides however
// busy the machine is.
void work(uint64_t steps) {
    uint64_t value = 1;
    for (uint64_t i = 0; i < steps; ++i) {
        value = value * 6364136223846793005u + 1442695040888963407u;
        asm volatile("" : "+r"(value));
    }
}

}  // namespace

void bareRead(Turn& turn) {
    BareDemuxer demuxer(turn.source, turn.row.file.demuxer);
    Payload payload;
    turn.meter.begin();
    while (const AVPacket* packet = demuxer.next()) {
        turn.meter.delivered(turn.row.file.isBigEndian ? payload.swap16(*packet)
                                                       : payload.copy(*packet));
        work(turn.work);
    }
    turn.meter.end();
}

void pluginRead(Turn& turn) {
    Session session(turn.plugin, turn.source, sniffTaken(turn.plugin, turn.source));
    turn.meter.begin();
    const auto results = session.player().play({}, [&](size_t, host::Buffer& buffer) {
        turn.meter.delivered(buffer.size());  // the copy was the plug-in's own
        work(turn.work);
        return true;
    });
    turn.meter.end();
    for (const auto& result : results) {
        if (result.status != android::ERROR_END_OF_STREAM) {
            throw std::runtime_error("track " + std::to_string(result.index) +
                                     " ended with status " + std::to_string(result.status));
        }
    }
}

uint64_t workOfBareLoop(Turn& turn) {
    constexpr uint64_t kSteps = 20'000'000;
    std::vector<double> steps;
    for (int i = 0; i < 3; ++i) {
        Turn loop{turn.plugin, turn.source, turn.row};
        bareRead(loop);
        Meter meter(turn.source);
        meter.begin();
        work(kSteps);
        meter.end();
        steps.push_back(kSteps * loop.meter.result().seconds / meter.result().seconds /
                        static_cast<double>(loop.meter.result().samples));
    }
    return static_cast<uint64_t>(median(steps));
}

}  // namespace orvel::bench
