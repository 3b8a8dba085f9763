#include "Runner.h"

#include <cutils/properties.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "FullRule.h"
#include "framework/FileSource.h"
#include "framework/SourceDecorators.h"

namespace orvel::bench {
namespace {

constexpr const char* kAllContainers = "32767";

void readThrough(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::vector<char> buffer(1 << 20);
    while (stream.read(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
    }
}

std::string counted(const Measure& measure) {
    return std::to_string(measure.samples) + " samples of " + std::to_string(measure.bytes) +
           " bytes";
}

}  // namespace

Runner::Runner(const std::string& pluginPath, std::string mediaFolder)
    : mPlugin(pluginPath), mMediaFolder(std::move(mediaFolder)) {
    property_set("mm.enable.orvel_parser", kAllContainers);
}

CaseResult Runner::run(const Case& row, int rounds) {
    CaseResult result{&row, {}};
    readThrough(path(row));
    host::FileSource file(path(row));
    host::CountingSource source(file);
    if (row.ownProcess) {
        const uint64_t bytes = fullRuleBytes(source, row.file.demuxer);
        result.fullRuleMiB = static_cast<double>(bytes) / (1024 * 1024);
    }
    Turn prepared{mPlugin, source, row};
    mWork = row.works ? workOfBareLoop(prepared) : 0;
    for (int round = 0; round <= rounds; ++round) {
        Round now;
        const bool pluginFirst = round % 2 == 0;
        bothTurns(row, pluginFirst, row.where, &now.bare, &now.plugin);
        if (row.where != Where::Quiet) {
            bothTurns(row, pluginFirst, Where::Quiet, &now.quietBare, &now.quietPlugin);
        }
        if (round > 0) result.rounds.push_back(now);
    }
    return result;
}

void Runner::bothTurns(const Case& row, bool pluginFirst, Where where, Measure* bare,
                       Measure* plugin) {
    for (const bool isPlugin : {pluginFirst, !pluginFirst}) {
        if (!isPlugin && row.bare == nullptr) continue;
        *(isPlugin ? plugin : bare) =
                row.ownProcess ? turnInChild(row, isPlugin) : turn(row, isPlugin, where);
    }
    if (row.bare == nullptr) return;
    if (bare->samples == plugin->samples && (!row.sameBytes || bare->bytes == plugin->bytes))
        return;
    throw std::runtime_error(std::string(row.name) + ": the plug-in delivered " + counted(*plugin) +
                             ", the bare loop " + counted(*bare));
}

Measure Runner::turn(const Case& row, bool plugin, Where where) {
    const Environment environment(where);
    host::FileSource file(path(row));
    host::DelaySource late(file, std::chrono::microseconds(row.lateUs));
    host::CountingSource source(row.lateUs > 0 ? static_cast<host::DataSource&>(late) : file);
    Turn turn{mPlugin, source, row, mWork};
    (plugin ? row.plugin : row.bare)(turn);
    return turn.meter.result();
}

Measure Runner::account(const Case& row, bool plugin) {
    Measure measure = turn(row, plugin, Where::Quiet);
    measure.peakBytes = peakResidentBytes();
    return measure;
}

Measure Runner::turnInChild(const Case& row, bool plugin) const {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const pid_t child = fork();
    Measure measure;
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        execl("/proc/self/exe", "orvel_bench", "--case", row.name, "--account",
              plugin ? "plugin" : "bare", "--plugin", mPlugin.path().c_str(), "--media",
              mMediaFolder.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    const bool whole = read(ends[0], &measure, sizeof(measure)) == sizeof(measure);
    close(ends[0]);
    waitpid(child, nullptr, 0);
    if (!whole) throw std::runtime_error(std::string(row.name) + ": the turn's process failed");
    return measure;
}

std::string Runner::path(const Case& row) const {
    return mMediaFolder + "/" + row.file.name;
}

}  // namespace orvel::bench
