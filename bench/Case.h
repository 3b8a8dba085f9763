#pragma once

#include <cstdint>
#include <vector>

#include "Environment.h"
#include "Meter.h"
#include "framework/Plugin.h"
#include "framework/ReadOptions.h"

namespace orvel::bench {

struct File {
    const char* name;          // in the folder of the media
    const char* demuxer;       // FFmpeg's short name; null for what is never opened
    bool isBigEndian = false;  // 16-bit sound: the bare loop swaps its bytes
};

/** What a target bounds. */
enum class Figure {
    Time,              // plug-in over bare loop
    Processor,         // the same of processor time
    ProcessorOfQuiet,  // plug-in's processor time over its own in a quiet environment
    Sleeps,            // of the plug-in, a sample
    WorstReads,        // of the source, during one command
    Memory,            // plug-in's peak beyond the bare loop's and the full rule's packets, in MiB
};

struct Target {
    Figure figure;
    double limit;
};

struct Turn;
/** Does one turn. Throws what goes wrong: a turn that failed is no measurement. */
using Side = void (*)(Turn& turn);

struct Case {
    const char* name;
    const char* title;
    File file;
    Side bare = nullptr;  // null: there is nothing to compare with
    Side plugin;
    std::vector<Target> targets;

    // How both sides meet the file.
    Where where = Where::Quiet;
    int lateUs = 0;           // each readAt
    bool ownProcess = false;  // each turn in one, because its peak memory counts
    // What one turn does.
    int count = 1;                                  // opens, seeks, sniffs, commands
    bool works = false;                             // reads: a consumer works on each sample
    bool closes = false;                            // opens: to the end of the close
    bool taken = true;                              // sniffs: what to expect
    host::SeekMode mode = host::SeekMode::Closest;  // seeks
    // Whether both sides must deliver as many bytes; they always deliver as many samples.
    bool sameBytes = true;
};

/** What a case gets for one turn of one side. */
struct Turn {
    const host::Plugin& plugin;
    host::CountingSource& source;  // the case's file, in the page cache, as late as the case asks
    const Case& row;
    uint64_t work = 0;  // steps of the consumer, for each sample
    Meter meter{source};
};

/** In the order of the report. */
extern const std::vector<Case> kCases;

// ReadCases.cpp: a whole file, all tracks by time.
void bareRead(Turn& turn);
void pluginRead(Turn& turn);
/** Steps for each sample that together take as long as the bare loop. */
uint64_t workOfBareLoop(Turn& turn);

// WaitCases.cpp: up to the first video sample, from opening the file or from a seek; commands.
void bareOpens(Turn& turn);
void pluginOpens(Turn& turn);
void bareSeeks(Turn& turn);
void pluginSeeks(Turn& turn);
void pluginStopStart(Turn& turn);

// SniffCases.cpp: the decision about a source.
void bareSniffs(Turn& turn);
void pluginSniffs(Turn& turn);

}  // namespace orvel::bench
