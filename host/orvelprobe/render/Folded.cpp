#include <regex>

#include "Words.h"
#include "render/Summary.h"
#include "verify/Verifier.h"

namespace orvel::probe {
namespace {

constexpr size_t kMaxPeriod = 4;  // lines that take turns
constexpr size_t kTagColumns = 17;

// The text with its numbers taken out: words of hexadecimal digits of which one is decimal.
std::string shapeOf(const std::string& text) {
    static const std::regex kNumber("[-+]?\\b[0-9a-fA-Fx]*[0-9][0-9a-fA-Fx]*\\b");
    return std::regex_replace(text, kNumber, "#");
}

// Runs of rows of one shape, or of a few that take turns, become their first and their last.
Rows folded(const Rows& rows) {
    std::vector<std::string> shapes;
    for (const Row& row : rows)
        shapes.push_back(shapeOf(row.text));
    Rows out;
    for (size_t i = 0; i < rows.size();) {
        size_t end = i + 1, period = 1;
        for (size_t p = 1; p <= kMaxPeriod && end <= i + 3 * period; p++) {
            period = p;
            for (end = std::min(i + p, rows.size());
                 end < rows.size() && shapes[end] == shapes[end - p];)
                end++;
        }
        if (end <= i + 3 * period) {
            out.push_back(rows[i++]);
            continue;
        }
        const auto at = [&rows](size_t index) {
            return rows.begin() + static_cast<ptrdiff_t>(index);
        };
        out.insert(out.end(), at(i), at(i + period));
        out.push_back({"",
                       "... " + countText(end - i - 2 * period, "more line") + " like " +
                               (period == 1 ? "it" : "these"),
                       Tone::Dim});
        out.insert(out.end(), at(end - period), at(end));
        i = end;
    }
    return out;
}

std::string readText(const Json& read) {
    const int64_t length = intOf(read, "length"), result = intOf(read, "result");
    return "read at " + std::to_string(intOf(read, "offset")) + ", " + std::to_string(length) +
           " bytes: " +
           (result == length ? "all"
            : result == 0    ? "none, the end"
            : result < 0     ? statusText(static_cast<int32_t>(result))
                             : std::to_string(result) + " bytes");
}

Row stepRow(const Json& step) {
    if (step.contains("read")) return {"", readText(step["read"])};
    const int64_t size = intOf(step, "size");
    if (step.contains("size"))
        return {"", "size asked: " + (size < 0 ? "not known" : std::to_string(size))};
    const Json& log = objectOf(step, "log");
    const std::string letter = textOf(log, "priority"), tag = printable(textOf(log, "tag"));
    const std::string text = letter + "  " + padded(tag, std::max(kTagColumns, tag.size() + 1)) +
                             printable(textOf(log, "text"));
    return {"", text,
            letter == "W"                    ? Tone::Warn
            : letter == "E" || letter == "F" ? Tone::Bad
                                             : Tone::Plain};
}

}  // namespace

Rows explainRows(const Json& tree) {
    const Json& explain = objectOf(tree, "explain");
    Rows rows;
    for (const Json& step : listOf(explain, "steps"))
        rows.push_back(stepRow(step));
    rows = folded(rows);
    const int64_t omitted = intOf(explain, "omitted");
    if (omitted > 0) rows.push_back({"", "and " + countText(omitted, "more step")});
    rows.push_back({"verdict", printable(textOf(explain, "verdict")), toneOf(resultOf(tree))});
    return rows;
}

Rows verifyRows(const Json& tree) {
    const Json& verify = objectOf(tree, "verify");
    const int64_t omitted = intOf(verify, "omitted");
    Rows rows;
    for (const Json& difference : listOf(verify, "differences"))
        rows.push_back({"", printable(differenceText(difference))});
    const std::string found =
            rows.empty() ? "all the same" : countText(rows.size() + omitted, "difference");
    const Tone tone = rows.empty() ? Tone::Good : Tone::Bad;
    std::map<std::string, size_t> order;  // what is alike stands together, by its first
    for (Row& row : rows)
        order.emplace(shapeOf(row.text), order.size());
    std::stable_sort(rows.begin(), rows.end(), [&order](const Row& one, const Row& other) {
        return order[shapeOf(one.text)] < order[shapeOf(other.text)];
    });
    rows = folded(rows);
    if (omitted > 0) rows.push_back({"", "and " + countText(omitted, "more difference")});
    rows.insert(rows.begin(), {"verified",
                               countText(intOf(verify, "compared"), "sample") + " compared with " +
                                       textOf(verify, "reference") + ", " + found,
                               tone});
    return rows;
}

}  // namespace orvel::probe
