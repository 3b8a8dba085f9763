#pragma once

#include "Report.h"
#include "render/Summary.h"

namespace orvel::probe {

struct TextStyle {
    bool colour = false;
    size_t width = 80;  // columns
    bool cuts = false;  // names that do not fit a line of a table
};
/** As stdout is now: a terminal, or COLUMNS wide. */
TextStyle stdoutStyle();

/** One page for one file, to stdout. `keys`: every format key, in full. */
void writeText(const Report& report, const TextStyle& style, bool keys);

/** One line on stdout, as docs/orvelprobe-json.md says. */
void writeJsonLine(const Report& report);
/** Compact, malformed UTF-8 as U+FFFD. */
std::string dump(const Json& json);

/** Many files at a glance: one line each, or one for each seek of each track, and a summary. */
class Table {
  public:
    Table(const TextStyle& style, bool showsRead, bool showsSeeks)
        : mStyle(style), mShowsRead(showsRead), mShowsSeeks(showsSeeks) {}
    void writeRow(const std::string& file, const Json& tree);
    /** `samples` and `bytes`: read over all files. */
    void writeSummary(uint64_t samples, uint64_t bytes, double seconds) const;

  private:
    const TextStyle& mStyle;
    const bool mShowsRead, mShowsSeeks;
    std::array<size_t, kResultCount> mCounts{};
    size_t mRows = 0;
};

}  // namespace orvel::probe
