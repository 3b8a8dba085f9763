#include "sniff_reason.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "container_names.h"
#include "text.h"

namespace orvel::probe {
namespace {

constexpr int kLowScore = 25;  // the plug-in declines this and less
constexpr int kProbeBytes = 1024;

// The fixed words of the plug-in's lines, as far as a decision hangs on them.
constexpr char kStandsBack[] = "Sniff, disable ffmpeg parser for packageName:";
constexpr char kInitFailed[] = "FFmpegObject initCheck failed";
constexpr char kNoMemory[] = "sniff fail: OOM";
constexpr char kTagsTooLong[] = "id3 tag size is corrupted";
constexpr char kOpenFailed[] = "avformat open input failed: ";
constexpr char kNoStreams[] = "sniff: could not find stream information:";
constexpr char kIndexClaims[] = "index claims ";
constexpr char kNoDemuxer[] = "tmpFmt is NULL";
constexpr char kMainAudio[] = "main audio:";
constexpr char kSpecialAudio[] = "special audio, mimetype:";

// Names of codecs where FFmpeg's own are not what people call them.
struct Codec {
    const char* known;  // FFmpeg's name or the MIME type
    const char* name;
};
constexpr Codec kCodecs[] = {
        {"aac", "AAC"},   {"mp3", "MP3"},       {"ac3", "AC-3"},          {"eac3", "E-AC-3"},
        {"dts", "DTS"},   {"truehd", "TrueHD"}, {"flac", "FLAC"},         {"alac", "ALAC"},
        {"opus", "Opus"}, {"vorbis", "Vorbis"}, {"audio/eac3", "E-AC-3"}, {"audio/vnd.dts", "DTS"},
};

std::string codecName(const std::string& known) {
    for (const Codec& codec : kCodecs) {
        if (known == codec.known) return codec.name;
    }
    return known;
}

// What the trace says, taken apart.
struct Facts {
    const TraceEvent* lastRead = nullptr;  // before the line about a short one
    bool standsBack = false, initFailed = false, noMemory = false, tagsTooLong = false;
    bool openFailed = false, noStreams = false;
    std::string errorText;    // FFmpeg's, of the last two
    std::string indexClaims;  // more than can be, when not empty
    std::string processName;
    std::string mainAudio;       // FFmpeg's name, "none", or empty when no line tells
    size_t missingDemuxers = 0;  // of enabled containers
    bool isShort = false;
    long got = 0;  // bytes or status, when isShort
    bool hasScore = false;
    std::string mime;
    uint32_t container = 0;
    int score = 0;
};

// Whether `line` begins with the fixed words; what follows them goes to `rest`.
bool beginsWith(const std::string& line, const char* words, std::string* rest = nullptr) {
    const size_t length = strlen(words);
    if (line.compare(0, length, words) != 0) return false;
    if (rest) *rest = line.substr(length);
    return true;
}

void readLine(const std::string& line, Facts* facts) {
    char mime[64];
    long wanted = 0, got = 0;
    if (beginsWith(line, kStandsBack, &facts->processName)) {
        facts->standsBack = true;
    } else if (beginsWith(line, kInitFailed)) {
        facts->initFailed = true;
    } else if (beginsWith(line, kNoMemory)) {
        facts->noMemory = true;
    } else if (beginsWith(line, kTagsTooLong)) {
        facts->tagsTooLong = true;
    } else if (beginsWith(line, kOpenFailed, &facts->errorText)) {
        facts->openFailed = true;
    } else if (beginsWith(line, kNoStreams, &facts->errorText)) {
        facts->noStreams = true;
    } else if (beginsWith(line, kIndexClaims, &facts->indexClaims)) {
    } else if (beginsWith(line, kNoDemuxer)) {
        facts->missingDemuxers++;
    } else if (beginsWith(line, kMainAudio, &facts->mainAudio)) {
    } else if (beginsWith(line, kSpecialAudio)) {
        if (facts->mainAudio.empty()) facts->mainAudio = line.substr(strlen(kSpecialAudio));
    } else if (sscanf(line.c_str(), "Wanna read %ld bytes, but got %ld bytes", &wanted, &got) ==
               2) {
        facts->isShort = true;
        facts->got = got;
    } else if (sscanf(line.c_str(), "mime:%63[^,], mediaFlag:0x%x, finalScore:%d", mime,
                      &facts->container, &facts->score) == 3) {
        facts->hasScore = true;
        facts->mime = mime;
    }
}

Facts factsOf(const ExplainReport& trace) {
    Facts facts;
    for (const TraceEvent& event : trace.events) {
        if (event.kind == TraceEvent::Kind::Line) {
            readLine(event.text, &facts);
        } else if (event.kind == TraceEvent::Kind::Read && !facts.isShort) {
            facts.lastRead = &event;
        }
    }
    return facts;
}

std::string containerOf(const Facts& facts) {
    const char* name = containerName(facts.container);
    return name ? name : facts.mime;
}

std::string scoreText(const Facts& facts) {
    return "probe score " + std::to_string(facts.score);
}

std::string takenReason(const Facts& facts) {
    if (!facts.hasScore) return "";
    const std::string name = containerOf(facts);
    if (facts.openFailed) {
        return name + " by its first bytes (" + scoreText(facts) + ") and by these alone: FFmpeg " +
               "cannot open it (" + facts.errorText + ")";
    }
    if (!facts.mainAudio.empty()) {
        return name + " whose main audio is " + codecName(facts.mainAudio) + " (" +
               scoreText(facts) + ")";
    }
    return name + " by its first bytes (" + scoreText(facts) + ", more than " +
           std::to_string(kLowScore) + " is needed)";
}

// Recognised, but of the kind that is looked into.
std::string contentsReason(const Facts& facts) {
    const std::string name = containerOf(facts);
    if (facts.noStreams) {
        return name + " whose streams FFmpeg cannot make out (" + facts.errorText +
               "); the file is damaged or cut off";
    }
    if (!facts.indexClaims.empty()) return name + " whose index claims " + facts.indexClaims;
    const std::string only = "; the plug-in takes " + name + " only for DTS or E-AC-3";
    if (facts.mainAudio == "none") return name + " without audio" + only;
    if (facts.mainAudio.empty()) {
        return name + " whose main audio is neither DTS nor E-AC-3" + only;
    }
    return name + " whose main audio is " + codecName(facts.mainAudio) + only;
}

std::string shortReason(const Facts& facts, int64_t fileBytes) {
    const int64_t offset = facts.lastRead ? facts.lastRead->offset : 0;
    if (facts.got < 0) {
        return "the source could not be read: " + statusText(static_cast<int32_t>(facts.got)) +
               " at offset " + std::to_string(offset);
    }
    const std::string need = ", a probe needs " + std::to_string(kProbeBytes);
    if (fileBytes > offset + facts.got) {
        return "the source gave " + std::to_string(facts.got) + " bytes at offset " +
               std::to_string(offset) + need + " in one read";
    }
    const std::string got = std::to_string(facts.got) + " bytes";
    return (offset > 0 ? got + " behind " + std::to_string(offset) + " bytes of ID3 tags" : got) +
           need;
}

std::string noFitReason(const Facts& facts) {
    if (facts.missingDemuxers > 0) {
        return "no container fits, but this FFmpeg lacks " +
               countText(facts.missingDemuxers, "demuxer") + " of enabled containers; build it in";
    }
    if (facts.score <= 0) return "no container fits: the first bytes are of none that is known";
    return "no container fits: the best is " + containerOf(facts) + " with " + scoreText(facts) +
           ", more than " + std::to_string(kLowScore) + " is needed";
}

std::string maskReason(const std::string& mask, const std::optional<WideSniff>& wide) {
    const auto value = static_cast<uint32_t>(atoi(mask.c_str()));
    std::string text = "the property enables no container that fits";
    if ((value & kAllContainers) == 0) {
        text = "mm.enable.orvel_parser is \"" + mask + "\", which enables no container";
        if (mask.find_first_not_of("0123456789") != std::string::npos) {
            text += " (it takes a decimal number)";
        }
    }
    if (!wide) return text;
    const char* name = containerName(wide->container);
    if (!name) {
        return wide->reason.empty() ? text
                                    : text + "; with all enabled still declined: " + wide->reason;
    }
    text += std::string(": ") + name + " is bit " + std::to_string(wide->container);
    if (!wide->taken) return text + ", but " + wide->reason;
    return text + "; mm.enable.orvel_parser=" +
           std::to_string((value & kAllContainers) | wide->container) + " takes it";
}

}  // namespace

bool needsWideSniff(const SniffCase& one) {
    if (one.taken) return false;
    const auto value = static_cast<uint32_t>(atoi(one.mask.c_str()));
    const Facts facts = factsOf(one.trace);
    return (value & kAllContainers) != kAllContainers && facts.score <= kLowScore &&
           !facts.standsBack && !facts.initFailed && !facts.noMemory && !facts.tagsTooLong &&
           !facts.isShort;
}

std::string sniffReason(const SniffCase& one, const std::optional<WideSniff>& wide) {
    const Facts facts = factsOf(one.trace);
    if (one.taken) return takenReason(facts);
    if (facts.standsBack) {
        return "the plug-in stands back in processes whose name begins with " + facts.processName;
    }
    if (facts.initFailed) return "the plug-in could not set itself up";
    if (facts.noMemory) return "no memory for the probe";
    if (facts.score > kLowScore) return contentsReason(facts);
    if (facts.tagsTooLong)
        return "its ID3 tags take 3 MiB or more, fewer are skipped; shorten them";
    if (facts.isShort) return shortReason(facts, one.fileBytes);
    if (needsWideSniff(one)) return maskReason(one.mask, wide);
    return facts.hasScore ? noFitReason(facts) : "";
}

uint32_t bestContainer(const ExplainReport& trace) {
    const Facts facts = factsOf(trace);
    return facts.score > kLowScore ? facts.container : 0;
}

}  // namespace orvel::probe
