#include "Case.h"

namespace orvel::bench {
namespace {

using host::SeekMode;

constexpr File kMovie = {"movie.mp4", "mov"};
constexpr File kClip = {"clip.mp4", "mov"};
constexpr File kSong = {"song.mp3", "mp3"};
constexpr File kSound = {"sound.aiff", "aiff", true};
constexpr int kLateUs = 2000;

// clang-format off
std::vector<Target> whenQuiet(double ratio) {
    return {{Figure::Time, ratio}, {Figure::Processor, ratio}, {Figure::Sleeps, 0.05}};
}

const std::vector<Target> kElsewhere = {{Figure::ProcessorOfQuiet, 1.2}, {Figure::Sleeps, 0.05}};
const std::vector<Target> kMemory = {{Figure::Memory, 2}};

Case reads(const char* name, const char* title, File file, const std::vector<Target>& targets,
           Where where = Where::Quiet) {
    return {.name = name, .title = title, .file = file, .bare = bareRead, .plugin = pluginRead,
            .targets = targets, .where = where,
            .ownProcess = targets.front().figure == Figure::Memory};
}

Case opens(const char* name, const char* title, int lateUs, int count, bool closes) {
    return {.name = name, .title = title, .file = kClip, .bare = bareOpens, .plugin = pluginOpens,
            .targets = {{Figure::Time, 1.05}}, .lateUs = lateUs, .count = count, .closes = closes};
}

Case seeks(const char* name, const char* title, SeekMode mode, double ratio, int lateUs,
           int count) {
    return {.name = name, .title = title, .file = kMovie, .bare = bareSeeks, .plugin = pluginSeeks,
            .targets = {{Figure::Time, ratio}}, .lateUs = lateUs, .count = count, .mode = mode,
            .sameBytes = false};
}

Case sniffs(const char* name, const char* title, File file, bool taken, int count) {
    return {.name = name, .title = title, .file = file, .bare = bareSniffs, .plugin = pluginSniffs,
            .targets = {{Figure::Time, 1.1}}, .count = count, .taken = taken};
}

}  // namespace

const std::vector<Case> kCases = {
    reads("movie", "600 MB 1080p H.264 + E-AC-3 MP4, all tracks by time", kMovie, whenQuiet(1.2)),
    reads("mp3", "1 h MP3", kSong, whenQuiet(1.8)),
    reads("aiff", "1 h 16-bit big-endian AIFF; the bare loop swaps bytes", kSound, whenQuiet(1.3)),
    reads("movie-one-core", "the MP4 on one core", kMovie, kElsewhere, Where::OneCore),
    reads("mp3-one-core", "the MP3 on one core", kSong, kElsewhere, Where::OneCore),
    reads("aiff-one-core", "the AIFF on one core", kSound, kElsewhere, Where::OneCore),
    reads("movie-loaded", "the MP4 beside three busy loops", kMovie, kElsewhere, Where::Loaded),
    reads("mp3-loaded", "the MP3 beside three busy loops", kSong, kElsewhere, Where::Loaded),
    reads("aiff-loaded", "the AIFF beside three busy loops", kSound, kElsewhere, Where::Loaded),
    {.name = "movie-work", .title = "the MP4; a consumer works as long as the bare loop takes",
     .file = kMovie, .bare = bareRead, .plugin = pluginRead,
     .targets = {{Figure::Time, 0.75}}, .works = true},
    opens("first-sample", "open to first video sample, every readAt 2 ms late", kLateUs, 3, false),
    seeks("seek-mode0", "random seeks of mode 0 to the first video sample",
          SeekMode::PreviousSync, 1.8, 0, 200),
    seeks("seek-mode3", "random seeks of mode 3 to the first video sample",
          SeekMode::Closest, 1.8, 0, 200),
    seeks("late-seek-mode0", "the same of mode 0, every readAt 2 ms late",
          SeekMode::PreviousSync, 2.2, kLateUs, 30),
    seeks("late-seek-mode3", "the same of mode 3, every readAt 2 ms late",
          SeekMode::Closest, 2.2, kLateUs, 30),
    {.name = "stop-start", .title = "stop and start of the sound while the pictures are read, every "
     "readAt 2 ms late", .file = kMovie, .plugin = pluginStopStart,
     .targets = {{Figure::WorstReads, 3}}, .lateUs = kLateUs, .count = 5},
    opens("open-close", "open to first video sample to close, 10 s MP4", 0, 20, true),
    sniffs("sniff-mp4", "sniffing, taken: MP4 with E-AC-3", kClip, true, 10),
    sniffs("sniff-mkv", "sniffing, taken: Matroska with E-AC-3", {"clip.mkv", "matroska"}, true, 10),
    sniffs("sniff-mp3", "sniffing, taken: MP3", kSong, true, 100),
    sniffs("sniff-aiff", "sniffing, taken: AIFF", kSound, true, 100),
    sniffs("sniff-flac", "sniffing, taken: FLAC", {"sound.flac", "flac"}, true, 100),
    sniffs("sniff-aac", "sniffing, declined: MP4 with AAC", {"clip-aac.mp4", "mov"}, false, 10),
    sniffs("sniff-ogg", "sniffing, declined: Ogg", {"sound.ogg", "ogg"}, false, 100),
    sniffs("sniff-noise", "sniffing, declined: noise", {"noise.bin", nullptr}, false, 100),
    reads("memory-movie", "peak memory, the MP4", kMovie, kMemory),
    reads("memory-mp3", "peak memory, the MP3", kSong, kMemory),
    reads("memory-aiff", "peak memory, the AIFF", kSound, kMemory),
};
// clang-format on

}  // namespace orvel::bench
