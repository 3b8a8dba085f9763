// The command: expands the files, has each handled by a child, writes the results in order.
#include <cutils/properties.h>
#include <dlfcn.h>
#include <standin/log_control.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>

#include "collector.h"
#include "file_list.h"
#include "html_page.h"
#include "json_output.h"
#include "memory_limit.h"
#include "options.h"
#include "plugin_path.h"
#include "progress_line.h"
#include "supervisor.h"
#include "table_output.h"
#include "text.h"
#include "text_output.h"

namespace orvel::probe {
namespace {

// Between what may be replaced and what replaces it, and in front of the part of either that
// belongs on the page of --html; no output holds these bytes.
constexpr char kPageEnd = '\0';
constexpr char kHtmlBegin = '\x1e';

TextStyle terminalStyle(const Options& options) {
    TextStyle style;
    style.allKeys = options.keys;
    if (!isatty(STDOUT_FILENO)) return style;
    const char* terminal = getenv("TERM");
    const char* noColour = getenv("NO_COLOR");
    style.colour = terminal && strcmp(terminal, "dumb") != 0 && !(noColour && *noColour);
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) style.width = size.ws_col;
    return style;
}

Result brokenResult(Outcome::How how) {
    switch (how) {
        case Outcome::How::Crashed:
            return Result::Crashed;
        case Outcome::How::TimedOut:
            return Result::TimedOut;
        default:
            return Result::Failed;
    }
}

std::string endingText(const Outcome& outcome, double timeoutSeconds) {
    char seconds[32];
    snprintf(seconds, sizeof(seconds), "%g", timeoutSeconds);
    switch (outcome.how) {
        case Outcome::How::Crashed: {
            const char* name = sigabbrev_np(outcome.number);
            return "crashed by signal " + std::to_string(outcome.number) +
                   (name ? std::string(" (SIG") + name + ") " : " ") + outcome.whereabouts +
                   "; try --log verbose for what the plug-in did last";
        }
        case Outcome::How::TimedOut:
            return std::string("timed out after ") + seconds + " s " + outcome.whereabouts +
                   "; --timeout SECONDS gives it longer";
        default:
            return "ended by itself with exit status " + std::to_string(outcome.number) + " " +
                   outcome.whereabouts + "; see stderr";
    }
}

class Command {
  public:
    explicit Command(const Options& options)
        : mOptions(options),
          mStyle(terminalStyle(options)),
          mTable(mStyle, options.read, stdout),
          mProgress(true) {}

    int run() {
        FileList list = expandFiles(mOptions.files);
        mFiles = std::move(list.files);
        for (const std::string& error : list.errors) {
            fprintf(stderr, "orvelprobe: %s\n", error.c_str());
            mExitCode = kExitUsage;
        }
        if (mFiles.size() > 1 && (!mOptions.extract.empty() || !mOptions.coverPath.empty())) {
            fputs("orvelprobe: --extract and --cover need exactly one FILE\n", stderr);
            return kExitUsage;
        }
        if (mOptions.plots()) {
            mHtml.emplace(mOptions.htmlPath, mFiles);
            for (const std::string& error : list.errors)
                mHtml->addError(error);
        }
        const bool many = mFiles.size() > 1 || list.hasFolder;
        mAsTable = mOptions.table ||
                   (many && !mOptions.pages && !mOptions.json && !mOptions.needsPage());
        const auto begin = std::chrono::steady_clock::now();
        Supervisor supervisor(
                {mOptions.jobs, std::chrono::duration<double>(mOptions.timeoutSeconds)},
                [this](size_t index, ChildState& state, FILE* out) {
                    return inChild(index, state, out);
                },
                [this](size_t index, const Outcome& outcome) { return deliver(index, outcome); },
                [this](size_t index, const ChildState* state) {
                    mProgress.draw(mFiles[index], index, mFiles.size(), state);
                });
        supervisor.run(mFiles.size());
        mProgress.clear();
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
        if (mAsTable && !mStopped) mTable.writeSummary(mSamples, mBytes, passed.count());
        if (mHtml && !mStopped) saveHtml();
        return mExitCode;
    }

  private:
    void write(const Report& report, FILE* out) const {
        if (mOptions.json) {
            writeJson(report, out);
        } else if (mAsTable) {
            fputs(makeRow(report).toText().c_str(), out);
        } else {
            writeText(report, mStyle, out);
        }
    }
    void writeHtml(const Report& report, FILE* out) const {
        if (!mHtml) return;
        const std::string section = makeHtmlSection(report, mFiles.size()).toText();
        fputc(kHtmlBegin, out);
        fwrite(section.data(), 1, section.size(), out);
    }
    void saveHtml() {
        try {
            mHtml->save();
        } catch (const std::exception& error) {
            fprintf(stderr, "orvelprobe: %s\n", error.what());
            mExitCode = std::max<int>(mExitCode, kExitUsage);
        }
    }

    int inChild(size_t index, ChildState& state, FILE* out) const {
        for (const auto& [key, value] : mOptions.properties) {
            property_set(key.c_str(), value.c_str());
        }
        standin::setLogLevel(mOptions.logPriority);
        Collector collector(mOptions, state);
        std::optional<MemoryLimit> limit(std::in_place);
        const Report& report = collector.run(mFiles[index], [this, out](const Report& soFar) {
            // A page to fall back on; a machine wants one object or the error.
            if (!mOptions.json) write(soFar, out);
            writeHtml(soFar, out);
            fputc(kPageEnd, out);
            fflush(out);
        });
        limit.reset();  // what the report grows to in print is the tool's own affair
        state.step = Step::Output;
        write(report, out);
        writeHtml(report, out);
        state.setError(report.error);
        state.outputDone = fclose(out) == 0;
        state.step = Step::Close;
        return report.exitCode;
    }

    bool deliver(size_t index, const Outcome& outcome) {
        mProgress.clear();
        mSamples += outcome.samples;
        mBytes += outcome.bytes;
        if (outcome.noPlugin) {
            mStopped = true;
            mExitCode = kExitUsage;
            fprintf(stderr, "orvelprobe: %s\n", outcome.error.c_str());
            return false;
        }
        const size_t fallback = outcome.output.rfind(kPageEnd);
        std::string page;
        if (outcome.outputDone) {
            page = outcome.output.substr(fallback == std::string::npos ? 0 : fallback + 1);
        } else if (fallback != std::string::npos) {
            page = outcome.output.substr(0, fallback);
        }
        HtmlSection section;
        if (const size_t html = page.find(kHtmlBegin); html != std::string::npos) {
            section = HtmlSection::fromText(page.substr(html + 1));
            page.resize(html);
        }
        std::string error = outcome.error;
        int exitCode = outcome.exitCode;
        if (outcome.how != Outcome::How::Finished) {
            const std::string ending = endingText(outcome, mOptions.timeoutSeconds);
            error = error.empty() ? ending : error + "; " + ending;
            exitCode = kExitFailed;
            section.result = brokenResult(outcome.how);
            section.remark = printable(error);
            if (!mAsTable) writeBroken(index, page, ending);
        } else if (!mAsTable) {
            fputs(page.c_str(), stdout);
        }
        if (mAsTable) writeRow(index, page, outcome, error);
        if (mHtml) mHtml->add(mFiles[index], section);
        mExitCode = std::max(mExitCode, exitCode);
        if (outcome.how == Outcome::How::Finished && mFiles.size() - index > 3) preload();
        if (fflush(stdout) != 0) {
            fprintf(stderr, "orvelprobe: cannot write to stdout: %s\n", strerror(errno));
            mExitCode = std::max<int>(mExitCode, kExitUsage);
            mStopped = true;
            return false;
        }
        // One line for a log or a pipeline; a table and, on a terminal, a page have just said it.
        const bool seen =
                mAsTable || (!mOptions.json && isatty(STDOUT_FILENO) && isatty(STDERR_FILENO));
        if (!error.empty() && !seen) {
            fprintf(stderr, "orvelprobe: %s: %s\n", printable(mFiles[index]).c_str(),
                    printable(error).c_str());
        }
        return true;
    }

    // A child has loaded the plug-in and come to a good end: from now on children inherit it
    // loaded, with the many libraries behind it, instead of each spending most of its time on that.
    // Nothing of it is called here.
    void preload() {
        if (mPreloaded) return;
        mPreloaded = true;
        try {
            const auto path = std::filesystem::absolute(findPlugin(mOptions.pluginPath));
            dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        } catch (const std::exception&) {
            // Then each child loads it for itself, as the first one did.
        }
    }

    void writeRow(size_t index, const std::string& page, const Outcome& outcome,
                  const std::string& error) {
        TableRow row = TableRow::fromText(page);
        if (outcome.how != Outcome::How::Finished) {
            row.result = brokenResult(outcome.how);
            row.remark = printable(error);
        }
        mTable.writeRow(mFiles[index], row);
    }

    // The page that the file got as far as, if any, and how it ended.
    void writeBroken(size_t index, const std::string& page, const std::string& ending) const {
        if (page.empty()) {
            Report report;
            report.file = mFiles[index];
            report.error = ending;
            return write(report, stdout);
        }
        if (mOptions.json) {
            fputs(addJsonError(page, ending).c_str(), stdout);
        } else {
            fputs(page.substr(0, page.size() - 1).c_str(), stdout);  // without its empty line
            writeTextError(ending, mStyle, stdout);
        }
    }

    const Options& mOptions;
    const TextStyle mStyle;
    Table mTable;
    ProgressLine mProgress;
    std::optional<HtmlPage> mHtml;
    std::vector<std::string> mFiles;
    int mExitCode = kExitFine;
    bool mPreloaded = false;
    bool mAsTable = false;
    bool mStopped = false;  // before the last file
    uint64_t mSamples = 0;  // read over all files
    uint64_t mBytes = 0;
};

}  // namespace
}  // namespace orvel::probe

int main(int argc, char** argv) {
    orvel::probe::Options options;
    const int done = orvel::probe::parseOptions(argc, argv, &options);
    if (done >= 0) return done;
    try {
        return orvel::probe::Command(options).run();
    } catch (const std::exception& error) {
        fprintf(stderr, "orvelprobe: %s\n", error.what());
        return orvel::probe::kExitUsage;
    }
}
