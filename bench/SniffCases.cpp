// The decision about a source, of the same file time and again.
#include <cstring>
#include <utility>
#include <vector>

#include "BareSniff.h"
#include "Case.h"
#include "PluginSide.h"

namespace orvel::bench {
namespace {

constexpr int kSniffs = 200;
constexpr int kSniffsThatOpen = 40;  // a file of a container that is looked into: a long sniff

int sniffs(const Turn& turn) {
    const char* demuxer = turn.media.demuxer;
    const bool opens =
            demuxer != nullptr && (strcmp(demuxer, "mov") == 0 || strcmp(demuxer, "matroska") == 0);
    return opens ? kSniffsThatOpen : kSniffs;
}

void bareSniffs(Turn& turn, bool taken) {
    const int count = sniffs(turn);
    turn.meter.begin();
    for (int i = 0; i < count; ++i) {
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
    const int count = sniffs(turn);
    results.reserve(static_cast<size_t>(count));
    turn.meter.begin();
    for (int i = 0; i < count; ++i) {
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
