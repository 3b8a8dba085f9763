#include "html_section.h"

#include <media/stagefright/MediaErrors.h>
#include <utils/Errors.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>

#include "explain_output.h"
#include "html_plots.h"
#include "html_text.h"
#include "options.h"
#include "page.h"
#include "summary.h"
#include "text.h"
#include "track_line.h"
#include "verify_output.h"

namespace orvel::probe {
namespace {

// A bar takes 5 to 12 bytes, and a third more as text: 1 to 2 MB for the whole page.
constexpr size_t kBarsPerPage = 128 << 10;
constexpr size_t kMinBarsPerPlot = 200;
constexpr size_t kBarsPerCachePlot = 8 << 10;
constexpr size_t kMaxValueCharacters = 2000;
constexpr size_t kMaxValueBytes = 64;
constexpr size_t kMaxListing = 64 << 10;  // characters of --explain and --verify
constexpr char kFieldEnd = '\x1f';        // in no printable text

std::string element(const std::string& tag, const std::string& html) {
    return "<" + tag + ">" + html + "</" + tag.substr(0, tag.find(' ')) + ">";
}

// A cell that shows its column's name where the table has become a list.
std::string cell(const char* column, const std::string& html) {
    return element("td data-name=\"" + std::string(column) + "\"",
                   html.empty() ? "" : element("span", html));
}

std::string table(const std::string& kind, const std::vector<const char*>& columns,
                  const std::string& rows) {
    std::string head;
    for (const char* column : columns)
        head += element("th", column);
    return "<table class=\"" + kind + "\"><thead><tr>" + head + "</tr></thead>\n<tbody>" + rows +
           "</tbody></table>\n";
}

std::string summaryHtml(const Report& report) {
    std::string rows;
    const auto row = [&rows](const char* label, const std::string& html) {
        rows += element("dt", label) + element("dd", html) + "\n";
    };
    if (report.taken) {
        char confidence[32];
        snprintf(confidence, sizeof(confidence), ", confidence %.2f",
                 static_cast<double>(report.confidence));
        row("taken by", foreignText(report.extractor, kMaxValueCharacters) + confidence);
        row("container", foreignText(containerText(report), kMaxValueCharacters));
        for (const Tag& tag : kTags) {
            const auto* text = report.format.find<std::string>(tag.key);
            if (text) row(tag.label, foreignText(*text, kMaxValueCharacters));
        }
        if (const auto* cover = report.format.find<host::FormatBytes>("albumart")) {
            row("cover art", std::string(pictureKind(*cover)) + ", " + sizeText(cover->size()));
        }
        const std::string whole = wholeReadText(report);
        if (!whole.empty()) row("read", escaped(whole));
    }
    for (const std::string& written : report.written)
        row("wrote", foreignText(written));
    for (const std::string& note : report.notes)
        row("logged", foreignText(note));
    return rows.empty() ? "" : element("dl", rows);
}

std::string tracksHtml(const Report& report) {
    if (report.tracks.empty()) return "<p>No tracks.</p>\n";
    const bool wasRead = std::any_of(report.tracks.begin(), report.tracks.end(),
                                     [](const TrackReport& track) { return track.read; });
    std::string rows;
    for (const TrackReport& track : report.tracks) {
        rows += "<tr>" + cell("track", std::to_string(track.index)) +
                cell("type", foreignText(track.format.text(host::kKeyMime), kMaxValueCharacters)) +
                cell("format", foreignText(trackLine(track.format)));
        if (track.read) {
            const std::string end = escaped(endText(*track.read));
            rows += cell("samples", escaped(readText(*track.read))) +
                    cell("end", endedWell(*track.read) ? end : element("b class=\"bad\"", end));
        }
        rows += "</tr>\n";
    }
    std::vector<const char*> columns = {"track", "type", "format"};
    if (wasRead) columns.insert(columns.end(), {"samples", "end"});
    return table("cards", columns, rows);
}

std::string landedHtml(const SeekReport& seek, const SeekTrackReport& track) {
    if (track.samples.empty()) {
        const bool ended = track.status == android::ERROR_END_OF_STREAM;
        return element(
                "b class=\"bad\"",
                "no sample: " + (ended ? "end of stream" : escaped(statusText(track.status))));
    }
    std::string html;
    for (const Sample& sample : track.samples) {
        html += html.empty() ? "" : "<br>then ";
        html += secondsText(sample.timeUs) + (sample.sync ? ", key, " : ", not key, ");
        if (&sample == &track.samples[0]) {
            html += element("b", offsetText(sample.timeUs, seek.timeUs)) + ", ";
        }
        if (sample.targetTimeUs) {
            html += "target " + secondsText(*sample.targetTimeUs) + " (" +
                    offsetText(*sample.targetTimeUs, seek.timeUs) + "), ";
        }
        html += sizeText(sample.size);
    }
    if (track.status != android::OK) {
        html += "<br>" + element("b class=\"bad\"", escaped(statusText(track.status)));
    }
    return html;
}

std::string seeksHtml(const Report& report) {
    if (report.seeks.empty()) return "";
    std::string rows;
    for (const SeekReport& seek : report.seeks) {
        for (const SeekTrackReport& track : seek.tracks) {
            rows += "<tr>" + cell("asked", secondsText(seek.timeUs)) +
                    cell("mode", seekModeName(seek.mode)) +
                    cell("track", std::to_string(track.index)) +
                    cell("landed", landedHtml(seek, track)) + "</tr>\n";
        }
    }
    return element("h3", "Seeks, as asked and landed") + "\n" +
           table("cards", {"asked", "mode", "track", "landed"}, rows);
}

std::string plotsHtml(const Report& report, size_t files) {
    std::string html;
    const size_t plots = std::max<size_t>(1, report.tracks.size()) * std::max<size_t>(1, files);
    const size_t bars = std::max(kMinBarsPerPlot, kBarsPerPage / plots);
    for (const TrackReport& track : report.tracks) {
        const std::string plot = trackPlotHtml(report, track, bars);
        if (plot.empty()) continue;
        html += "<h3>Track " + std::to_string(track.index) + ", " +
                foreignText(track.format.text(host::kKeyMime), kMaxValueCharacters) + "</h3>\n" +
                plot;
    }
    const std::string cache = cachePlotHtml(report, std::min(bars, kBarsPerCachePlot));
    if (!cache.empty()) html += "<h3>Cache fill over the read</h3>\n" + cache;
    return html;
}

std::string keysHtml(const std::string& title, const FormatReport& format) {
    std::string rows;
    for (const host::FormatEntry& entry : format.entries) {
        rows += "<tr><th scope=\"row\">" + foreignText(entry.key, kMaxValueCharacters) + "</th>" +
                element("td",
                        foreignText(valueText(entry.value, kMaxValueCharacters, kMaxValueBytes))) +
                "</tr>\n";
    }
    return element("h3", title) + "\n<table class=\"keys\"><tbody>" + rows + "</tbody></table>\n";
}

// A part of the text page as it stands.
std::string listingHtml(const char* title, const std::function<void(const Page&)>& write) {
    char* memory = nullptr;
    size_t size = 0;
    FILE* out = open_memstream(&memory, &size);
    if (!out) return "";
    TextStyle style;
    style.allKeys = true;
    write(Page(style, out));
    fclose(out);
    std::string text(memory, size);
    free(memory);
    if (text.size() > kMaxListing) {
        text.resize(text.rfind('\n', kMaxListing) + 1);
        text += "  and more, as the text output shows\n";
    }
    return element("h3", title) + "\n" + element("pre", escaped(text)) + "\n";
}

}  // namespace

HtmlSection makeHtmlSection(const Report& report, size_t files) {
    HtmlSection section;
    section.result = resultOf(report);
    section.remark = printable(remarkOf(report), kMaxValueCharacters);
    if (report.taken) {
        uint64_t samples = 0, bytes = 0;
        bool wasRead = false;
        for (const TrackReport& track : report.tracks) {
            if (!track.read) continue;
            wasRead = true;
            samples += track.read->count;
            bytes += track.read->bytes;
        }
        const std::string read =
                wasRead ? countText(samples, "sample") + ", " + sizeText(bytes) : "";
        section.cells = cell("container", foreignText(containerText(report), 80)) +
                        cell("tracks", foreignText(codecsText(report), 80)) + cell("read", read);
    }
    section.body = summaryHtml(report);
    if (report.explain) {
        section.body += listingHtml("How the plug-in decided",
                                    [&](const Page& page) { writeExplain(page, report); });
    }
    if (report.taken) {
        section.body += element("h3", "Tracks") + "\n" + tracksHtml(report);
        section.body += seeksHtml(report) + plotsHtml(report, files);
    }
    if (report.verify) {
        section.body += listingHtml("Compared with plain libavformat",
                                    [&](const Page& page) { writeVerify(page, *report.verify); });
    }
    if (report.taken) {
        section.body += keysHtml("Format keys of the file", report.format);
        for (const TrackReport& track : report.tracks) {
            section.body +=
                    keysHtml("Format keys of track " + std::to_string(track.index), track.format);
        }
    }
    return section;
}

std::string HtmlSection::toText() const {
    return std::to_string(static_cast<int>(result)) + kFieldEnd + remark + kFieldEnd + cells +
           kFieldEnd + body;
}

HtmlSection HtmlSection::fromText(const std::string& text) {
    std::istringstream in(text);
    std::string result;
    HtmlSection section;
    if (std::getline(in, result, kFieldEnd)) {
        section.result = static_cast<Result>(atoi(result.c_str()));
    }
    std::getline(in, section.remark, kFieldEnd);
    std::getline(in, section.cells, kFieldEnd);
    std::getline(in, section.body, '\0');  // all of the rest
    return section;
}

}  // namespace orvel::probe
