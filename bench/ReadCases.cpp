// A whole file: every sample of every track, as fast as it comes or with a consumer that works.
#include <media/stagefright/MediaErrors.h>

#include <chrono>
#include <string>

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

double secondsOfBareLoop(Turn& turn, uint64_t* samples) {
    Meter meter;
    Turn once{turn.plugin, turn.source, turn.media, meter};
    bareRead(once);
    const Measure measure = meter.result();
    *samples = measure.samples;
    return measure.seconds;
}

template <typename OnPacket>
void bareReadWith(Turn& turn, OnPacket onPacket) {
    BareDemuxer demuxer(turn.source, turn.media.demuxer);
    turn.meter.begin();
    while (const AVPacket* packet = demuxer.next())
        onPacket(*packet);
    turn.meter.end();
}

void pluginReadWith(Turn& turn, const host::Player::OnSample& onSample) {
    Session session(turn.plugin, turn.source, sniffTaken(turn.plugin, turn.source));
    turn.meter.begin();
    const auto results = session.player().play({}, onSample);
    turn.meter.end();
    double bytes = 0;
    for (const auto& result : results)
        bytes += static_cast<double>(result.bytes);
    turn.meter.figure("delivered", 1e-6 * bytes / turn.meter.seconds(), "MB/s");
    for (const auto& result : results) {
        if (result.status != android::ERROR_END_OF_STREAM) {
            throw PluginSideError("track " + std::to_string(result.index) + " ended with status " +
                                  std::to_string(result.status));
        }
    }
}

}  // namespace

void bareRead(Turn& turn) {
    Payload payload;
    bareReadWith(turn, [&](const AVPacket& packet) { turn.meter.delivered(payload.copy(packet)); });
}

void bareReadSwapped(Turn& turn) {
    Payload payload;
    bareReadWith(turn,
                 [&](const AVPacket& packet) { turn.meter.delivered(payload.swap16(packet)); });
}

void pluginRead(Turn& turn) {
    // The copy into the framework's buffer is the plug-in's own.
    pluginReadWith(turn, [&](size_t, host::Buffer& buffer) {
        turn.meter.delivered(buffer.size());
        return true;
    });
}

uint64_t prepareWork(Turn& turn) {
    constexpr int kRuns = 3;
    constexpr uint64_t kSteps = 20'000'000;
    std::vector<double> loops, steps;
    uint64_t samples = 1;
    for (int i = 0; i < kRuns; ++i) {
        loops.push_back(secondsOfBareLoop(turn, &samples));
        const auto begin = std::chrono::steady_clock::now();
        work(kSteps);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
        steps.push_back(took.count() / kSteps);
    }
    return static_cast<uint64_t>(median(loops) / median(steps) / static_cast<double>(samples));
}

void bareReadAndWork(Turn& turn) {
    Payload payload;
    bareReadWith(turn, [&](const AVPacket& packet) {
        turn.meter.delivered(payload.copy(packet));
        work(turn.work);
    });
}

void pluginReadAndWork(Turn& turn) {
    pluginReadWith(turn, [&](size_t, host::Buffer& buffer) {
        turn.meter.delivered(buffer.size());
        work(turn.work);
        return true;
    });
}

}  // namespace orvel::bench
