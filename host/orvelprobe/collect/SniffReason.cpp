#include "collect/SniffReason.h"

#include <optional>

#include "Words.h"

namespace orvel::probe {
namespace {

constexpr int kLowScore = 25;  // the plug-in declines this and less
constexpr int kProbeBytes = 1024;

// Fixed words of the plug-in's lines.
constexpr char kStandsBack[] = "Sniff, disable ffmpeg parser for packageName:";
constexpr char kOpenFailed[] = "avformat open input failed: ";
constexpr char kTagsTooLong[] = "id3 tag size is corrupted";

// In the order of their bits.
constexpr const char* kContainers[] = {
        "MP4",  "RealMedia", "Matroska",       "AVI", "MP3", "AC-3", "FLV", "DTS",
        "AIFF", "FLAC",      "Monkey's Audio", "ASF", "DSF", "DFF",  "WAV"};

// Names of codecs where FFmpeg's own, or the MIME type, are not what people call them.
constexpr const char* kCodecs[][2] = {
        {"aac", "AAC"},   {"mp3", "MP3"},       {"ac3", "AC-3"},          {"eac3", "E-AC-3"},
        {"dts", "DTS"},   {"truehd", "TrueHD"}, {"flac", "FLAC"},         {"alac", "ALAC"},
        {"opus", "Opus"}, {"vorbis", "Vorbis"}, {"audio/eac3", "E-AC-3"}, {"audio/vnd.dts", "DTS"}};

std::string codecName(const std::string& known) {
    for (const auto& row : kCodecs)
        if (known == row[0]) return row[1];
    return known;
}

/** What a trace says: the plug-in's lines, by the fixed words that they begin with. */
struct Facts {
    std::vector<std::string> lines;
    bool isShort = false;   // a probe got less than it needs:
    long got = 0;           // bytes or status
    int64_t readAt = 0;     // where
    bool hasScore = false;  // the best container:
    char mime[64] = "";
    uint32_t container = 0;  // its bit; 0: none
    int score = 0;

    explicit Facts(const Json& trace) {
        for (const Json& step : listOf(trace, "steps")) {
            if (step.contains("read") && !isShort) readAt = intOf(step["read"], "offset");
            const std::string line = textOf(objectOf(step, "log"), "text");
            long wanted = 0;
            isShort |= sscanf(line.c_str(), "Wanna read %ld bytes, but got %ld bytes", &wanted,
                              &got) == 2;
            hasScore |= sscanf(line.c_str(), "mime:%63[^,], mediaFlag:0x%x, finalScore:%d", mime,
                               &container, &score) == 3;
            lines.push_back(line);
        }
    }
    // What follows the words in the last line that begins with them; nothing when none does.
    std::optional<std::string> after(const char* words) const {
        for (auto line = lines.rbegin(); line != lines.rend(); ++line)
            if (line->rfind(words, 0) == 0) return line->substr(strlen(words));
        return std::nullopt;
    }
    bool has(const char* words) const { return after(words).has_value(); }
    bool isKnown() const { return container != 0 && (container & kAllContainers) == container; }
    std::string containerText() const {
        return isKnown() ? kContainers[__builtin_ctz(container)] : mime;
    }
    // FFmpeg's name, "none", or empty when no line tells.
    std::string mainAudio() const {
        return codecName(
                after("main audio:").value_or(after("special audio, mimetype:").value_or("")));
    }
    // Why it was declined before any container was looked for, in words; nothing when it was not.
    const char* refusal() const {
        if (has(kStandsBack)) return "the plug-in stands back in processes whose name begins with ";
        if (has("FFmpegObject initCheck failed")) return "the plug-in could not set itself up";
        return has("sniff fail: OOM") ? "no memory for the probe" : nullptr;
    }
};

std::string takenReason(const Facts& facts) {
    if (!facts.hasScore) return "";
    const std::string score = " (probe score " + std::to_string(facts.score);
    if (const auto error = facts.after(kOpenFailed)) {
        return facts.containerText() + " by its first bytes" + score +
               ") and by these alone: FFmpeg cannot open it (" + *error + ")";
    }
    if (const std::string audio = facts.mainAudio(); !audio.empty()) {
        return facts.containerText() + " whose main audio is " + audio + score + ")";
    }
    return facts.containerText() + " by its first bytes" + score + ", more than " +
           std::to_string(kLowScore) + " is needed)";
}

// Recognised, but of the kind that is looked into.
std::string contentsReason(const Facts& facts) {
    const std::string name = facts.containerText(), audio = facts.mainAudio();
    if (const auto error = facts.after("sniff: could not find stream information:")) {
        return name + " whose streams FFmpeg cannot make out (" + *error +
               "); the file is damaged or cut off";
    }
    if (const auto claims = facts.after("index claims "))
        return name + " whose index claims " + *claims;
    return name +
           (audio == "none" ? " without audio"
            : audio.empty() ? " whose main audio is neither DTS nor E-AC-3"
                            : " whose main audio is " + audio) +
           "; the plug-in takes " + name + " only for DTS or E-AC-3";
}

std::string shortReason(const Facts& facts, int64_t fileBytes) {
    const std::string at = std::to_string(facts.readAt), got = std::to_string(facts.got) + " bytes";
    const std::string need = ", a probe needs " + std::to_string(kProbeBytes);
    if (facts.got < 0) {
        return "the source could not be read: " + statusText(static_cast<int32_t>(facts.got)) +
               " at offset " + at;
    }
    if (fileBytes > facts.readAt + facts.got) {
        return "the source gave " + got + " at offset " + at + need + " in one read";
    }
    return got + (facts.readAt == 0 ? "" : " after " + at + " bytes of ID3 tags") + need;
}

std::string noFitReason(const Facts& facts, const std::string& foreignFormat) {
    if (facts.has("tmpFmt is NULL")) {
        return "no container fits, but this FFmpeg lacks demuxers of enabled containers; build "
               "them in";
    }
    if (!foreignFormat.empty()) return foreignFormat + ", which the plug-in does not offer";
    if (facts.score <= 0) return "no container fits: the first bytes are of none that is known";
    return "no container fits: the best is " + facts.containerText() + " with probe score " +
           std::to_string(facts.score) + ", more than " + std::to_string(kLowScore) + " is needed";
}

uint32_t bitsOf(const std::string& mask) {
    return static_cast<uint32_t>(atoi(mask.c_str())) & kAllContainers;
}

}  // namespace

bool needsWideSniff(const SniffCase& one) {
    const Facts facts(one.steps);
    return !one.taken && bitsOf(one.mask) != kAllContainers && facts.score <= kLowScore &&
           !facts.refusal() && !facts.has(kTagsTooLong) && !facts.isShort;
}

std::string sniffReason(const SniffCase& one) {
    const Facts facts(one.steps);
    std::string reason;
    if (one.taken) {
        reason = takenReason(facts);
    } else if (facts.refusal()) {
        reason = facts.refusal() + facts.after(kStandsBack).value_or("");
    } else if (facts.score > kLowScore) {
        reason = contentsReason(facts);
    } else if (facts.has(kTagsTooLong)) {
        reason = "its ID3 tags take 3 MiB or more, fewer are skipped; shorten them";
    } else if (facts.isShort) {
        reason = shortReason(facts, one.fileBytes);
    } else if (facts.hasScore) {
        reason = noFitReason(facts, one.foreignFormat);
    }
    return reason.empty() ? "the plug-in left no reason" : reason;
}

std::string maskReason(const std::string& mask, const SniffCase* wide) {
    std::string text = "the property enables no container that fits";
    if (bitsOf(mask) == 0) {
        const bool isNumber = mask.find_first_not_of("0123456789") == std::string::npos;
        text = "mm.enable.orvel_parser is \"" + mask + "\", which enables no container" +
               (isNumber ? "" : " (it takes a decimal number)");
    }
    if (!wide) return text;
    const Facts facts(wide->steps);
    const std::string reason = sniffReason(*wide);
    if (facts.score <= kLowScore || !facts.isKnown())
        return text + "; with all enabled still declined: " + reason;
    text += ": " + facts.containerText() + " is bit " + std::to_string(facts.container);
    if (!wide->taken) return text + ", but " + reason;
    return text + "; mm.enable.orvel_parser=" + std::to_string(bitsOf(mask) | facts.container) +
           " takes it";
}

}  // namespace orvel::probe
