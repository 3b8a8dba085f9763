// The command line, parsed and checked.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvel::probe {

// Which containers the plug-in takes: a decimal sum of bits.
constexpr char kMaskProperty[] = "mm.enable.orvel_parser";

// How the source is made to misbehave; the defaults leave it as it is.
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
    bool json = false;
    bool read = false;
    bool samples = false;
    bool keys = false;
    bool explain = false;
    bool verify = false;
    bool table = false;
    bool pages = false;
    std::vector<size_t> tracks;  // empty: all
    uint64_t limit = 0;          // samples per track; 0: no limit
    std::vector<SeekRequest> seeks;
    std::map<size_t, std::string> extract;
    std::string coverPath;
    std::string htmlPath;
    std::vector<std::pair<std::string, std::string>> properties;  // applied in order
    SourceOptions source;
    std::string pluginPath;  // empty: the default places
    int logPriority;         // an android_LogPriority
    unsigned jobs = 1;
    double timeoutSeconds = 120;

    Options();
    bool wants(size_t track) const;
    // Every sample is noted down for a plot.
    bool plots() const { return !htmlPath.empty(); }
    // Something is asked for that a line of a table cannot show.
    bool needsPage() const;
    // The value of mm.enable.orvel_parser that the plug-in will see.
    std::string containerMask() const;
};

// Fills `options`. Returns -1 to go on, otherwise the exit code: 0 after --help and --version,
// whose text went to stdout, 2 after a usage error, which was explained on stderr.
int parseOptions(int argc, char** argv, Options* options);

// "previous", "next", "closest-sync", "closest" for 0 to 3.
const char* seekModeName(int mode);

}  // namespace orvel::probe
