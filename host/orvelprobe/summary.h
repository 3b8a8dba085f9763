// What every page says of a file: plain text, to be shown in whatever form. Untrusted parts have
// been made printable.
#pragma once

#include <cstdint>
#include <string>

#include "report.h"

namespace orvel::probe {

// File-level keys in the order of a page. What is not here shows up among the keys only.
struct Tag {
    const char* key;
    const char* label;
};
inline constexpr Tag kTags[] = {
        {"title", "title"},
        {"artist", "artist"},
        {"album", "album"},
        {"albumartist", "by"},
        {"author", "author"},
        {"composer", "composer"},
        {"lyricist", "lyricist"},
        {"genre", "genre"},
        {"year", "year"},
        {"date", "date"},
        {"cdtracknum", "track no."},
        {"discnum", "disc no."},
        {"compilation", "compilation"},
        {"location", "location"},
        {"manufacturer", "made by"},
};

// Of the longest track; -1 when none says.
int64_t durationUs(const Report& report);
// "avc" for "video/avc", "matroska" for "video/x-matroska".
std::string shortMime(const std::string& mime);
// "avc+aac", "no tracks"
std::string codecsText(const Report& report);
// "video/mp4, 0:05.015"
std::string containerText(const Report& report);
// "250 samples (1 key), 120 kB, 0.000 s to 4.960 s" without how it ended.
std::string readText(const ReadReport& read);
// "end of stream", "stopped at the limit" or the status.
std::string endText(const ReadReport& read);
bool endedWell(const ReadReport& read);
// "1,204 samples, 2.30 MB in 12.3 ms (187 MB/s)" over all tracks; empty when nothing was read.
std::string wholeReadText(const Report& report);
// Text is quoted and cut after `maxCharacters` (0: never), bytes are shown in hexadecimal up to
// `maxBytes`.
std::string valueText(const host::FormatValue& value, size_t maxCharacters, size_t maxBytes);

}  // namespace orvel::probe
