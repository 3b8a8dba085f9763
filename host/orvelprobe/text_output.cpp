#include "text_output.h"

#include <media/stagefright/MediaErrors.h>
#include <utils/Errors.h>

#include <algorithm>
#include <cinttypes>
#include <string>

#include "explain_output.h"
#include "options.h"
#include "page.h"
#include "summary.h"
#include "text.h"
#include "track_line.h"
#include "verify_output.h"

namespace orvel::probe {
namespace {

constexpr size_t kHexBytesShown = 24;

std::string shownValue(const Page& page, const host::FormatValue& value) {
    return valueText(value, page.foreignRoom(), kHexBytesShown);
}

void writeKeys(const Page& page, const char* title, const FormatReport& format) {
    page.line("  " + page.paint(Colour::Dim, title));
    size_t widest = 0;
    for (const host::FormatEntry& entry : format.entries) {
        widest = std::max(widest, entry.key.size());
    }
    for (const host::FormatEntry& entry : format.entries) {
        page.line("    " + printable(entry.key) + std::string(widest - entry.key.size() + 2, ' ') +
                  shownValue(page, entry.value));
    }
}

void writeTags(const Page& page, const Report& report) {
    for (const Tag& tag : kTags) {
        const auto* text = report.format.find<std::string>(tag.key);
        if (text) page.row(tag.label, page.foreign(*text));
    }
    if (const auto* rate = report.format.find<float>("capture-rate")) {
        page.row("captured", shownValue(page, *rate) + " fps");
    }
    if (const auto* cover = report.format.find<host::FormatBytes>("albumart")) {
        page.row("cover art", std::string(pictureKind(*cover)) + ", " + sizeText(cover->size()));
    }
}

std::string readLine(const Page& page, const ReadReport& read) {
    const std::string end = endText(read);
    return readText(read) + ", " + (endedWell(read) ? end : page.paint(Colour::Bad, end));
}

void writeTracks(const Page& page, const Report& report) {
    if (report.tracks.empty() && report.error.empty()) {
        page.row("tracks", page.paint(Colour::Warn, "none"));
    }
    size_t widest = 0;
    for (const TrackReport& track : report.tracks) {
        widest = std::max(widest, track.format.text(host::kKeyMime).size());
    }
    for (const TrackReport& track : report.tracks) {
        const std::string mime = track.format.text(host::kKeyMime);
        page.row("track " + std::to_string(track.index),
                 page.paint(Colour::Bold, printable(mime)) +
                         std::string(widest - mime.size() + 2, ' ') + trackLine(track.format));
        if (track.read) page.row("", readLine(page, *track.read));
    }
    const std::string whole = wholeReadText(report);
    if (!whole.empty()) page.row("read", whole);
}

void writeSamples(const Page& page, const Report& report) {
    for (const TrackReport& track : report.tracks) {
        if (!track.read) continue;
        page.line("  " +
                  page.paint(Colour::Dim, "samples of track " + std::to_string(track.index)));
        size_t number = 0;
        for (const Sample& sample : track.samples) {
            fprintf(page.out(), "    %8zu  %18s  %10zu%s\n", number++,
                    secondsText(sample.timeUs).c_str(), sample.size, sample.sync ? "  key" : "");
        }
    }
}

// Asked, landed, how far off; where a target is given, that is what the seek is measured by.
void writeSeeks(const Page& page, const Report& report) {
    for (const SeekReport& seek : report.seeks) {
        page.line("  " + page.paint(Colour::Bold, "seek to " + secondsText(seek.timeUs) + ", " +
                                                          seekModeName(seek.mode)));
        for (const SeekTrackReport& track : seek.tracks) {
            const std::string label = "    track " + std::to_string(track.index);
            if (track.samples.empty()) {
                page.line(label + "  " +
                          (track.status == android::ERROR_END_OF_STREAM
                                   ? page.paint(Colour::Warn, "no sample: end of stream")
                                   : page.paint(Colour::Bad,
                                                "no sample: " + statusText(track.status))));
                continue;
            }
            for (size_t i = 0; i < track.samples.size(); i++) {
                const Sample& sample = track.samples[i];
                std::string text =
                        i == 0 ? label + "  landed at " : std::string(13, ' ') + "then at ";
                text += secondsText(sample.timeUs);
                text += sample.sync ? ", key" : ", not key";
                if (i == 0) text += ", " + offsetText(sample.timeUs, seek.timeUs);
                if (sample.targetTimeUs) {
                    text += "; target " + secondsText(*sample.targetTimeUs) + ", " +
                            offsetText(*sample.targetTimeUs, seek.timeUs);
                }
                page.line(text + ", " + sizeText(sample.size));
            }
            if (track.status != android::OK) {
                page.line(label + "  " + page.paint(Colour::Bad, statusText(track.status)));
            }
        }
    }
}

void writeTaken(const Page& page, const Report& report) {
    char confidence[32];
    snprintf(confidence, sizeof(confidence), "%.2f", static_cast<double>(report.confidence));
    page.row("taken", page.paint(Colour::Good, "by " + printable(report.extractor)) +
                              ", confidence " + confidence);
    page.row("container", containerText(report));
    writeTags(page, report);
    writeTracks(page, report);
    if (page.allKeys()) {
        writeKeys(page, "keys of the file", report.format);
        for (const TrackReport& track : report.tracks) {
            writeKeys(page, ("keys of track " + std::to_string(track.index)).c_str(), track.format);
        }
    }
    if (report.listSamples) writeSamples(page, report);
    writeSeeks(page, report);
}

}  // namespace

void writeText(const Report& report, const TextStyle& style, FILE* out) {
    const Page page(style, out);
    page.line(page.paint(Colour::Bold, printable(report.file)));
    if (report.explain) writeExplain(page, report);
    if (report.taken) {
        writeTaken(page, report);
    } else if (report.opened && !report.explain) {
        page.row("declined", page.paint(Colour::Warn, printable(report.reason)));
    }
    if (report.verify) writeVerify(page, *report.verify);
    for (const std::string& written : report.written)
        page.row("wrote", printable(written));
    for (const std::string& note : report.notes)
        page.row("logged", page.foreign(note));
    if (!report.error.empty()) {
        page.row("error", page.paint(Colour::Bad, printable(report.error)));
    }
    page.line("");
}

void writeTextError(const std::string& error, const TextStyle& style, FILE* out) {
    const Page page(style, out);
    page.row("error", page.paint(Colour::Bad, printable(error)));
    page.line("");
}

}  // namespace orvel::probe
