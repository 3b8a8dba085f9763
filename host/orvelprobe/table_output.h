// Many files at a glance: one line each, and a summary.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "report.h"
#include "result.h"
#include "text_output.h"

namespace orvel::probe {

// A line of the table; all texts are fit for a terminal.
struct TableRow {
    Result result = Result::Failed;
    std::string columns;  // container, duration, tracks, and what was read
    std::string remark;   // why it was declined, what went wrong

    // On its way from a child to its parent.
    std::string toText() const;
    static TableRow fromText(const std::string& text);
};

TableRow makeRow(const Report& report);

// Writes row by row; the columns stand still, since later files are not known yet.
class Table {
  public:
    Table(const TextStyle& style, bool showsRead, FILE* out)
        : mStyle(style), mShowsRead(showsRead), mOut(out) {}
    void writeRow(const std::string& file, const TableRow& row);
    // `samples` and `bytes`: read over all files.
    void writeSummary(uint64_t samples, uint64_t bytes, double seconds) const;

  private:
    const TextStyle& mStyle;
    const bool mShowsRead;
    FILE* const mOut;
    std::array<size_t, kResultCount> mCounts{};
    size_t mRows = 0;
};

}  // namespace orvel::probe
