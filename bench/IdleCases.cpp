// An extractor that has nothing to do: its commands, its destruction, and many of them at once.
#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "BareLoop.h"
#include "Case.h"
#include "PluginSide.h"

namespace orvel::bench {
namespace {

constexpr int kCommands = 50;
constexpr int kDestructions = 5;
constexpr size_t kMany = 200;
constexpr uint64_t kSliceSamples = 25;  // of each track, before it is the next one's turn

template <typename Call>
double microseconds(Call call) {
    const auto begin = std::chrono::steady_clock::now();
    call();
    const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - begin;
    return took.count();
}

}  // namespace

void pluginCommands(Turn& turn) {
    host::CountingSource counted(turn.source);
    Session session(turn.plugin, counted, sniffTaken(turn.plugin, counted));
    const size_t position = session.position("audio/");
    host::Track& audio = session.track(position);
    const host::BufferGroup& group = session.player().group(position);
    // An audio seek beside a started video track moves nothing: what remains of it is a flush, and
    // a read of a cached sample. The caches hold more samples than are read here.
    host::ReadOptions flushing;
    flushing.seek = host::ReadOptions::Seek{0, host::SeekMode::PreviousSync};
    readSample(audio);
    waitUntilIdle(counted);

    std::vector<double> starts, stops, flushes, reads;
    turn.meter.begin();
    for (int i = 0; i < kCommands; ++i) {
        flushes.push_back(microseconds([&] { readSample(audio, flushing); }));
        turn.meter.delivered(0);
    }
    for (int i = 0; i < 10; ++i) {
        reads.push_back(microseconds([&] { readSample(audio); }));
        turn.meter.delivered(0);
    }
    for (int i = 0; i < kCommands; ++i) {
        stops.push_back(microseconds([&] { audio.stop(); }));
        starts.push_back(microseconds([&] { audio.start(group); }));
        turn.meter.delivered(0);
    }
    turn.meter.end();
    turn.meter.figure("start", median(starts), "us");
    turn.meter.figure("stop", median(stops), "us");
    turn.meter.figure("flush and a cached sample", median(flushes), "us");
    turn.meter.figure("a cached sample", median(reads), "us");
}

void bareDestroy(Turn& turn) {
    for (int i = 0; i < kDestructions; ++i) {
        auto demuxer = std::make_unique<BareDemuxer>(turn.source, turn.media.demuxer);
        const size_t size =
                static_cast<size_t>(demuxer->nextOf(demuxer->bestStream(AVMEDIA_TYPE_VIDEO)).size);
        turn.meter.begin();
        demuxer.reset();
        turn.meter.delivered(size);
        turn.meter.end();
    }
}

void pluginDestroy(Turn& turn) {
    for (int i = 0; i < kDestructions; ++i) {
        host::CountingSource counted(turn.source);
        std::optional<Session> session(std::in_place, turn.plugin, counted,
                                       sniffTaken(turn.plugin, counted));
        const size_t size = readSample(session->track(session->position("video/"))).size();
        waitUntilIdle(counted);
        turn.meter.begin();
        session.reset();
        turn.meter.delivered(size);
        turn.meter.end();
    }
}

void bareMany(Turn& turn) {
    std::vector<std::unique_ptr<BareDemuxer>> demuxers;
    Payload payload;
    turn.meter.begin();
    for (size_t i = 0; i < kMany; ++i) {
        demuxers.push_back(std::make_unique<BareDemuxer>(turn.source, turn.media.demuxer));
    }
    std::vector<BareDemuxer*> reading;
    for (const auto& demuxer : demuxers)
        reading.push_back(demuxer.get());
    const auto hasEnded = [&](BareDemuxer* demuxer) {
        for (uint64_t i = 0; i < 2 * kSliceSamples; ++i) {
            const AVPacket* packet = demuxer->next();
            if (packet == nullptr) return true;
            turn.meter.delivered(payload.copy(*packet));
        }
        return false;
    };
    while (!reading.empty())
        reading.erase(std::remove_if(reading.begin(), reading.end(), hasEnded), reading.end());
    demuxers.clear();
    turn.meter.end();
}

void pluginMany(Turn& turn) {
    host::CountingSource counted(turn.source);
    std::vector<host::SniffResult> taken;
    for (size_t i = 0; i < kMany; ++i)
        taken.push_back(sniffTaken(turn.plugin, counted));
    const uint64_t residentBefore = residentBytes();
    const uint64_t threadsBefore = threadCount();
    std::vector<std::unique_ptr<Session>> sessions;
    turn.meter.begin();
    for (host::SniffResult& result : taken)
        sessions.push_back(std::make_unique<Session>(turn.plugin, counted, std::move(result)));
    turn.meter.end();
    const double opened = turn.meter.seconds();

    host::Player::Options slice;
    slice.limitPerTrack = kSliceSamples;
    const auto play = [&](Session& session) {
        uint64_t samples = 0;
        const auto results = session.player().play(slice, [&](size_t, host::Buffer& buffer) {
            turn.meter.delivered(buffer.size());
            return true;
        });
        for (const auto& result : results)
            samples += result.samples;
        return samples > 0;
    };
    turn.meter.begin();
    for (const auto& session : sessions)
        play(*session);
    turn.meter.end();

    waitUntilIdle(counted);
    const double cpuBefore = usage().cpuSeconds;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const double idleCpu = (usage().cpuSeconds - cpuBefore) / 0.2;
    const double resident = static_cast<double>(residentBytes() - residentBefore) / kMiB;
    const auto threads = static_cast<double>(threadCount() - threadsBefore);

    std::vector<Session*> reading;
    for (const auto& session : sessions)
        reading.push_back(session.get());
    const auto hasEnded = [&](Session* session) { return !play(*session); };
    turn.meter.begin();
    while (!reading.empty())
        reading.erase(std::remove_if(reading.begin(), reading.end(), hasEnded), reading.end());
    turn.meter.end();
    const double before = turn.meter.seconds();
    turn.meter.begin();
    sessions.clear();
    turn.meter.end();
    turn.meter.figure("open, each", 1e6 * opened / kMany, "us");
    turn.meter.figure("close, each", 1e6 * (turn.meter.seconds() - before) / kMany, "us");
    turn.meter.figure("threads", threads, "");
    turn.meter.figure("resident, caches full, each", resident / kMany, "MiB");
    turn.meter.figure("processor time while idle, all", 100 * idleCpu, "% of a core");
}

}  // namespace orvel::bench
