#pragma once

#include <cstdint>
#include <vector>

#include "MediaTable.h"
#include "Meter.h"
#include "framework/DataSource.h"
#include "framework/Plugin.h"

namespace orvel::bench {

/** What a case gets for one turn of one side. */
struct Turn {
    const host::Plugin& plugin;
    host::DataSource& source;  // the case's file, in the page cache
    const Recipe& media;
    Meter& meter;
    uint64_t work = 0;  // what the case's prepare found
};

/** Does one turn. Throws what goes wrong: a turn that failed is no measurement. */
using Side = void (*)(Turn& turn);

/** What a case's target bounds. */
enum class Bound {
    None,    // reported only
    Ratio,   // time of the plug-in over time of the bare loop
    Memory,  // peak resident memory over the bare loop's, beyond what the full rule allows, in MiB
};

/** What must be equal on both sides, else the comparison would be of two different things. */
enum class Same { Samples, SamplesAndBytes };

struct Case {
    const char* name;
    const char* title;
    Media media;
    Side bare;  // null: there is nothing to compare with
    Side plugin;
    Bound bound;
    double target;
    Same same = Same::SamplesAndBytes;
    // Runs once before the turns, on the plain source; its result is every turn's `work`.
    uint64_t (*prepare)(Turn& turn) = nullptr;
};

/** In the order of the report. */
extern const Case kCases[];
extern const size_t kCaseCount;

/** Null when there is no such case. */
const Case* findCase(const char* name);

// The sides, by file. ReadCases.cpp: a whole file, all tracks by time.
void bareRead(Turn& turn);
void bareReadSwapped(Turn& turn);
void pluginRead(Turn& turn);
uint64_t prepareWork(Turn& turn);
void bareReadAndWork(Turn& turn);
void pluginReadAndWork(Turn& turn);

// StartCases.cpp: opening, seeking, the first sample.
void bareFirstSample(Turn& turn);
void pluginFirstSample(Turn& turn);
void bareSlowSeek(Turn& turn);
void pluginSlowSeek(Turn& turn);
void bareSeeks(Turn& turn);
void pluginSeeksPrevious(Turn& turn);
void pluginSeeksClosest(Turn& turn);
void bareOpenClose(Turn& turn);
void pluginOpenClose(Turn& turn);

// SniffCases.cpp
void bareSniffTaken(Turn& turn);
void pluginSniffTaken(Turn& turn);
void bareSniffDeclined(Turn& turn);
void pluginSniffDeclined(Turn& turn);

// IdleCases.cpp: commands, destruction, many at once.
void pluginCommands(Turn& turn);
void bareDestroy(Turn& turn);
void pluginDestroy(Turn& turn);
void bareMany(Turn& turn);
void pluginMany(Turn& turn);

}  // namespace orvel::bench
