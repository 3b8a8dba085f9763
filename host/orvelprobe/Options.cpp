#include "Options.h"

#include <android/log.h>
#include <cutils/properties.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <iostream>
#include <iterator>
#include <limits>
#include <sstream>
#include <string_view>

namespace orvel::probe {
namespace {

constexpr const char* kSeekModes[] = {"previous", "next", "closest-sync", "closest"};
const std::map<std::string, int> kLogLevels = {
        {"verbose", ANDROID_LOG_VERBOSE}, {"debug", ANDROID_LOG_DEBUG},
        {"info", ANDROID_LOG_INFO},       {"warn", ANDROID_LOG_WARN},
        {"error", ANDROID_LOG_ERROR},     {"silent", ANDROID_LOG_SILENT}};

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
        "A PATH of \"-\" is standard output; the report then goes to standard error.\n"
        "Exit status, of several files the highest:\n"
        "  0  all files were taken and read to a clean end\n"
        "  1  a file was declined, or came with a warning\n"
        "  2  usage, or a file that cannot be read or written\n"
        "  3  a read ended with an error, --verify found a difference, or a file crashed\n"
        "     or timed out";

/** Names and values only: what a value has to be stands in the description. */
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter() { column_width(23); }
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_name().empty() ? "" : " " + option->get_option_text();
    }
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: orvelprobe [OPTIONS] FILE...   (a FOLDER: every file below it)\n";
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

// "12.5" and "1:23.5" and "1:02:03" are seconds, "12500000us" microseconds.
bool parseTime(std::string_view text, int64_t* us) {
    if (text.size() > 2 && text.substr(text.size() - 2) == "us") {
        return parseNumber(text.substr(0, text.size() - 2), us);
    }
    long double seconds = 0, part = 0;  // 64 bits of mantissa: exact over the whole range
    for (bool last = false; !last;) {
        const size_t colon = std::min(text.find(':'), text.size());
        last = colon == text.size();
        if (!parseNumber(text.substr(0, colon), &part) || !std::isfinite(part)) return false;
        seconds = last ? seconds + part : (seconds + part) * 60;
        text.remove_prefix(last ? colon : colon + 1);
    }
    constexpr auto kMax = static_cast<long double>(std::numeric_limits<int64_t>::max());
    *us = static_cast<int64_t>(std::clamp(std::round(seconds * 1000000), -kMax, kMax));
    return std::abs(seconds * 1000000) <= kMax;
}

SeekRequest parseSeek(const std::string& text) {
    SeekRequest request;
    std::string_view time = text;
    const size_t colon = text.rfind(':');
    if (colon != text.npos && colon + 1 < text.size() && !isdigit(text[colon + 1])) {
        const auto* mode =
                std::find(std::begin(kSeekModes), std::end(kSeekModes), text.substr(colon + 1));
        if (mode == std::end(kSeekModes)) {
            reject("--seek " + text + ": MODE is previous, next, closest-sync or closest");
        }
        request.mode = static_cast<int>(mode - kSeekModes);
        time = time.substr(0, colon);
    }
    if (!parseTime(time, &request.timeUs)) {
        reject("--seek " + text + ": TIME is seconds (12.5), 1:23.5 or microseconds (12500000us)");
    }
    return request;
}

// Splits at the first '='; `form` is for the message.
std::pair<std::string, std::string> parsePair(const std::string& text, const char* form) {
    const size_t equals = text.find('=');
    if (equals == 0 || equals == std::string::npos)
        reject(std::string(form) + " is expected, not " + text);
    return {text.substr(0, equals), text.substr(equals + 1)};
}

void parseSource(const std::string& text, SourceOptions* source) {
    std::istringstream items(text + (text.back() == ',' ? "," : ""));
    for (std::string item; std::getline(items, item, ',');) {
        const auto [name, value] = parsePair(item, "--source NAME=VALUE[,...]");
        const bool good =
                name == "latency" ? parseNumber(value, &source->latencyUs) &&
                                            source->latencyUs >= 0 && source->latencyUs <= 60000000
                : name == "short"
                        ? parseNumber(value, &source->shortBytes) && source->shortBytes > 0
                : name == "error-at" ? parseNumber(value, &source->errorAt) && source->errorAt >= 0
                                     : (source->unknownSize = name == "size" && value == "unknown");
        if (good) continue;
        reject("--source " + item +
               ": latency=MICROSECONDS, short=BYTES, error-at=OFFSET or size=unknown");
    }
}

// What the options mean together.
void complete(Options* options) {
    const auto rejectIf = [](bool wrong, const std::string& text) {
        if (wrong) reject(text);
    };
    const std::string& page = options->htmlPath;
    rejectIf(options->files.empty() && !page.empty(),
             "FILE is required; " + page + " is the page to write");
    rejectIf(options->files.empty(), "FILE is required");
    rejectIf(!options->seeks.empty() && !options->extract.empty(),
             "--seek reads only the samples after each seek; --extract needs a run of its own");
    rejectIf(!options->seeks.empty() && options->verify,
             "--verify compares a whole read; --seek needs a run of its own");
    rejectIf(options->table + options->pages + options->json > 1,
             "--table, --pages and --json exclude one another");
    rejectIf(options->table && options->needsPage(),
             "a table has no room for --keys, --samples and --explain; use --pages");
    int toStdout = (page == "-") + (options->coverPath == "-");
    for (const auto& [track, path] : options->extract)
        toStdout += path == "-";
    rejectIf(toStdout > 1, "only one output can be standard output");
    const bool tracksNamed = !options->tracks.empty();
    options->read |= options->sendsSamples() || options->verify;
    // Only what is written out has to be read, unless more was asked for.
    if (tracksNamed || (!options->extract.empty() && !options->read)) {
        for (const auto& [track, path] : options->extract)
            options->tracks.insert(track);
    }
    options->read |= !options->extract.empty();
    for (const auto& [key, value] : options->properties) {
        rejectIf(value.size() >= PROPERTY_VALUE_MAX,
                 "--property " + key + ": a value has at most " +
                         std::to_string(PROPERTY_VALUE_MAX - 1) + " characters");
    }
}

}  // namespace

Options::Options() : properties({{kMaskProperty, "32767"}}), logPriority(ANDROID_LOG_SILENT) {}

const char* seekModeName(int64_t mode) {
    return mode >= 0 && mode < static_cast<int64_t>(std::size(kSeekModes)) ? kSeekModes[mode]
                                                                           : "unknown";
}

int parseOptions(int argc, char** argv, Options* options) {
    CLI::App app(kAbout, "orvelprobe");
    app.footer(kFooter);
    app.formatter(std::make_shared<HelpFormatter>());
    std::vector<std::string> seeks, extract, properties, sources;
    std::vector<size_t> tracks;
    const char* group = "Reading";
    const auto flag = [&](const char* name, bool& value, const char* help) {
        app.add_flag(name, value, help)->group(group);
    };
    // One value each time an option is given, also when it can be repeated: what follows is a FILE.
    const auto option = [&](const char* name, auto& value, const char* form, const char* help) {
        return app.add_option(name, value, help)
                ->allow_extra_args(false)
                ->option_text(form)
                ->group(group);
    };
    app.add_option("FILE", options->files)->envname("ORVELPROBE_FILE");

    flag("--read", options->read, "Read every sample: counts, bytes, keys, times, its end");
    flag("--samples", options->samples, "List every sample (implies --read)");
    option("--track", tracks, "N", "Only this track (repeatable)");
    option("--limit", options->limit, "N", "At most N samples of a track; after a seek 1 if absent")
            ->check(CLI::Range(uint64_t{1}, UINT64_MAX >> 1));
    option("--seek", seeks, "TIME[:MODE]",
           "Seek all tracks, show where each lands (repeatable); TIME\n"
           "is 12.5 (seconds), 1:23.5 or 12500000us. Nothing else is\n"
           "read, except for --html");
    flag("--verify", options->verify, "Read with plain libavformat too, show every difference");
    group = "Output";
    flag("--explain", options->explain, "What the plug-in read and logged to decide, the verdict");
    flag("--table", options->table,
         "A line a file, or a seek, and a summary (default for a\n"
         "FOLDER and for more than one FILE)");
    flag("--pages", options->pages,
         "One page a file (default for one FILE, and with --keys,\n"
         "--samples and --explain)");
    flag("--json", options->json, "JSON Lines instead of text: see orvelprobe-json.md");
    flag("--keys", options->keys, "Every format key in the text form");
    option("--extract", extract, "N=PATH",
           "Write track N as a file that players open (repeatable):\n"
           "AVC/HEVC with start codes, PCM as WAV, AAC as ADTS,\n"
           "VP8/VP9 as IVF, timed text as SRT, others as fits them");
    option("--cover", options->coverPath, "PATH", "Write the album art");
    option("--html", options->htmlPath, "PATH",
           "Write a self-contained page for browsers, with plots of\n"
           "all samples and seeks (implies --read)");
    flag("--force", options->force, "Replace files that exist; never one that is an input");
    group = "Plug-in and source";
    option("--plugin", options->pluginPath, "PATH", "Another plug-in library");
    option("--property", properties, "KEY=VALUE",
           "Set a system property (repeatable); unless given,\n"
           "mm.enable.orvel_parser=32767 enables every container");
    option("--source", sources, "OPTS",
           "Disturb the source: latency=US, short=N, error-at=OFFSET,\n"
           "size=unknown; several with commas");
    option("--log", options->logPriority, "LEVEL",
           "Its log on stderr: verbose, debug, info, warn or error")
            ->transform(CLI::CheckedTransformer(kLogLevels));
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
        for (int i = 0; i < argc; i++)
            options->command += (i > 0 ? " " : "") + std::string(argv[i]);
        options->tracks.insert(tracks.begin(), tracks.end());
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
        for (const std::string& text : properties)
            options->properties.push_back(parsePair(text, "--property KEY=VALUE"));
        for (const std::string& text : sources) {
            parseSource(text, &options->source);
            options->sourceText += (options->sourceText.empty() ? "" : ",") + text;
        }
        complete(options);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error, std::cout, std::cerr);
        std::cerr << "orvelprobe: " << error.what() << "\nTry 'orvelprobe --help'.\n";
        return 2;
    }
    return -1;
}

}  // namespace orvel::probe
