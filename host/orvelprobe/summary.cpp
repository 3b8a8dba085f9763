#include "summary.h"

#include <media/stagefright/MediaErrors.h>
#include <utils/Errors.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <type_traits>

#include "text.h"

namespace orvel::probe {

std::string shortMime(const std::string& mime) {
    static constexpr const char* kShort[][2] = {
            {"audio/mpeg", "mp3"},      {"audio/mp4a-latm", "aac"}, {"audio/raw", "pcm"},
            {"video/mp4v-es", "mpeg4"}, {"text/3gpp-tt", "text"},
    };
    for (const auto& row : kShort) {
        if (mime == row[0]) return row[1];
    }
    std::string_view rest = mime;
    rest.remove_prefix(std::min(rest.size(), rest.find('/') + 1));
    for (const std::string_view vendor : {"x-vnd.on2.", "x-", "vnd."}) {
        if (rest.substr(0, vendor.size()) == vendor) {
            rest.remove_prefix(vendor.size());
            break;
        }
    }
    return printable(rest);
}

std::string codecsText(const Report& report) {
    std::string text;
    for (const TrackReport& track : report.tracks)
        text += (text.empty() ? "" : "+") + shortMime(track.format.text(host::kKeyMime));
    return text.empty() ? "no tracks" : text;
}

int64_t durationUs(const Report& report) {
    int64_t longest = -1;
    for (const TrackReport& track : report.tracks) {
        const auto* value = track.format.find<int64_t>(host::kKeyDurationUs);
        if (value) longest = std::max(longest, *value);
    }
    return longest;
}

std::string containerText(const Report& report) {
    const std::string mime = report.format.text(host::kKeyMime);
    std::string text = mime.empty() ? "unknown" : printable(mime);
    // An audio-only file in a video container has its codec under "mime"; the tracks know better.
    for (const TrackReport& track : report.tracks) {
        const std::string own = track.format.text("file-format");
        if (own.empty() || own == mime) continue;
        text = printable(own) + " (shown as " + text + ")";
        break;
    }
    const int64_t us = durationUs(report);
    return us < 0 ? text : text + ", " + durationText(us);
}

std::string readText(const ReadReport& read) {
    std::string text = countText(read.count, "sample");
    if (read.count == 0) return text;
    if (read.syncCount < read.count) text += " (" + countText(read.syncCount, "key") + ")";
    return text + ", " + sizeText(read.bytes) + ", " + secondsText(read.firstUs) + " to " +
           secondsText(read.lastUs);
}

std::string endText(const ReadReport& read) {
    if (read.end == android::ERROR_END_OF_STREAM) return "end of stream";
    if (read.end == android::OK) return "stopped at the limit";
    return statusText(read.end);
}

bool endedWell(const ReadReport& read) {
    return read.end == android::ERROR_END_OF_STREAM || read.end == android::OK;
}

std::string wholeReadText(const Report& report) {
    if (report.readSeconds <= 0) return "";
    uint64_t samples = 0, bytes = 0;
    for (const TrackReport& track : report.tracks) {
        samples += track.read->count;
        bytes += track.read->bytes;
    }
    const double seconds = report.readSeconds;
    char rate[64];
    snprintf(rate, sizeof(rate), seconds < 1 ? " in %.1f ms (%.0f MB/s)" : " in %.2f s (%.0f MB/s)",
             seconds < 1 ? seconds * 1000 : seconds, static_cast<double>(bytes) / 1e6 / seconds);
    return countText(samples, "sample") + ", " + sizeText(bytes) + rate;
}

std::string valueText(const host::FormatValue& value, size_t maxCharacters, size_t maxBytes) {
    return std::visit(
            [=](const auto& held) -> std::string {
                using Held = std::decay_t<decltype(held)>;
                if constexpr (std::is_same_v<Held, std::string>) {
                    return "\"" + printable(held, maxCharacters) + "\"";
                } else if constexpr (std::is_same_v<Held, host::FormatBytes>) {
                    const size_t shown = std::min(held.size(), maxBytes);
                    return sizeText(held.size()) + "  " + hexText(held.data(), shown) +
                           (shown < held.size() ? "..." : "");
                } else if constexpr (std::is_same_v<Held, host::FormatRect>) {
                    return std::to_string(held[0]) + " " + std::to_string(held[1]) + " " +
                           std::to_string(held[2]) + " " + std::to_string(held[3]);
                } else if constexpr (std::is_floating_point_v<Held>) {
                    char text[32];
                    snprintf(text, sizeof(text), "%g", static_cast<double>(held));
                    return text;
                } else {
                    return std::to_string(held);
                }
            },
            value);
}

}  // namespace orvel::probe
