// What one file had to say: the one structure from which every output is written. Plain values, no
// pointer into the plug-in, so that a report outlives the extractor it was taken from.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "framework/Format.h"

namespace orvel::probe {

using Md5 = std::array<uint8_t, 16>;

// Exit codes of the command; of several files the highest counts.
enum ExitCode { kExitFine = 0, kExitDeclined = 1, kExitUsage = 2, kExitFailed = 3 };

// The entries of a media format, ordered by key name.
struct FormatReport {
    std::vector<host::FormatEntry> entries;

    // nullptr when there is no such key or it has another type.
    template <typename T>
    const T* find(const char* key) const {
        for (const host::FormatEntry& entry : entries) {
            if (entry.key == key) return std::get_if<T>(&entry.value);
        }
        return nullptr;
    }
    int32_t int32(const char* key, int32_t absent = 0) const {
        const int32_t* value = find<int32_t>(key);
        return value ? *value : absent;
    }
    std::string text(const char* key) const {
        const std::string* value = find<std::string>(key);
        return value ? *value : std::string();
    }
};

struct Sample {
    int64_t timeUs = 0;
    size_t size = 0;  // bytes of the delivered range
    bool sync = false;
    Md5 md5{};  // over the delivered range; all zero unless it was asked for
    std::optional<int64_t> targetTimeUs;
};

// A sample as a plot needs it; there may be millions.
struct PlotSample {
    int64_t timeUs = 0;
    uint32_t bytes = 0;
    bool sync = false;
};

// What reading one track gave.
struct ReadReport {
    uint64_t count = 0;
    uint64_t syncCount = 0;
    uint64_t bytes = 0;
    int64_t firstUs = 0;  // earliest and latest presentation time; 0 while count is 0
    int64_t lastUs = 0;
    int32_t end = 0;  // the status that ended the track; 0 when --limit did
};

struct TrackReport {
    size_t index = 0;
    FormatReport format;
    std::optional<ReadReport> read;
    std::vector<Sample> samples;   // with --samples
    std::vector<PlotSample> plot;  // with --html: every sample, in the order of the read
};

struct SeekTrackReport {
    size_t index = 0;
    int32_t status = 0;  // of the read that carried the seek, else of the first one that failed
    std::vector<Sample> samples;
};

struct SeekReport {
    int64_t timeUs = 0;
    int mode = 0;
    std::vector<SeekTrackReport> tracks;
};

// One step of the plug-in's decision.
struct TraceEvent {
    enum class Kind { Read, Size, Line };
    Kind kind = Kind::Line;
    int64_t offset = 0;   // Read
    uint64_t length = 0;  // Read: bytes asked for
    int64_t result = 0;   // Read: bytes or a negative status; Size: what the source says
    int priority = 0;     // Line: an android_LogPriority
    std::string tag;      // Line
    std::string text;     // Line
};

// With --explain: how the plug-in came to its decision.
struct ExplainReport {
    std::vector<TraceEvent> events;
    uint64_t omitted = 0;  // events beyond what is kept
};

// One sample, or one track, in which plug-in and plain libavformat differ.
struct Difference {
    enum class What { Track, Time, Key, Size, Payload, Missing, Extra, End };
    What what = What::Time;
    std::optional<size_t> track;  // the plug-in's; none: a stream that should be a track
    uint64_t sample = 0;          // its number as the plug-in delivers it; where it is missing
    // Time: microseconds. Key: 0 or 1. Size: bytes. Payload: offset of the first byte that differs
    // in the sample as delivered, twice. Missing and Extra: the sample's time in the one that has
    // it. End: statuses.
    int64_t plugin = 0;
    int64_t reference = 0;
    std::string text;  // Track: what is wrong
};

// With --verify.
struct VerifyReport {
    std::string library;  // "libavformat 59.27.100"
    uint64_t compared = 0;
    std::vector<Difference> differences;
};

struct Report {
    std::string file;
    bool opened = false;  // the plug-in was asked; otherwise only `file` and `error` count
    bool taken = false;
    std::string reason;  // why it was taken or declined: a sentence without its end
    std::optional<ExplainReport> explain;
    float confidence = 0;
    std::string extractor;
    FormatReport format;
    std::vector<TrackReport> tracks;
    std::vector<SeekReport> seeks;
    // With --html, after each sample of any track: distinct bytes of the file that the extractor
    // has read, less the bytes delivered as samples.
    std::vector<int64_t> sourceAhead;
    std::optional<VerifyReport> verify;
    bool listSamples = false;
    double readSeconds = 0;            // wall time of reading; differs from run to run: text only
    std::vector<std::string> notes;    // what the plug-in warned of; text only
    std::vector<std::string> written;  // one line for each file that was made; text only
    std::string error;                 // empty when all went well
    int exitCode = kExitFine;

    // Keeps the first error and the highest code.
    void fail(int code, const std::string& text) {
        if (error.empty()) error = text;
        if (code > exitCode) exitCode = code;
    }
};

}  // namespace orvel::probe
