// The decision about a source, of the same file time and again.
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "BareLoop.h"
#include "Case.h"
#include "ffmpeg/FFmpegCompat.h"

namespace orvel::bench {
namespace {

constexpr size_t kPlainSize = 1024;
constexpr size_t kSizeBehindID3 = 0x20000;
constexpr int kLowScore = 25;

struct Probe {
    const char* demuxer;
    bool skipsID3;
};

constexpr Probe kProbes[] = {
        {"mov", false},      {"mp3", true},  {"wav", false}, {"aiff", false}, {"rm", false},
        {"matroska", false}, {"flac", true}, {"ape", true},  {"asf", false},  {"asf_o", false},
        {"ac3", true},       {"eac3", true}, {"dsf", false}, {"iff", false},  {"avi", false},
        {"dts", false},      {"flv", false},
};

int64_t id3Size(host::DataSource& source) {
    uint8_t header[10];
    int64_t total = 0;
    while (source.readAt(total, header, sizeof(header)) == static_cast<ssize_t>(sizeof(header)) &&
           memcmp(header, "ID3", 3) == 0) {
        total += static_cast<int64_t>(sizeof(header)) + ((header[6] & 0x7f) << 21) +
                 ((header[7] & 0x7f) << 14) + ((header[8] & 0x7f) << 7) + (header[9] & 0x7f);
    }
    return total;
}

// What a decision about a source costs at least: the same probes in the same order over the same
// bytes, and for the containers that are looked into the opening of the file. Whether it is taken.
bool bareSniff(host::DataSource& source) {
    const std::unique_ptr<uint8_t[]> buffer(
            new uint8_t[kSizeBehindID3 + AVPROBE_PADDING_SIZE]);  // not cleared
    int64_t tags = -1;
    int64_t haveOffset = 0;
    ssize_t have = 0;
    int bestScore = 0;
    const char* best = nullptr;
    for (const Probe& probe : kProbes) {
        const AVInputFormatPtr format = av_find_input_format(probe.demuxer);
        if (format == nullptr) continue;
        if (probe.skipsID3 && tags < 0) tags = id3Size(source);
        const int64_t offset = probe.skipsID3 ? tags : 0;
        const size_t size = probe.skipsID3 ? kSizeBehindID3 : kPlainSize;
        if (static_cast<ssize_t>(size) > have || offset != haveOffset) {
            have = source.readAt(offset, buffer.get(), size);
            haveOffset = offset;
            if (have < static_cast<ssize_t>(kPlainSize)) break;
            memset(buffer.get() + have, 0, AVPROBE_PADDING_SIZE);
        }
        AVProbeData data = {};
        data.buf = buffer.get();
        data.buf_size = static_cast<int>(have);
        const int score = compat::probeFunction(format)(&data);
        if (score > bestScore) {
            bestScore = score;
            best = probe.demuxer;
        }
        if (bestScore == AVPROBE_SCORE_MAX) break;
    }
    if (bestScore <= kLowScore) return false;
    if (strcmp(best, "mov") != 0 && strcmp(best, "matroska") != 0) return true;
    // These two are taken for their main audio codec only.
    const BareDemuxer opened(source, best, false);
    const int audio = opened.bestStream(AVMEDIA_TYPE_AUDIO);
    if (audio < 0) return false;
    const AVCodecID codec = opened.context()->streams[audio]->codecpar->codec_id;
    return codec == AV_CODEC_ID_EAC3 || codec == AV_CODEC_ID_DTS;
}

}  // namespace

void bareSniffs(Turn& turn) {
    turn.meter.begin();
    for (int i = 0; i < turn.row.count; ++i) {
        if (bareSniff(turn.source) != turn.row.taken) {
            throw std::runtime_error("the bare probes decide otherwise than they should");
        }
        turn.meter.delivered(0);
    }
    turn.meter.end();
}

void pluginSniffs(Turn& turn) {
    // A result that is neither used nor freed leaks its message; it is used outside the stretch.
    std::vector<host::SniffResult> results;
    results.reserve(static_cast<size_t>(turn.row.count));
    turn.meter.begin();
    for (int i = 0; i < turn.row.count; ++i) {
        results.push_back(turn.plugin.sniff(turn.source));
        turn.meter.delivered(0);
    }
    turn.meter.end();
    for (host::SniffResult& result : results) {
        if (result.taken() != turn.row.taken) {
            throw std::runtime_error("the plug-in decides otherwise than it should");
        }
        if (result.taken()) turn.plugin.create(turn.source, std::move(result));
    }
}

}  // namespace orvel::bench
