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
    std::vector<Sample> samples;  // with --samples
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

struct Report {
    std::string file;
    bool opened = false;  // the plug-in was asked; otherwise only `file` and `error` count
    bool taken = false;
    std::string declinedBecause;  // a sentence, or empty when the plug-in left no hint
    float confidence = 0;
    std::string extractor;
    FormatReport format;
    std::vector<TrackReport> tracks;
    std::vector<SeekReport> seeks;
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
