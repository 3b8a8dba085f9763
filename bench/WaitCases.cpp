// What a user waits for: opening a file, a seek, stopping and starting a track.
#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "BareLoop.h"
#include "Case.h"
#include "PluginSide.h"

namespace orvel::bench {
namespace {

// The same times in every turn, up to shortly before the end.
std::vector<int64_t> seekTimesUs(const BareDemuxer& demuxer, int count) {
    std::mt19937_64 random(20);
    std::uniform_int_distribution<int64_t> anywhere(0, demuxer.context()->duration / 100 * 98);
    std::vector<int64_t> times;
    for (int i = 0; i < count; ++i)
        times.push_back(anywhere(random));
    return times;
}

}  // namespace

void bareOpens(Turn& turn) {
    for (int i = 0; i < turn.row.count; ++i) {
        Payload payload;
        turn.meter.begin();
        std::optional<BareDemuxer> demuxer(std::in_place, turn.source, turn.row.file.demuxer);
        turn.meter.delivered(
                payload.copy(demuxer->nextOf(demuxer->bestStream(AVMEDIA_TYPE_VIDEO))));
        if (turn.row.closes) demuxer.reset();
        turn.meter.end();
    }
}

void pluginOpens(Turn& turn) {
    for (int i = 0; i < turn.row.count; ++i) {
        host::SniffResult taken = sniffTaken(turn.plugin, turn.source);
        turn.meter.begin();
        std::optional<Session> session(std::in_place, turn.plugin, turn.source, std::move(taken));
        turn.meter.delivered(readSample(session->track(session->position("video/"))).size());
        if (turn.row.closes) session.reset();
        turn.meter.end();
    }
}

void bareSeeks(Turn& turn) {
    BareDemuxer demuxer(turn.source, turn.row.file.demuxer);
    const int video = demuxer.bestStream(AVMEDIA_TYPE_VIDEO);
    Payload payload;
    for (int64_t timeUs : seekTimesUs(demuxer, turn.row.count)) {
        turn.meter.begin();
        demuxer.seekBackward(video, timeUs);
        turn.meter.delivered(payload.copy(demuxer.nextOf(video)));
        turn.meter.end();
    }
}

// All tracks are started, and the read-ahead goes on from where the last seek landed.
void pluginSeeks(Turn& turn) {
    const std::vector<int64_t> timesUs =
            seekTimesUs(BareDemuxer(turn.source, turn.row.file.demuxer), turn.row.count);
    Session session(turn.plugin, turn.source, sniffTaken(turn.plugin, turn.source));
    host::Track& video = session.track(session.position("video/"));
    for (int64_t timeUs : timesUs) {
        const host::ReadOptions options{{{timeUs, turn.row.mode}}};
        turn.meter.begin();
        turn.meter.delivered(readSample(video, options).size());
        turn.meter.end();
    }
}

void pluginStopStart(Turn& turn) {
    Session session(turn.plugin, turn.source, sniffTaken(turn.plugin, turn.source));
    host::Track& video = session.track(session.position("video/"));
    const size_t position = session.position("audio/");
    host::Track& audio = session.track(position);
    std::atomic<bool> done{false};
    auto reader = std::async(std::launch::async, [&] {
        while (!done)
            readSample(video);
    });
    auto pause = [i = 0]() mutable {  // each command meets the reader somewhere else
        std::this_thread::sleep_for(std::chrono::microseconds(5000 + 700 * (i++ % 7)));
    };
    bool failed = false;
    for (int i = 0; i < turn.row.count; ++i) {
        pause();
        turn.meter.command([&] { failed |= audio.stop() != android::OK; });
        pause();
        turn.meter.command(
                [&] { failed |= audio.start(session.player().group(position)) != android::OK; });
    }
    done = true;
    reader.get();
    if (failed) throw std::runtime_error("a stop or a start fails");
}

}  // namespace orvel::bench
