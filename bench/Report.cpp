#include "Report.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <nlohmann/json.hpp>

namespace orvel::bench {
namespace {

using Json = nlohmann::ordered_json;

constexpr double kMiB = 1024 * 1024;

/** How a target's figure comes from one round. */
enum class Relation { Ratio, Difference, OfQuiet, Plain };

struct FigureText {
    const char* name;
    const char* unit;  // of the two sides' columns
    double Measure::*field;
    double scale;
    Relation relation;
    bool perSample = false;
};

// By Figure.
constexpr FigureText kFigures[] = {
        {"time / bare", "ms", &Measure::seconds, 1e3, Relation::Ratio},
        {"processor time / bare", "ms", &Measure::cpuSeconds, 1e3, Relation::Ratio},
        {"processor time / own when quiet", "", &Measure::cpuSeconds, 1, Relation::OfQuiet},
        {"sleeps a sample", "", &Measure::sleeps, 1, Relation::Plain, true},
        {"source reads in one command", "", &Measure::worstReads, 1, Relation::Plain},
        {"peak memory - bare", "MiB", &Measure::peakBytes, 1 / kMiB, Relation::Difference},
};

const FigureText& textOf(Figure figure) {
    return kFigures[static_cast<size_t>(figure)];
}

double valueOf(const FigureText& figure, const Measure& measure, const Measure& quiet) {
    const double value = figure.scale * (measure.*figure.field);
    if (figure.relation == Relation::OfQuiet) return value / (quiet.*figure.field);
    return figure.perSample ? value / static_cast<double>(measure.samples) : value;
}

double bareOf(const FigureText& figure, const Round& round) {
    return valueOf(figure, round.bare, round.quietBare);
}

double pluginOf(const FigureText& figure, const Round& round) {
    return valueOf(figure, round.plugin, round.quietPlugin);
}

double resultOf(const FigureText& figure, const Round& round) {
    const double plugin = pluginOf(figure, round);
    if (figure.relation == Relation::Ratio) return plugin / bareOf(figure, round);
    if (figure.relation == Relation::Difference) return plugin - bareOf(figure, round);
    return plugin;
}

using Value = double (*)(const FigureText& figure, const Round& round);

std::vector<double> values(const CaseResult& result, const FigureText& figure, Value value) {
    std::vector<double> all;
    for (const Round& round : result.rounds)
        all.push_back(value(figure, round));
    return all;
}

// Null for the bare loop's share where there is none.
Json middle(const CaseResult& result, const FigureText& figure, Value value) {
    const bool needsBare =
            value == bareOf || (value == resultOf && figure.relation == Relation::Ratio);
    if (needsBare && result.row->bare == nullptr) return nullptr;
    return median(values(result, figure, value));
}

/** Lines of as many cells as there are keys: text, numbers, or null for what does not exist. */
struct Table {
    std::vector<const char*> keys;
    std::vector<std::vector<Json>> lines;
};

Table targetTable(const std::vector<CaseResult>& results) {
    Table table{{"case", "figure", "unit", "bare", "plug-in", "result", "lowest", "highest",
                 "target", "verdict"},
                {}};
    for (const CaseResult& result : results) {
        for (const Target& target : result.row->targets) {
            const FigureText& figure = textOf(target.figure);
            const std::vector<double> all = values(result, figure, resultOf);
            const auto [low, high] = std::minmax_element(all.begin(), all.end());
            // What holds for each single command holds in each round.
            const double value = target.figure == Figure::WorstReads ? *high : median(all);
            const double limit = target.limit + result.fullRuleMiB;
            table.lines.push_back({result.row->name, figure.name, figure.unit,
                                   middle(result, figure, bareOf), middle(result, figure, pluginOf),
                                   value, *low, *high, limit, value <= limit ? "met" : "MISSED"});
        }
    }
    return table;
}

Table costTable(const std::vector<CaseResult>& results) {
    constexpr FigureText kReads = {"", "", &Measure::reads, 1, Relation::Plain};
    const FigureText& time = textOf(Figure::Time);
    const FigureText& processor = textOf(Figure::Processor);
    const FigureText& sleeps = textOf(Figure::Sleeps);
    Table table{{"case", "samples", "bare ms", "plug-in ms", "ratio", "bare processor ms",
                 "plug-in processor ms", "processor ratio", "plug-in sleeps a sample",
                 "bare source reads", "plug-in source reads", "what"},
                {}};
    for (const CaseResult& result : results) {
        if (result.row->ownProcess) continue;
        table.lines.push_back({result.row->name, result.rounds.front().plugin.samples,
                               middle(result, time, bareOf), middle(result, time, pluginOf),
                               middle(result, time, resultOf), middle(result, processor, bareOf),
                               middle(result, processor, pluginOf),
                               middle(result, processor, resultOf),
                               middle(result, sleeps, pluginOf), middle(result, kReads, bareOf),
                               middle(result, kReads, pluginOf), result.row->title});
    }
    return table;
}

std::string cellText(const Json& cell) {
    if (cell.is_null()) return "-";
    if (cell.is_string()) return cell.get<std::string>();
    const double value = cell.get<double>();
    char text[32];
    const int digits = cell.is_number_integer() || value >= 1000 ? 0 : value < 10 ? 3 : 1;
    snprintf(text, sizeof(text), "%.*f", digits, value);
    return text;
}

// In Markdown that can be read as it stands.
std::string tableText(const Table& table) {
    std::vector<std::vector<std::string>> lines = {{table.keys.begin(), table.keys.end()}, {}};
    for (const auto& line : table.lines) {
        lines.emplace_back();
        std::transform(line.begin(), line.end(), std::back_inserter(lines.back()), cellText);
    }
    std::vector<std::string> rows(lines.size(), "|");
    for (size_t column = 0; column < table.keys.size(); ++column) {
        size_t width = 0;
        for (size_t i = 0; i < lines.size(); ++i) {
            if (i != 1) width = std::max(width, lines[i][column].size());
        }
        lines[1].emplace_back(width, '-');
        for (size_t i = 0; i < lines.size(); ++i) {
            const std::string& cell = lines[i][column];
            rows[i] += " " + cell + std::string(width - cell.size(), ' ') + " |";
        }
    }
    std::string text;
    for (const std::string& row : rows)
        text += row + "\n";
    return text;
}

Json tableJson(const Table& table) {
    Json lines = Json::array();
    for (const auto& line : table.lines) {
        Json object;
        for (size_t i = 0; i < line.size(); ++i)
            object[table.keys[i]] = line[i];
        lines.push_back(object);
    }
    return lines;
}

constexpr const char* kPageHead = R"(# Benchmarks

`./dev bench --write` wrote this page; `./dev bench` measures and writes nothing.

The bare loop is the least that any extractor over FFmpeg must do: `av_read_frame` over the same file and the same
source, each payload copied once, on one thread. Plug-in and bare loop run in one process, turn by turn, with the file in
the page cache. A figure is the median of the rounds; a ratio is the median of the rounds' ratios.

- **time** is what a player waits; **processor time**, all threads together, is what its battery pays.
- **sleeps a sample**: how often a thread gave up its core and had to be woken.
- **own when quiet**: the processor time over that of the same reading on two quiet cores, measured in turn with it. The
  bare loop's column shows what the surroundings alone cost.
- **source reads in one command**: the most that any single stop or start waited for, of all rounds.
- **peak memory**: resident, each turn in a process of its own. The target is 2 MiB and what the full rule (65 sound
  packets, 31 pictures) lets the plug-in hold of this file.

)";

}  // namespace

std::string asText(const Report& report) {
    std::string text;
    for (const std::string& line : report.machine)
        text += "- " + line + "\n";
    return text + "- Rounds: " + std::to_string(report.rounds) +
           ", after one that does not count\n\n" + tableText(targetTable(report.results)) +
           "\nAll of a turn:\n\n" + tableText(costTable(report.results));
}

std::string asPage(const Report& report) {
    return kPageHead + asText(report);
}

std::string asJson(const Report& report) {
    const Json json = {{"machine", report.machine},
                       {"rounds", report.rounds},
                       {"targets", tableJson(targetTable(report.results))},
                       {"turns", tableJson(costTable(report.results))}};
    return json.dump(2) + "\n";
}

}  // namespace orvel::bench
