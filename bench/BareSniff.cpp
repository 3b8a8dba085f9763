#include "BareSniff.h"

#include <cstring>
#include <memory>

#include "BareLoop.h"

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

}  // namespace

const char* bareSniff(host::DataSource& source) {
    const std::unique_ptr<uint8_t[]> buffer(
            new uint8_t[kSizeBehindID3 + AVPROBE_PADDING_SIZE]);  // not cleared
    int64_t tags = -1;
    int64_t haveOffset = 0;
    ssize_t have = 0;
    int bestScore = 0;
    const char* best = nullptr;
    for (const Probe& probe : kProbes) {
        const AVInputFormat* format = av_find_input_format(probe.demuxer);
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
        const int score = format->read_probe(&data);
        if (score > bestScore) {
            bestScore = score;
            best = probe.demuxer;
        }
        if (bestScore == AVPROBE_SCORE_MAX) break;
    }
    if (bestScore <= kLowScore) return nullptr;
    if (strcmp(best, "mov") != 0 && strcmp(best, "matroska") != 0) return best;
    // These two are taken for their main audio codec only.
    const BareDemuxer opened(source, best, BareDemuxer::As::Sniffer);
    const int audio = opened.bestStream(AVMEDIA_TYPE_AUDIO);
    if (audio < 0) return nullptr;
    const AVCodecID codec = opened.context()->streams[audio]->codecpar->codec_id;
    return codec == AV_CODEC_ID_EAC3 || codec == AV_CODEC_ID_DTS ? best : nullptr;
}

}  // namespace orvel::bench
