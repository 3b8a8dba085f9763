#pragma once

#include <chrono>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "process/ChildState.h"

namespace orvel::probe {

/** How one file ended. */
struct Outcome {
    enum class How {
        Finished,  // the child did its work
        Crashed,   // ended by signal `number`
        TimedOut,  // killed at the deadline
        Exited,    // left with exit status `number`: in the middle of its work, or a sanitizer's
    };
    How how = How::Finished;
    int number = 0;
    std::string output;       // what it wrote, as far as it came
    Step step = Step::Start;  // what it was doing when it ended, and in words
    std::string whereabouts;
    uint64_t samples = 0;  // that the plug-in delivered, also before a crash
    uint64_t bytes = 0;
};

/** Thrown by run() when the user ends the command; its children have been killed. */
struct Interrupted {
    int signal;
};

/**
 * Runs one job for every file in a child process, so that a crash or a hang is that file's result
 * and nothing more: up to `jobs` at a time; the outcomes are handed over in the order of the files.
 * Single-threaded: children are forked while no thread but the caller's exists.
 */
class Supervisor {
  public:
    struct Settings {
        unsigned jobs = 1;
        std::chrono::duration<double> timeout{120};
        /**
         * In the child: does file `index`, writes its result to `out` and returns the exit code.
         * What a library prints to stdout meanwhile goes to stderr.
         */
        std::function<int(size_t index, ChildState& state, FILE* out)> job;
        /** In the parent, in order. False: no more children; those that run are killed. */
        std::function<bool(size_t index, const Outcome& outcome)> deliver;
        /**
         * In the parent, about ten times a second: the next file to be delivered and its state
         * (null while it has not been started).
         */
        std::function<void(size_t index, const ChildState* state)> tick;
    };
    explicit Supervisor(Settings settings) : mSettings(std::move(settings)) {}
    ~Supervisor() { killAll(); }

    /**
     * Returns when every file has been delivered. Throws std::system_error when the system gives no
     * process or pipe even for one child at a time, and Interrupted.
     */
    void run(size_t files);

  private:
    using Clock = std::chrono::steady_clock;
    struct Child {
        void drain();

        size_t index = 0;
        pid_t pid = -1;
        int pipe = -1;
        SharedChildState state = makeSharedChildState();
        Clock::time_point deadline;
        bool killed = false;
        std::string output;
    };

    bool start(size_t index);
    [[noreturn]] void runChild(size_t index, ChildState& state, int pipe);
    void wait();
    bool reap(Child& child);
    void killAll();

    const Settings mSettings;
    std::vector<Child> mRunning;
    std::map<size_t, Outcome> mWaiting;  // done, but an earlier file is not
    size_t mNextToDeliver = 0;
};

}  // namespace orvel::probe
