#include "Runner.h"

#include <cutils/properties.h>

#include <stdexcept>
#include <utility>

#include "BareLoop.h"
#include "FullRule.h"
#include "HeapCount.h"
#include "MeasureJson.h"
#include "Process.h"
#include "framework/CountingSource.h"
#include "framework/FileSource.h"

namespace orvel::bench {
namespace {

constexpr const char* kAllContainers = "32767";

}  // namespace

Runner::Runner(std::string pluginPath, const MediaCache& media, Progress progress)
    : mPluginPath(std::move(pluginPath)),
      mMedia(media),
      mProgress(std::move(progress)),
      mPlugin(mPluginPath) {
    property_set("mm.enable.orvel_parser", kAllContainers);
}

CaseResult Runner::run(const Case& row, int rounds) {
    CaseResult result;
    result.row = &row;
    mMedia.warmFile(row.media);
    // The accounted turns come first: they meet a side that fails before the long part begins.
    runAccounts(row, row.bound == Bound::Memory ? rounds : 1, &result);
    if (row.bound != Bound::Memory) runTurns(row, rounds, &result);
    return result;
}

void Runner::runTurns(const Case& row, int rounds, CaseResult* result) {
    uint64_t work = 0;
    if (row.prepare != nullptr) {
        host::FileSource source(mMedia.file(row.media));
        Meter meter;
        Turn turn{mPlugin, source, kRecipes[static_cast<size_t>(row.media)], meter};
        work = row.prepare(turn);
    }
    for (int round = 0; round < rounds; ++round) {
        mProgress(std::string(row.name) + ": round " + std::to_string(round + 1) + " of " +
                  std::to_string(rounds));
        for (const bool second : {false, true}) {
            const bool plugin = (round % 2 == 0) == second;
            if (!plugin && row.bare == nullptr) continue;
            SideResult& side = plugin ? result->plugin : result->bare;
            side.turns.push_back(turn(row, plugin, work));
        }
        if (row.bare == nullptr) continue;
        const Measure& bare = result->bare.turns.back();
        const Measure& plugin = result->plugin.turns.back();
        checkSame(row, bare, plugin);
        result->ratios.push_back(plugin.seconds / bare.seconds);
    }
    result->medianRatio = median(result->ratios);
}

void Runner::runAccounts(const Case& row, int rounds, CaseResult* result) {
    std::vector<double> extra;
    for (int round = 0; round < rounds; ++round) {
        mProgress(std::string(row.name) + ": what it costs");
        result->plugin.accountedTurns.push_back(accountInChild(row, true));
        if (row.bare == nullptr) continue;
        result->bare.accountedTurns.push_back(accountInChild(row, false));
        const Measure& bare = result->bare.accountedTurns.back();
        const Measure& plugin = result->plugin.accountedTurns.back();
        checkSame(row, bare, plugin);
        extra.push_back(static_cast<double>(plugin.peakResidentBytes) -
                        static_cast<double>(bare.peakResidentBytes));
    }
    result->extraMemory = median(std::move(extra)) / kMiB;
    if (row.bound != Bound::Memory) return;
    host::FileSource source(mMedia.file(row.media));
    const Recipe& recipe = kRecipes[static_cast<size_t>(row.media)];
    result->fullRuleMemory =
            static_cast<double>(fullRuleBytes(packetSizes(source, recipe.demuxer))) / kMiB;
}

Measure Runner::turn(const Case& row, bool plugin, uint64_t work) {
    host::FileSource source(mMedia.file(row.media));
    Meter meter;
    Turn turn{mPlugin, source, kRecipes[static_cast<size_t>(row.media)], meter, work};
    (plugin ? row.plugin : row.bare)(turn);
    return meter.result();
}

Measure Runner::account(const Case& row, bool plugin) {
    host::FileSource file(mMedia.file(row.media));
    host::CountingSource source(file);
    Meter meter(source);
    Turn turn{mPlugin, source, kRecipes[static_cast<size_t>(row.media)], meter};
    if (row.prepare != nullptr) turn.work = row.prepare(turn);
    resetPeak();
    countHeap(true);
    (plugin ? row.plugin : row.bare)(turn);
    const HeapCounts heap = heapCounts();
    countHeap(false);
    Measure result = meter.result();
    result.peakHeapBytes = heap.peakBytes;
    result.peakResidentBytes = peakResidentBytes();
    return result;
}

Measure Runner::accountInChild(const Case& row, bool plugin) const {
    return measureFromJson(bench::run({thisProgram().string(), "--account", row.name, "--side",
                                       plugin ? "plugin" : "bare", "--media",
                                       mMedia.folder().string(), "--plugin", mPluginPath}));
}

void Runner::checkSame(const Case& row, const Measure& bare, const Measure& plugin) const {
    const bool sameBytes = row.same == Same::Samples || bare.bytes == plugin.bytes;
    if (bare.samples == plugin.samples && sameBytes) return;
    throw std::runtime_error(std::string(row.name) + ": the plug-in delivered " +
                             std::to_string(plugin.samples) + " samples of " +
                             std::to_string(plugin.bytes) + " bytes, the bare loop " +
                             std::to_string(bare.samples) + " of " + std::to_string(bare.bytes));
}

}  // namespace orvel::bench
