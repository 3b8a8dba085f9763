#include "process/Command.h"

#include <cutils/properties.h>
#include <standin/LogControl.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include <cerrno>
#include <chrono>
#include <exception>
#include <optional>

#include "Words.h"
#include "collect/Collector.h"
#include "process/FileList.h"
#include "process/OutputFile.h"
#include "process/ProgressLine.h"
#include "process/Supervisor.h"
#include "render/Html.h"
#include "render/Text.h"

namespace orvel::probe {
namespace {

namespace fs = std::filesystem;

constexpr char kHtml[] = "html";  // name of an output; the others are "cover" and track indices

std::string endingText(const Outcome& outcome, double timeoutSeconds) {
    if (outcome.how == Outcome::How::TimedOut) {
        return formatted("timed out after %g s ", timeoutSeconds) + outcome.whereabouts +
               "; --timeout SECONDS gives it longer";
    }
    const std::string number = std::to_string(outcome.number);
    if (outcome.how == Outcome::How::Exited) {
        return "ended by itself with exit status " + number + " " + outcome.whereabouts +
               "; see stderr";
    }
    const char* name = sigabbrev_np(outcome.number);
    return "crashed by signal " + number + (name ? std::string(" (SIG") + name + ") " : " ") +
           outcome.whereabouts + "; try --log verbose for what the plug-in did last";
}

class Command {
  public:
    explicit Command(const Options& options)
        : mOptions(options), mList(expandFiles(options.files)), mFiles(mList.files) {
        if (mFiles.size() > 1 && (!options.extract.empty() || !options.coverPath.empty())) {
            throw std::runtime_error("--extract and --cover need exactly one FILE");
        }
        leaveOutPage();
        openOutputs();
        mStyle = stdoutStyle();
        const bool many = mFiles.size() > 1 || mList.hasFolder;
        mAsTable =
                options.table || (many && !options.pages && !options.json && !options.needsPage());
        mTable.emplace(mStyle, options.read, !options.seeks.empty());
        if (mOutputs.count(kHtml)) mPage.emplace(options, mFiles.size());
    }

    int run() {
        for (const std::string& error : mList.errors) {
            complain(error);
            if (mPage) mPage->addError(error);
        }
        const auto begin = std::chrono::steady_clock::now();
        Supervisor(
                {mOptions.jobs, std::chrono::duration<double>(mOptions.timeoutSeconds),
                 [this](size_t i, ChildState& state, FILE* out) { return inChild(i, state, out); },
                 [this](size_t i, const Outcome& outcome) { return deliver(i, outcome); },
                 [this](size_t i, const ChildState* state) {
                     mProgress.draw(mFiles[i], i, mFiles.size(), state);
                 }})
                .run(mFiles.size());
        mProgress.clear();
        if (mStopped) return mExitCode;
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
        if (mAsTable) mTable->writeSummary(mSamples, mBytes, passed.count());
        checkStdout();
        if (mPage) {
            mPage->write(mOutputs.at(kHtml).fd());
            mOutputs.at(kHtml).commit();
        }
        return mExitCode;
    }

  private:
    void complain(const std::string& text) {
        fprintf(stderr, "orvelprobe: %s\n", printable(text).c_str());
        mExitCode = std::max<int>(mExitCode, kExitUsage);
    }

    // A page of an earlier run, found below a folder, is to be replaced, not read.
    void leaveOutPage() {
        const std::string& page = mOptions.htmlPath;
        if (page.empty() || !isOwnPage(page)) return;
        const auto isPage = [&](const std::string& file) {
            return isSameFile(file, page) && std::find(mOptions.files.begin(), mOptions.files.end(),
                                                       file) == mOptions.files.end();
        };
        mFiles.erase(std::remove_if(mFiles.begin(), mFiles.end(), isPage), mFiles.end());
    }

    void openOutputs() {
        const auto open = [this](const std::string& name, const std::string& option,
                                 const std::string& path) {
            if (path.empty()) return;
            const auto [made, added] =
                    mOutputs.try_emplace(name, option, path, mOptions.force, name == kHtml, mFiles);
            const auto whole = [](const OutputFile& file) {
                return fs::weakly_canonical(fs::absolute(file.path()));
            };
            for (const auto& [otherName, other] : mOutputs) {
                if (otherName == name || whole(other) != whole(made->second)) continue;
                throw std::runtime_error(option + " " + path + ": is written already");
            }
        };
        open(kHtml, "--html", mOptions.htmlPath);
        open("cover", "--cover", mOptions.coverPath);
        for (const auto& [track, path] : mOptions.extract)
            open(std::to_string(track), "--extract", path);
    }

    int inChild(size_t index, ChildState& state, FILE* out) const {
        for (const auto& [key, value] : mOptions.properties)
            property_set(key.c_str(), value.c_str());
        standin::setLogLevel(mOptions.logPriority);
        OutputFds fds;
        for (const auto& [name, file] : mOutputs)
            fds[name] = file.fd();
        ReportSender sender(out);
        return collect(mOptions, fds, mFiles[index], state, sender);
    }

    // What the child reported, and how it ended.
    Report finalReport(size_t index, const Outcome& outcome) {
        Report report = receiveReport(outcome.output);
        Json& tree = report.tree;  // a new member may move the others
        tree["file"] = mFiles[index];
        tree["private"]["listSamples"] = mOptions.samples;
        // Failing over the second offer is not the file's result.
        const bool isAside = outcome.step == Step::SniffAgain && report.whole;
        if (outcome.how == Outcome::How::Finished || isAside) return report;
        const std::string ending = endingText(outcome, mOptions.timeoutSeconds);
        const std::string error = textOf(tree, "error");
        tree["error"] = error.empty() ? ending : error + "; " + ending;
        constexpr Result kResults[] = {Result::Taken, Result::Crashed, Result::TimedOut,
                                       Result::Failed};
        const char* name = resultName(kResults[static_cast<size_t>(outcome.how)]);
        tree["private"].update(
                {{"ending", name}, {"exit", kExitFailed}, {"written", Json::array()}});
        return report;
    }

    bool deliver(size_t index, const Outcome& outcome) {
        mProgress.clear();
        mSamples += outcome.samples;
        mBytes += outcome.bytes;
        if (outcome.how == Outcome::How::Crashed && outcome.number == SIGPIPE) return stop();
        Report report = finalReport(index, outcome);
        Json& more = report.tree["private"];
        if (more.value("noPlugin", false)) {
            complain(textOf(report.tree, "error"));
            return stop();
        }
        commitOutputs(&more);
        mExitCode = std::max(mExitCode, static_cast<int>(intOf(more, "exit")));
        if (mOptions.json) {
            writeJsonLine(report);
        } else if (mAsTable) {
            mTable->writeRow(mFiles[index], report.tree);
        } else {
            writeText(report, mStyle, mOptions.keys);
        }
        if (mPage) mPage->add(report);
        if (!checkStdout()) return false;
        // One line for a log or a pipeline; a table and, on a terminal, a page have just said it.
        const std::string error = textOf(report.tree, "error");
        const bool seen =
                mAsTable || (!mOptions.json && isatty(STDOUT_FILENO) && isatty(STDERR_FILENO));
        if (!error.empty() && !seen) {
            fprintf(stderr, "orvelprobe: %s: %s\n", printable(mFiles[index]).c_str(),
                    printable(error).c_str());
        }
        return true;
    }

    void commitOutputs(Json* more) {
        for (Json& written : (*more)["written"]) {
            const auto output = mOutputs.find(textOf(written, "output"));
            if (output == mOutputs.end()) continue;
            try {
                output->second.commit();
                written["text"] = output->second.path() + ": " + textOf(written, "text");
            } catch (const std::exception& error) {
                complain(error.what());
            }
        }
    }

    // False: nothing more can be written. A reader that has closed its end has seen enough.
    bool checkStdout() {
        if (fflush(stdout) == 0 && !ferror(stdout)) return true;
        clearerr(stdout);
        putchar('\n');  // once more, for the reason
        if (fflush(stdout) != 0 && !mStopped && errno != EPIPE)
            complain(std::string("cannot write to stdout: ") + strerror(errno));
        return stop();
    }

    bool stop() {
        mStopped = true;
        return false;
    }

    const Options& mOptions;
    FileList mList;
    std::vector<std::string>& mFiles;
    std::map<std::string, OutputFile> mOutputs;  // by name
    TextStyle mStyle;
    std::optional<Table> mTable;
    ProgressLine mProgress;
    std::optional<HtmlPage> mPage;
    int mExitCode = kExitFine;
    bool mAsTable = false;
    bool mStopped = false;  // before the last file
    uint64_t mSamples = 0;  // read over all files
    uint64_t mBytes = 0;
};

}  // namespace

int runCommand(const Options& options) {
    Command command(options);
    return command.run();
}

}  // namespace orvel::probe
