#include "render/Text.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include "Options.h"
#include "Words.h"

namespace orvel::probe {
namespace {

constexpr size_t kLabelColumns = 12;
constexpr size_t kLeastTextColumns = 20;
constexpr size_t kHexBytesShown = 24;

std::string paint(const TextStyle& style, Tone tone, const std::string& text) {
    static constexpr const char* kCodes[] = {"", "1", "32", "33", "31;1", "2"};
    if (!style.colour || tone == Tone::Plain) return text;
    return "\033[" + std::string(kCodes[static_cast<int>(tone)]) + "m" + text + "\033[0m";
}

// Breaks between words, so that no line is longer than `columns`, unless a word is.
std::vector<std::string> wrapped(const std::string& text, size_t columns) {
    std::vector<std::string> lines(1);
    for (size_t at = 0; at < text.size();) {
        const size_t word = text.find_first_not_of(' ', at);
        const size_t end = std::min(text.find(' ', std::min(word, text.size())), text.size());
        const bool fits =
                widthOf(lines.back()) + widthOf(std::string_view(text).substr(at, end - at)) <=
                columns;
        if (!fits && !lines.back().empty()) {
            lines.emplace_back();
            at = word;
        }
        lines.back() += text.substr(at, end - at);
        at = end;
    }
    return lines;
}

void writeRows(const Rows& rows, const TextStyle& style, size_t labelColumns) {
    const size_t indent = 2 + labelColumns;
    const size_t room =
            std::max(style.width > indent ? style.width - indent : 0, kLeastTextColumns);
    for (const Row& row : rows) {
        std::string label = row.label;
        label.append(label.size() < labelColumns ? labelColumns - label.size() : labelColumns > 0,
                     ' ');
        const char* separator = "  ";
        for (const std::string& line : wrapped(row.text, room)) {
            printf("%s%s%s\n", separator, paint(style, Tone::Dim, label).c_str(),
                   paint(style, row.tone, line).c_str());
            label.assign(labelColumns, ' ');
        }
    }
}

void writeTitle(const TextStyle& style, const std::string& title) {
    printf("  %s\n", paint(style, Tone::Bold, title).c_str());
}

void writeKeys(const TextStyle& style, const std::string& title, const Json& format) {
    writeTitle(style, title);
    const Rows rows = keyRows(format, 0, kHexBytesShown);
    size_t widest = 0;
    for (const Row& row : rows)
        widest = std::max(widest, widthOf(row.label));
    writeRows(rows, style, widest + 2);
}

void writeSamples(const TextStyle& style, size_t track, const std::vector<Sample>& samples) {
    writeTitle(style, "samples of track " + std::to_string(track));
    size_t number = 0;
    for (const Sample& sample : samples) {
        printf("    %8zu  %18s  %10u%s\n", number++, secondsText(sample.timeUs).c_str(),
               sample.size, sample.sync ? "  key" : "");
    }
}

constexpr size_t kResultColumns = 11;

}  // namespace

TextStyle stdoutStyle() {
    TextStyle style;
    const char* terminal = getenv("TERM");
    const char* noColour = getenv("NO_COLOR");
    const char* columns = getenv("COLUMNS");
    const bool isTerminal = isatty(STDOUT_FILENO);
    style.cuts = isTerminal || columns;
    style.colour =
            isTerminal && terminal && strcmp(terminal, "dumb") != 0 && !(noColour && *noColour);
    winsize size{};
    if (isTerminal) ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
    const int width = size.ws_col > 0 ? size.ws_col : columns ? atoi(columns) : 0;
    if (width > 0) style.width = static_cast<size_t>(width);
    return style;
}

void writeText(const Report& report, const TextStyle& style, bool keys) {
    const Json& tree = report.tree;
    printf("%s\n", paint(style, Tone::Bold, printable(textOf(tree, "file"))).c_str());
    if (tree.contains("explain")) writeRows(explainRows(tree), style, 2);
    writeRows(summaryRows(tree), style, kLabelColumns);
    writeRows(seekRows(tree), style, 0);
    if (tree.contains("verify")) writeRows(verifyRows(tree), style, kLabelColumns);
    const Json& tracks = listOf(tree, "tracks");
    if (keys && tree.contains("format")) writeKeys(style, "keys of the file", tree["format"]);
    for (const Json& track : tracks) {
        if (!keys) break;
        writeKeys(style, "keys of track " + std::to_string(intOf(track, "index")), track["format"]);
    }
    if (objectOf(tree, "private").value("listSamples", false)) {
        for (const auto& [track, samples] : report.samples)
            writeSamples(style, track, samples);
    }
    putchar('\n');
}

void Table::writeRow(const std::string& file, const Json& tree) {
    if (mRows++ == 0) {
        std::string head = mShowsSeeks
                                   ? kSeekColumns
                                   : formatted("%-10s %-7s %-22s ", "RESULT", "LENGTH", "CONTENT");
        if (mShowsRead) head += formatted("%-7s %-8s ", "SAMPLES", "SIZE");
        printf("%s\n", paint(mStyle, Tone::Bold, head + "FILE").c_str());
    }
    const Result result = resultOf(tree);
    mCounts[static_cast<size_t>(result)]++;
    std::string name = printable(file);
    const std::string remark = printable(remarkOf(tree));
    const Rows seeks = seekRows(tree);
    for (size_t i = 1; i < seeks.size(); i++)
        printf("%s%s\n", paint(mStyle, seeks[i].tone, seeks[i].text).c_str(), name.c_str());
    if (!mShowsSeeks || seeks.empty()) {
        std::string columns =
                formatted("%-7s ", lengthText(tree).c_str()) + padded(contentText(tree), 23);
        if (mShowsRead) {
            const int64_t samples = totalOf(tree, "count"), bytes = totalOf(tree, "bytes");
            columns += formatted("%-7s %-8s ", samples < 0 ? "" : countText(samples).c_str(),
                                 bytes < 0 ? "" : sizeText(bytes).c_str());
        }
        const size_t room =
                mStyle.width - std::min(mStyle.width, kResultColumns + widthOf(columns));
        if (mStyle.cuts && widthOf(name) > room && room > 8)
            name = ".." + name.substr(name.size() - room + 2);
        const std::string verdict = formatted("%-10s ", resultName(result));
        printf("%s%s%s\n", paint(mStyle, toneOf(result), verdict).c_str(), columns.c_str(),
               name.c_str());
    }
    if (!remark.empty()) writeRows({{"", remark, toneOf(result)}}, mStyle, kResultColumns - 2);
}

void Table::writeSummary(uint64_t samples, uint64_t bytes, double seconds) const {
    std::string text = countText(mRows, "file") + formatted(" in %.2f s", seconds);
    const char* separator = ": ";
    for (size_t i = 0; i < mCounts.size(); i++) {
        if (mCounts[i] == 0) continue;
        text += separator + countText(mCounts[i]) + " " + resultName(static_cast<Result>(i));
        separator = ", ";
    }
    if (mShowsRead) text += "; " + countText(samples, "sample") + ", " + sizeText(bytes) + " read";
    printf("\n");
    for (const std::string& line : wrapped(text, mStyle.width))
        printf("%s\n", line.c_str());
}

}  // namespace orvel::probe
