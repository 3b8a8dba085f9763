#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvel::probe {

/** Which containers the plug-in takes: a decimal sum of bits. */
constexpr char kMaskProperty[] = "mm.enable.orvel_parser";

/** How the source is made to misbehave; the defaults leave it as it is. */
struct SourceOptions {
    int64_t latencyUs = 0;  // added to every read
    size_t shortBytes = 0;  // the most that one read gives; 0: no limit
    int64_t errorAt = -1;   // reads that touch this offset fail; -1: none does
    bool unknownSize = false;
};

struct SeekRequest {
    int64_t timeUs = 0;
    int mode = 2;
};

struct Options {
    std::vector<std::string> files;
    bool json = false, table = false, pages = false, keys = false, explain = false, force = false;
    bool read = false, samples = false, verify = false;
    std::set<size_t> tracks;  // empty: all
    uint64_t limit = 0;       // samples per track; 0: no limit
    std::vector<SeekRequest> seeks;
    std::map<size_t, std::string> extract;  // by track; the path "-" is standard output
    std::string coverPath;
    std::string htmlPath;
    std::vector<std::pair<std::string, std::string>> properties;  // applied in order
    SourceOptions source;
    std::string sourceText;  // as it was given
    std::string pluginPath;  // empty: the default places
    int logPriority;         // an android_LogPriority
    unsigned jobs = 1;
    double timeoutSeconds = 120;
    std::string command;  // the command line, for the page

    Options();
    bool wants(size_t track) const { return tracks.empty() || tracks.count(track) > 0; }
    /** Something is asked for that a line of a table cannot show. */
    bool needsPage() const { return keys || samples || explain; }
    /** Samples travel to the parent one by one. */
    bool sendsSamples() const { return samples || !htmlPath.empty(); }
};

/**
 * Fills `options`. Returns -1 to go on, otherwise the exit code: 0 after --help and --version,
 * whose text went to stdout, 2 after a usage error, which was explained on stderr.
 */
int parseOptions(int argc, char** argv, Options* options);

/** "previous", "next", "closest-sync", "closest" for 0 to 3. */
const char* seekModeName(int64_t mode);

}  // namespace orvel::probe
