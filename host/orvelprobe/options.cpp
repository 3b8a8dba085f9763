#include "options.h"

#include <android/log.h>
#include <cutils/properties.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <limits>
#include <string_view>

namespace orvel::probe {
namespace {

constexpr std::array<const char*, 4> kSeekModes = {"previous", "next", "closest-sync", "closest"};

struct LogLevel {
    const char* name;
    int priority;
};
constexpr LogLevel kLogLevels[] = {
        {"verbose", ANDROID_LOG_VERBOSE}, {"debug", ANDROID_LOG_DEBUG},
        {"info", ANDROID_LOG_INFO},       {"warn", ANDROID_LOG_WARN},
        {"error", ANDROID_LOG_ERROR},     {"silent", ANDROID_LOG_SILENT},
};

constexpr char kAbout[] =
        "orvelprobe shows what the extractor plug-in makes of media files: it loads the\n"
        "plug-in and plays the media framework for each FILE.\n";

constexpr char kFooter[] =
        "Seek modes, each seen from the time that was asked for:\n"
        "  previous      the key frame at or before it\n"
        "  next          the key frame at or after it\n"
        "  closest-sync  the nearer of these two (default)\n"
        "  closest       the nearest frame: reading starts at a key frame before it, and\n"
        "                the first sample names the time of that frame as its target\n"
        "Exit status, of several files the highest:\n"
        "  0  all files were taken and read to a clean end\n"
        "  1  a file was declined\n"
        "  2  usage, or a file that cannot be read or written\n"
        "  3  a read ended with an error, --verify found a difference, or a file crashed\n"
        "     or timed out";

// Names and values only: what a value has to be stands in the description.
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter() { column_width(23); }
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_name().empty() ? "" : " " + option->get_option_text();
    }
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: orvelprobe [OPTIONS] FILE...   (a FOLDER: every file below it)\n";
    }
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override {
        std::string text = CLI::Formatter::make_help(app, std::move(name), mode);
        for (size_t gap; (gap = text.find("\n\n\n")) != std::string::npos;)
            text.erase(gap, 1);
        return text;
    }
    std::string make_positionals(const CLI::App*) const override { return ""; }
};

[[noreturn]] void reject(const std::string& text) {
    throw CLI::ValidationError(text, 2);
}

template <typename T>
bool parseNumber(std::string_view text, T* out) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *out);
    return error == std::errc() && end == text.data() + text.size();
}

// "12.5" is seconds, "12500000us" microseconds.
bool parseTime(std::string_view text, int64_t* us) {
    if (text.size() > 2 && text.substr(text.size() - 2) == "us") {
        return parseNumber(text.substr(0, text.size() - 2), us);
    }
    long double seconds = 0;  // 64 bits of mantissa: exact to the microsecond over the whole range
    if (!parseNumber(text, &seconds) || !std::isfinite(seconds)) return false;
    const long double value = std::round(seconds * 1000000);
    constexpr auto kMax = static_cast<long double>(std::numeric_limits<int64_t>::max());
    if (value < -kMax || value > kMax) return false;
    *us = static_cast<int64_t>(value);
    return true;
}

SeekRequest parseSeek(const std::string& text) {
    SeekRequest request;
    const size_t colon = text.find(':');
    if (!parseTime(std::string_view(text).substr(0, colon), &request.timeUs)) {
        reject("--seek " + text + ": TIME is seconds (12.5) or microseconds (12500000us)");
    }
    if (colon != std::string::npos) {
        const auto mode = std::find(kSeekModes.begin(), kSeekModes.end(), text.substr(colon + 1));
        if (mode == kSeekModes.end()) {
            reject("--seek " + text + ": MODE is previous, next, closest-sync or closest");
        }
        request.mode = static_cast<int>(mode - kSeekModes.begin());
    }
    return request;
}

// Splits at the first '='; the option's name and form are for the message.
std::pair<std::string, std::string> parsePair(const std::string& text, const char* form) {
    const size_t equals = text.find('=');
    if (equals == 0 || equals == std::string::npos || equals + 1 > text.size()) {
        reject(std::string(form) + " is expected, not " + text);
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

void parseSource(const std::string& text, SourceOptions* source) {
    size_t start = 0;
    while (start <= text.size()) {
        const size_t comma = std::min(text.find(',', start), text.size());
        const std::string item = text.substr(start, comma - start);
        const auto [name, value] = parsePair(item, "--source NAME=VALUE[,...]");
        bool good = false;
        if (name == "latency") {
            good = parseNumber(value, &source->latencyUs) && source->latencyUs >= 0 &&
                   source->latencyUs <= 60000000;
        } else if (name == "short") {
            good = parseNumber(value, &source->shortBytes) && source->shortBytes > 0;
        } else if (name == "error-at") {
            good = parseNumber(value, &source->errorAt) && source->errorAt >= 0;
        } else if (name == "size") {
            source->unknownSize = good = value == "unknown";
        }
        if (!good) {
            reject("--source " + item +
                   ": latency=MICROSECONDS, short=BYTES, error-at=OFFSET or size=unknown");
        }
        start = comma + 1;
    }
}

int parseLogLevel(const std::string& text) {
    for (const LogLevel& level : kLogLevels) {
        if (text == level.name || (text.size() == 1 && text[0] == level.name[0])) {
            return level.priority;
        }
    }
    reject("--log " + text + ": verbose, debug, info, warn, error or silent");
}

// What the options mean together.
void complete(Options* options) {
    if (!options->seeks.empty() && !options->extract.empty()) {
        reject("--seek reads only the samples after each seek; --extract needs a run of its own");
    }
    if (!options->seeks.empty() && options->verify) {
        reject("--verify compares a whole read; --seek needs a run of its own");
    }
    if (options->table + options->pages + options->json > 1) {
        reject("--table, --pages and --json exclude one another");
    }
    if (options->table && options->needsPage()) {
        reject("a table has no room for --keys, --samples, --seek and --explain; use --pages");
    }
    if (options->samples || options->verify || !options->htmlPath.empty()) options->read = true;
    if (!options->extract.empty() && !options->read) {
        // Only what is written out has to be read, unless a track was asked for as well.
        for (const auto& [track, path] : options->extract)
            options->tracks.push_back(track);
        options->read = true;
    } else if (!options->tracks.empty()) {
        for (const auto& [track, path] : options->extract)
            options->tracks.push_back(track);
    }
    std::sort(options->tracks.begin(), options->tracks.end());
    options->tracks.erase(std::unique(options->tracks.begin(), options->tracks.end()),
                          options->tracks.end());
    for (const auto& [key, value] : options->properties) {
        if (value.size() >= PROPERTY_VALUE_MAX) {
            reject("--property " + key + ": a value has at most " +
                   std::to_string(PROPERTY_VALUE_MAX - 1) + " characters");
        }
    }
}

}  // namespace

Options::Options() : properties({{kMaskProperty, "32767"}}), logPriority(ANDROID_LOG_SILENT) {}

bool Options::wants(size_t track) const {
    return tracks.empty() || std::binary_search(tracks.begin(), tracks.end(), track);
}

bool Options::needsPage() const {
    return keys || samples || explain || !seeks.empty();
}

std::string Options::containerMask() const {
    std::string mask;
    for (const auto& [key, value] : properties) {
        if (key == kMaskProperty) mask = value;
    }
    return mask;
}

const char* seekModeName(int mode) {
    return mode >= 0 && mode < static_cast<int>(kSeekModes.size()) ? kSeekModes[mode] : "unknown";
}

int parseOptions(int argc, char** argv, Options* options) {
    CLI::App app(kAbout, "orvelprobe");
    app.footer(kFooter);
    app.formatter(std::make_shared<HelpFormatter>());
    std::vector<std::string> seeks, extract, properties, sources;
    std::string log;
    const char* group = "Reading";
    const auto flag = [&](const char* name, bool& value, const char* help) {
        app.add_flag(name, value, help)->group(group);
    };
    const auto option = [&](const char* name, auto& value, const char* form, const char* help) {
        // One value each time an option is given, also when it can be repeated: what follows is a
        // FILE again.
        return app.add_option(name, value, help)
                ->allow_extra_args(false)
                ->option_text(form)
                ->group(group);
    };
    app.add_option("FILE", options->files)->required();

    flag("--read", options->read,
         "Read every sample of every track: counts, bytes, first\n"
         "and last time, how it ended, MB/s");
    flag("--samples", options->samples, "List every sample (implies --read)");
    option("--track", options->tracks, "N", "Only this track (repeatable)");
    option("--limit", options->limit, "N", "At most N samples of a track; after a seek 1 if absent")
            ->check(CLI::Validator(
                    [](const std::string& text) {
                        uint64_t value = 0;
                        return parseNumber<uint64_t>(text, &value) && value > 0
                                       ? std::string()
                                       : "a number from 1 on is expected, not " + text;
                    },
                    ""));
    option("--seek", seeks, "TIME[:MODE]",
           "Seek all tracks, show where each lands (repeatable); TIME\n"
           "is 12.5 (seconds) or 12500000us. Nothing else is read,\n"
           "except for --html");
    flag("--verify", options->verify,
         "Read with plain libavformat too and show every\n"
         "difference in time, size, key flag and payload");
    group = "Output";
    flag("--explain", options->explain,
         "Why it was taken or declined: what the plug-in read and\n"
         "logged while it decided, in order, and the verdict");
    flag("--table", options->table,
         "One line a file and a summary, as files finish in order\n"
         "(default for a FOLDER and for more than one FILE)");
    flag("--pages", options->pages,
         "One page a file (default for one FILE, and with --keys,\n"
         "--samples, --seek and --explain)");
    flag("--json", options->json, "One JSON object per file and line instead of text");
    flag("--keys", options->keys, "Every format key in the text form");
    option("--extract", extract, "N=PATH",
           "Write track N as a file that players open (repeatable):\n"
           "AVC/HEVC with start codes, PCM as WAV, AAC as ADTS,\n"
           "VP8/VP9 as IVF, others as a plain stream");
    option("--cover", options->coverPath, "PATH", "Write the album art");
    option("--html", options->htmlPath, "PATH",
           "Write a self-contained page for browsers: tracks, keys,\n"
           "plots of sizes, key frames, bitrate, times, cache and\n"
           "seeks (implies --read)");
    group = "Plug-in and source";
    option("--plugin", options->pluginPath, "PATH", "Another plug-in library");
    option("--property", properties, "KEY=VALUE",
           "Set a system property (repeatable); unless given,\n"
           "mm.enable.orvel_parser=32767 enables every container");
    option("--source", sources, "OPTS",
           "Disturb the source: latency=US, short=N, error-at=OFFSET,\n"
           "size=unknown; several with commas");
    option("--log", log, "LEVEL", "Its log on stderr: verbose, debug, info, warn or error");
    group = "Other";
    option("--jobs", options->jobs, "N", "Files at once (default 1); the output stays in order")
            ->check(CLI::Range(1, 256));
    option("--timeout", options->timeoutSeconds, "SECONDS",
           "What a file may take before it is given up (default 120)")
            ->check(CLI::Range(0.001, 1e6));
    app.set_version_flag("-V,--version", "orvelprobe " ORVEL_VERSION, "Show the version")
            ->group(group);
    app.set_help_flag("-h,--help", "Show this text")->group(group);
    try {
        app.parse(argc, argv);
        for (const std::string& text : seeks)
            options->seeks.push_back(parseSeek(text));
        for (const std::string& text : extract) {
            const auto [track, path] = parsePair(text, "--extract N=PATH");
            size_t index = 0;
            if (!parseNumber(track, &index) || path.empty()) {
                reject("--extract N=PATH is expected, not " + text);
            }
            options->extract[index] = path;
        }
        for (const std::string& text : properties) {
            options->properties.push_back(parsePair(text, "--property KEY=VALUE"));
        }
        for (const std::string& text : sources)
            parseSource(text, &options->source);
        if (!log.empty()) options->logPriority = parseLogLevel(log);
        complete(options);
    } catch (const CLI::ValidationError& error) {
        std::cerr << "orvelprobe: " << error.what() << "\nTry 'orvelprobe --help'.\n";
        return 2;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error, std::cout, std::cerr);
        std::cerr << "orvelprobe: " << error.what() << "\nTry 'orvelprobe --help'.\n";
        return 2;
    }
    return -1;
}

}  // namespace orvel::probe
