// The decision about a source, of the same file time and again.
#include <utility>
#include <vector>

#include "BareSniff.h"
#include "Case.h"
#include "PluginSide.h"

namespace orvel::bench {
namespace {

constexpr int kSniffs = 40;

void bareSniffs(Turn& turn, bool taken) {
    turn.meter.begin();
    for (int i = 0; i < kSniffs; ++i) {
        if ((bareSniff(turn.source) != nullptr) != taken) {
            throw PluginSideError("the bare probes decide otherwise than they should");
        }
        turn.meter.delivered(0);
    }
    turn.meter.end();
}

void pluginSniffs(Turn& turn, bool taken) {
    // A result that is neither used nor freed leaks its message; it is used outside the stretch.
    std::vector<host::SniffResult> results;
    results.reserve(kSniffs);
    turn.meter.begin();
    for (int i = 0; i < kSniffs; ++i) {
        results.push_back(turn.plugin.sniff(turn.source));
        turn.meter.delivered(0);
    }
    turn.meter.end();
    for (host::SniffResult& result : results) {
        if (result.taken() != taken) {
            throw PluginSideError("the plug-in decides otherwise than it should");
        }
        if (taken) turn.plugin.create(turn.source, std::move(result));
    }
}

}  // namespace

void bareSniffTaken(Turn& turn) {
    bareSniffs(turn, true);
}

void pluginSniffTaken(Turn& turn) {
    pluginSniffs(turn, true);
}

void bareSniffDeclined(Turn& turn) {
    bareSniffs(turn, false);
}

void pluginSniffDeclined(Turn& turn) {
    pluginSniffs(turn, false);
}

}  // namespace orvel::bench
