// What a user waits for: opening, seeking, the first sample.
#include <chrono>
#include <random>
#include <utility>
#include <vector>

#include "BareLoop.h"
#include "Case.h"
#include "PluginSide.h"
#include "framework/SourceDecorators.h"

namespace orvel::bench {
namespace {

constexpr std::chrono::microseconds kLate(2000);
constexpr int kSlowOpens = 3;
constexpr int kSlowSeeks = 10;
constexpr int kSeeks = 200;
constexpr int kOpens = 50;

// The same times in every turn, up to shortly before the end.
std::vector<int64_t> seekTimesUs(Turn& turn, int count) {
    const BareDemuxer demuxer(turn.source, turn.media.demuxer);
    std::mt19937_64 random(20);
    std::uniform_int_distribution<int64_t> anywhere(0, demuxer.context()->duration / 100 * 98);
    std::vector<int64_t> times;
    for (int i = 0; i < count; ++i)
        times.push_back(anywhere(random));
    return times;
}

host::ReadOptions seekTo(int64_t timeUs, host::SeekMode mode) {
    host::ReadOptions options;
    options.seek = host::ReadOptions::Seek{timeUs, mode};
    return options;
}

void bareSeekTo(Turn& turn, BareDemuxer& demuxer, const std::vector<int64_t>& timesUs) {
    const int video = demuxer.bestStream(AVMEDIA_TYPE_VIDEO);
    Payload payload;
    for (int64_t timeUs : timesUs) {
        turn.meter.begin();
        demuxer.seekBackward(video, timeUs);
        turn.meter.delivered(payload.copy(demuxer.nextOf(video)));
        turn.meter.end();
    }
}

// All tracks are started, and the read-ahead goes on from where the last seek landed.
void pluginSeekTo(Turn& turn, Session& session, const std::vector<int64_t>& timesUs,
                  host::SeekMode mode) {
    host::Track& video = session.track(session.position("video/"));
    for (int64_t timeUs : timesUs) {
        turn.meter.begin();
        turn.meter.delivered(readSample(video, seekTo(timeUs, mode)).size());
        turn.meter.end();
    }
}

void pluginSeeks(Turn& turn, host::SeekMode mode) {
    const std::vector<int64_t> timesUs = seekTimesUs(turn, kSeeks);
    Session session(turn.plugin, turn.source, sniffTaken(turn.plugin, turn.source));
    pluginSeekTo(turn, session, timesUs, mode);
}

}  // namespace

void bareFirstSample(Turn& turn) {
    host::DelaySource slow(turn.source, kLate);
    for (int i = 0; i < kSlowOpens; ++i) {
        Payload payload;
        turn.meter.begin();
        BareDemuxer demuxer(slow, turn.media.demuxer);
        const int video = demuxer.bestStream(AVMEDIA_TYPE_VIDEO);
        turn.meter.delivered(payload.copy(demuxer.nextOf(video)));
        turn.meter.end();
    }
}

void pluginFirstSample(Turn& turn) {
    host::DelaySource slow(turn.source, kLate);
    for (int i = 0; i < kSlowOpens; ++i) {
        host::SniffResult taken = sniffTaken(turn.plugin, slow);
        turn.meter.begin();
        Session session(turn.plugin, slow, std::move(taken));
        const size_t video = session.position("video/");
        turn.meter.delivered(readSample(session.track(video)).size());
        turn.meter.end();
    }
}

void bareSlowSeek(Turn& turn) {
    const std::vector<int64_t> timesUs = seekTimesUs(turn, kSlowSeeks);
    host::DelaySource slow(turn.source, kLate);
    BareDemuxer demuxer(slow, turn.media.demuxer);
    bareSeekTo(turn, demuxer, timesUs);
}

void pluginSlowSeek(Turn& turn) {
    const std::vector<int64_t> timesUs = seekTimesUs(turn, kSlowSeeks);
    host::DelaySource slow(turn.source, kLate);
    Session session(turn.plugin, slow, sniffTaken(turn.plugin, slow));
    pluginSeekTo(turn, session, timesUs, host::SeekMode::PreviousSync);
}

void bareSeeks(Turn& turn) {
    const std::vector<int64_t> timesUs = seekTimesUs(turn, kSeeks);
    BareDemuxer demuxer(turn.source, turn.media.demuxer);
    bareSeekTo(turn, demuxer, timesUs);
}

void pluginSeeksPrevious(Turn& turn) {
    pluginSeeks(turn, host::SeekMode::PreviousSync);
}

void pluginSeeksClosest(Turn& turn) {
    pluginSeeks(turn, host::SeekMode::Closest);
}

void bareOpenClose(Turn& turn) {
    for (int i = 0; i < kOpens; ++i) {
        Payload payload;
        turn.meter.begin();
        {
            BareDemuxer demuxer(turn.source, turn.media.demuxer);
            const int video = demuxer.bestStream(AVMEDIA_TYPE_VIDEO);
            turn.meter.delivered(payload.copy(demuxer.nextOf(video)));
        }
        turn.meter.end();
    }
}

void pluginOpenClose(Turn& turn) {
    for (int i = 0; i < kOpens; ++i) {
        host::SniffResult taken = sniffTaken(turn.plugin, turn.source);
        turn.meter.begin();
        {
            Session session(turn.plugin, turn.source, std::move(taken));
            const size_t video = session.position("video/");
            turn.meter.delivered(readSample(session.track(video)).size());
        }
        turn.meter.end();
    }
}

}  // namespace orvel::bench
