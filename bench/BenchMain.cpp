// orvel_bench: what the plug-in costs beyond the least that any extractor over FFmpeg must do.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Report.h"

namespace orvel::bench {
namespace {

struct Options {
    std::vector<std::string> cases;
    int rounds = 7;
    bool json = false;
    bool write = false;
    std::string media = ORVEL_BENCH_MEDIA;
    std::string plugin = std::filesystem::read_symlink("/proc/self/exe").parent_path() /
                         "liborvelmedia2_parserextractor.so";
    std::string account;  // "plugin" or "bare": one turn, its Measure to stdout as it is in memory
};

void declare(CLI::App& app, Options& options) {
    app.description(
            "Measures the plug-in against the least that any extractor over FFmpeg must do.\n"
            "Exit status: 0, whether targets are met or not; 2 when a case cannot be measured or "
            "the options are wrong.");
    std::vector<std::string> names;
    for (const Case& row : kCases)
        names.push_back(row.name);
    CLI::Option* cases = app.add_option("--case", options.cases, "Only this case (repeatable)");
    cases->check(CLI::IsMember(names));
    CLI::Option* rounds = app.add_option("--rounds", options.rounds, "Rounds that count");
    rounds->check(CLI::Range(1, 1000))->capture_default_str();
    app.add_flag("--json", options.json, "One JSON object instead of the tables");
    app.add_flag("--write", options.write, "Write the tables to docs/benchmarks.md, too")
            ->excludes(cases)
            ->excludes(rounds);
    app.add_option("--media", options.media, "Folder of the media (the build's target bench_media)")
            ->capture_default_str();
    app.add_option("--plugin", options.plugin, "Another plug-in library");
    app.add_option("--account", options.account)->group("");
}

void runCases(const Options& options, Runner& runner) {
    Report report{describeMachine(), options.rounds, {}};
    for (const Case& row : kCases) {
        const auto& names = options.cases;
        if (!names.empty() && std::find(names.begin(), names.end(), row.name) == names.end()) {
            continue;
        }
        if (!options.account.empty()) {
            const Measure measure = runner.account(row, options.account == "plugin");
            fwrite(&measure, sizeof(measure), 1, stdout);
            return;
        }
        fprintf(stderr, "%s ...\n", row.name);
        report.results.push_back(runner.run(row, options.rounds));
    }
    fputs((options.json ? asJson(report) : asText(report)).c_str(), stdout);
    if (!options.write) return;
    std::ofstream page(ORVEL_BENCH_PAGE);
    page << asPage(report);
    if (!page.flush()) throw std::runtime_error("cannot write " ORVEL_BENCH_PAGE);
}

int main(int argc, char** argv) {
    constexpr int kExitFailed = 2;
    Options options;
    CLI::App app;
    declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kExitFailed;
    }
    try {
        useTwoCores();
        Runner runner(options.plugin, options.media);
        runCases(options, runner);
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
