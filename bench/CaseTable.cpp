#include <cstring>

#include "Case.h"

namespace orvel::bench {

// clang-format off
const Case kCases[] = {
    {"movie", "600 MB 1080p H.264 + E-AC-3 MP4, all tracks by time", Media::Movie,
     bareRead, pluginRead, Bound::Ratio, 1.10},
    {"mp3", "1 h MP3, one track", Media::Song,
     bareRead, pluginRead, Bound::Ratio, 1.5},
    {"aiff", "1 h 16-bit big-endian AIFF; the bare loop swaps bytes", Media::Sound,
     bareReadSwapped, pluginRead, Bound::Ratio, 1.10},
    {"movie-work", "the MP4, a consumer works as long as the bare loop takes", Media::Movie,
     bareReadAndWork, pluginReadAndWork, Bound::Ratio, 0.70, Same::SamplesAndBytes, prepareWork},
    {"first-sample", "open to first video sample, every readAt 2 ms late", Media::Clip,
     bareFirstSample, pluginFirstSample, Bound::Ratio, 1.2},
    {"seek-mode0", "200 random seeks of mode 0 to the first sample", Media::Movie,
     bareSeeks, pluginSeeksPrevious, Bound::Ratio, 1.3, Same::Samples},
    {"seek-mode3", "200 random seeks of mode 3 to the first sample", Media::Movie,
     bareSeeks, pluginSeeksClosest, Bound::Ratio, 1.3, Same::Samples},
    {"open-close", "open to first sample to close, 10 s MP4", Media::Clip,
     bareOpenClose, pluginOpenClose, Bound::Ratio, 1.3},
    {"sniff-mp4", "sniffing, taken: MP4 with E-AC-3", Media::Clip,
     bareSniffTaken, pluginSniffTaken, Bound::Ratio, 1.2},
    {"sniff-mkv", "sniffing, taken: Matroska with E-AC-3", Media::ClipMatroska,
     bareSniffTaken, pluginSniffTaken, Bound::Ratio, 1.2},
    {"sniff-mp3", "sniffing, taken: MP3", Media::Song,
     bareSniffTaken, pluginSniffTaken, Bound::Ratio, 1.2},
    {"sniff-aiff", "sniffing, taken: AIFF", Media::Sound,
     bareSniffTaken, pluginSniffTaken, Bound::Ratio, 1.2},
    {"sniff-flac", "sniffing, taken: FLAC", Media::Flac,
     bareSniffTaken, pluginSniffTaken, Bound::Ratio, 1.2},
    {"sniff-aac", "sniffing, declined: MP4 with AAC", Media::ClipAac,
     bareSniffDeclined, pluginSniffDeclined, Bound::Ratio, 1.2},
    {"sniff-ogg", "sniffing, declined: Ogg", Media::Ogg,
     bareSniffDeclined, pluginSniffDeclined, Bound::Ratio, 1.2},
    {"sniff-noise", "sniffing, declined: noise", Media::Noise,
     bareSniffDeclined, pluginSniffDeclined, Bound::Ratio, 1.2},
    {"memory-movie", "peak memory over the bare loop, the MP4", Media::Movie,
     bareRead, pluginRead, Bound::Memory, 4},
    {"memory-mp3", "peak memory over the bare loop, MP3", Media::Song,
     bareRead, pluginRead, Bound::Memory, 4},
    {"memory-aiff", "peak memory over the bare loop, AIFF", Media::Sound,
     bareReadSwapped, pluginRead, Bound::Memory, 4},
    {"slow-seek", "seek to first video sample, every readAt 2 ms late", Media::Movie,
     bareSlowSeek, pluginSlowSeek, Bound::None, 0, Same::Samples},
    {"uhd", "600 MB 4K H.264 of 100 Mbit/s + E-AC-3 MP4", Media::Uhd,
     bareRead, pluginRead, Bound::None, 0},
    {"late-audio", "Matroska with sound 40 s late, all tracks by time", Media::LateAudio,
     bareRead, pluginRead, Bound::None, 0},
    {"commands", "command latency, the reader idle, caches full", Media::Clip,
     nullptr, pluginCommands, Bound::None, 0},
    {"destroy", "stop and destroy with full caches", Media::Movie,
     bareDestroy, pluginDestroy, Bound::None, 0},
    {"many", "200 extractors at once: open, read by turns, close", Media::Clip,
     bareMany, pluginMany, Bound::None, 0},
};
// clang-format on
const size_t kCaseCount = sizeof(kCases) / sizeof(kCases[0]);

const Case* findCase(const char* name) {
    for (const Case& row : kCases) {
        if (strcmp(row.name, name) == 0) return &row;
    }
    return nullptr;
}

}  // namespace orvel::bench
