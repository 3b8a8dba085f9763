#include "table_output.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "page.h"
#include "summary.h"
#include "text.h"

namespace orvel::probe {
namespace {

struct ResultStyle {
    const char* summary;
    Colour colour;
};
constexpr ResultStyle kResults[] = {
        {"taken", Colour::Good},           {"declined", Colour::Warn}, {"unreadable", Colour::Bad},
        {"with differences", Colour::Bad}, {"failed", Colour::Bad},    {"crashed", Colour::Bad},
        {"timed out", Colour::Bad},
};
static_assert(std::size(kResults) == kResultCount);

constexpr size_t kResultColumns = 12;
constexpr size_t kContainerColumns = 11;
constexpr size_t kDurationColumns = 13;
constexpr size_t kTracksColumns = 22;
constexpr size_t kReadColumns = 18;

std::string padded(std::string text, size_t columns) {
    if (text.size() > columns - 2) text = text.substr(0, columns - 4) + "..";
    return text + std::string(columns - text.size(), ' ');
}

std::string columnsOf(const Report& report) {
    if (!report.taken) return "";
    std::string container = report.format.text(host::kKeyMime);
    const int64_t longestUs = durationUs(report);
    uint64_t samples = 0, bytes = 0;
    bool wasRead = false;
    for (const TrackReport& track : report.tracks) {
        const std::string own = track.format.text("file-format");
        if (!own.empty()) container = own;
        if (!track.read) continue;
        wasRead = true;
        samples += track.read->count;
        bytes += track.read->bytes;
    }
    std::string text =
            padded(container.empty() ? "unknown" : shortMime(container), kContainerColumns) +
            padded(longestUs < 0 ? "-" : durationText(longestUs), kDurationColumns) +
            padded(codecsText(report), kTracksColumns);
    if (wasRead) {
        text += padded(std::to_string(samples), kReadColumns / 2) +
                padded(sizeText(bytes), kReadColumns / 2 + 2);
    }
    return text;
}

}  // namespace

TableRow makeRow(const Report& report) {
    return {resultOf(report), columnsOf(report), printable(remarkOf(report))};
}

std::string TableRow::toText() const {
    return std::to_string(static_cast<int>(result)) + "\n" + columns + "\n" + remark + "\n";
}

TableRow TableRow::fromText(const std::string& text) {
    std::istringstream in(text);
    std::string result;
    TableRow row;
    if (std::getline(in, result)) row.result = static_cast<Result>(atoi(result.c_str()));
    std::getline(in, row.columns);
    std::getline(in, row.remark);
    return row;
}

void Table::writeRow(const std::string& file, const TableRow& row) {
    const Page page(mStyle, mOut);
    const size_t readColumns = mShowsRead ? kReadColumns + 2 : 0;
    if (mRows++ == 0) {
        page.line(page.paint(
                Colour::Bold,
                padded("RESULT", kResultColumns) + padded("CONTAINER", kContainerColumns) +
                        padded("DURATION", kDurationColumns) + padded("TRACKS", kTracksColumns) +
                        (mShowsRead ? padded("SAMPLES", kReadColumns / 2) +
                                              padded("SIZE", kReadColumns / 2 + 2)
                                    : "") +
                        "FILE"));
    }
    mCounts[static_cast<size_t>(row.result)]++;
    const size_t width = kContainerColumns + kDurationColumns + kTracksColumns + readColumns;
    std::string columns = row.columns.empty() ? padded("-", kContainerColumns) : row.columns;
    columns.resize(std::max(columns.size(), width), ' ');
    std::string text = printable(file);
    if (!row.remark.empty()) text += ": " + row.remark;
    page.line(page.paint(kResults[static_cast<size_t>(row.result)].colour,
                         padded(resultName(row.result), kResultColumns)) +
              columns + text);
}

void Table::writeSummary(uint64_t samples, uint64_t bytes, double seconds) const {
    const Page page(mStyle, mOut);
    char time[32];
    snprintf(time, sizeof(time), seconds < 10 ? " in %.2f s: " : " in %.0f s: ", seconds);
    std::string text = countText(mRows, "file") + time;
    const char* separator = "";
    for (size_t i = 0; i < mCounts.size(); i++) {
        if (mCounts[i] == 0) continue;
        text += separator +
                page.paint(kResults[i].colour, countText(mCounts[i]) + " " + kResults[i].summary);
        separator = ", ";
    }
    if (mShowsRead) text += "; " + countText(samples, "sample") + ", " + sizeText(bytes) + " read";
    page.line("");
    page.line(text);
}

}  // namespace orvel::probe
