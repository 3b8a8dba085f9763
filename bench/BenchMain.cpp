// orvel_bench: what the plug-in costs beyond the least that any extractor over FFmpeg must do.
#include <sys/sysinfo.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "Case.h"
#include "MeasureJson.h"
#include "Process.h"
#include "Report.h"
#include "Runner.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace orvel::bench {
namespace {

constexpr int kExitMissed = 1;
constexpr int kExitFailed = 2;
constexpr const char* kPluginFile = "liborvelmedia2_parserextractor.so";

struct Options {
    std::vector<std::string> cases;
    int rounds = 5;
    bool json = false;
    bool check = false;
    bool list = false;
    std::string media;
    std::string plugin;
    std::string account;  // with `side`: one accounted turn in this process, as JSON
    std::string side = "plugin";
};

std::string isCase(const std::string& name) {
    return findCase(name.c_str()) != nullptr ? "" : "no case '" + name + "'; --list names them";
}

void declare(CLI::App& app, Options& options) {
    app.description(
            "Measures the plug-in against the least that any extractor over FFmpeg must "
            "do.\nExit status: 0; 1 with --check when a target is missed; 2 when a case "
            "cannot be measured or the options are wrong.");
    app.add_option("--case", options.cases, "Only this case (repeatable)")->check(isCase);
    app.add_option("--rounds", options.rounds, "Turns of each side; figures count from 5 on")
            ->check(CLI::Range(1, 1000))
            ->capture_default_str();
    app.add_flag("--json", options.json, "One JSON object instead of text");
    app.add_flag("--check", options.check, "Exit with 1 when a target is missed");
    app.add_flag("--list", options.list, "Name the cases and measure nothing");
    app.add_option("--media", options.media,
                   "Folder of the media, made there on first use (default: orvelmedia-bench in "
                   "$XDG_CACHE_HOME or ~/.cache)");
    app.add_option("--plugin", options.plugin, "Another plug-in library");
    app.add_option("--account", options.account)->group("")->check(isCase);
    app.add_option("--side", options.side)->group("")->check(CLI::IsMember({"plugin", "bare"}));
}

std::string pluginBesideThis() {
    return (thisProgram().parent_path() / kPluginFile).string();
}

void showProgress(const std::string& text) {
    static const bool sIsTerminal = isatty(STDERR_FILENO) != 0;
    if (sIsTerminal) fprintf(stderr, "\r%-40s\r", text.c_str());
}

std::vector<const Case*> chosenCases(const std::vector<std::string>& names) {
    std::vector<const Case*> chosen;
    for (size_t i = 0; i < kCaseCount; ++i) {
        const bool named = std::find(names.begin(), names.end(), kCases[i].name) != names.end();
        if (names.empty() || named) chosen.push_back(&kCases[i]);
    }
    return chosen;
}

std::string libavformatVersion() {
    const unsigned version = avformat_version();
    return std::to_string(version >> 16) + "." + std::to_string(version >> 8 & 0xff) + "." +
           std::to_string(version & 0xff);
}

int runCases(const Options& options, Runner& runner) {
    Machine machine;
    machine.cores = get_nprocs();
    machine.loadBefore = loadAverage();
    machine.libavformat = libavformatVersion();
    machine.rounds = options.rounds;
    std::vector<CaseResult> results;
    bool allMet = true;
    for (const Case* row : chosenCases(options.cases)) {
        results.push_back(runner.run(*row, options.rounds));
        allMet = allMet && results.back().meetsTarget();
    }
    showProgress("");
    machine.loadAfter = loadAverage();
    const auto report = options.json ? jsonReport : textReport;
    fputs(report(results, machine).c_str(), stdout);
    return options.check && !allMet ? kExitMissed : 0;
}

int main(int argc, char** argv) {
    Options options;
    CLI::App app;
    declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kExitFailed;
    }
    if (options.list) {
        for (size_t i = 0; i < kCaseCount; ++i)
            printf("%-13s %s\n", kCases[i].name, kCases[i].title);
        return 0;
    }
    try {
        const MediaCache media(options.media);
        Runner runner(options.plugin.empty() ? pluginBesideThis() : options.plugin, media,
                      showProgress);
        if (options.account.empty()) return runCases(options, runner);
        const Measure measure =
                runner.account(*findCase(options.account.c_str()), options.side == "plugin");
        puts(measureToJson(measure).c_str());
        return 0;
    } catch (const std::exception& error) {
        fprintf(stderr, "orvel_bench: %s\n", error.what());
        return kExitFailed;
    }
}

}  // namespace
}  // namespace orvel::bench

int main(int argc, char** argv) {
    return orvel::bench::main(argc, argv);
}
