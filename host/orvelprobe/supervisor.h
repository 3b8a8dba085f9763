// A child process for each file, so that a crash or a hang is that file's result and nothing more.
#pragma once

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "child_state.h"

namespace orvel::probe {

// How one file ended.
struct Outcome {
    enum class How {
        Finished,  // the child did its work; exitCode says with what result
        Crashed,   // ended by signal `number`
        TimedOut,  // killed at the deadline
        Exited,    // left with exit status `number`: in the middle of its work, or a sanitizer's
    };
    How how = How::Finished;
    int exitCode = 0;
    int number = 0;
    std::string output;  // what it wrote; whole only if `outputDone`
    bool outputDone = false;
    std::string whereabouts;  // what it was doing when it ended
    std::string error;        // of its report; empty unless `outputDone`
    bool noPlugin = false;
    uint64_t samples = 0;  // that the plug-in delivered, also before a crash
    uint64_t bytes = 0;
};

// Runs one job for every file, up to `jobs` at a time, and hands the outcomes over in the order of
// the files. Single-threaded: children are forked while no thread but the caller's exists.
class Supervisor {
  public:
    struct Settings {
        unsigned jobs = 1;
        std::chrono::duration<double> timeout{120};
    };
    // In the child: does file `index`, writes its result to `out` and returns the exit code. What a
    // library prints to stdout meanwhile goes to stderr.
    using Job = std::function<int(size_t index, ChildState& state, FILE* out)>;
    // In the parent, in order. False: no more children; those that run are killed.
    using Deliver = std::function<bool(size_t index, const Outcome& outcome)>;
    // In the parent, about ten times a second: the next file to be delivered and its state (null
    // while it has not been started).
    using Tick = std::function<void(size_t index, const ChildState* state)>;

    Supervisor(Settings settings, Job job, Deliver deliver, Tick tick);
    ~Supervisor();

    // Returns when every file has been delivered. Throws std::system_error when the system gives no
    // process or pipe even for one child at a time.
    void run(size_t files);

  private:
    struct Child;

    bool start(size_t index);
    [[noreturn]] void runChild(size_t index, ChildState& state, int pipe);
    void wait();
    void drain(Child& child);
    bool reap(Child& child);
    void finish(Child& child, int status);
    void killAll();

    const Settings mSettings;
    const Job mJob;
    const Deliver mDeliver;
    const Tick mTick;
    std::vector<Child> mRunning;
    std::vector<std::pair<size_t, Outcome>> mWaiting;  // done, but an earlier file is not
    size_t mWaitingBytes = 0;                          // of output in mWaiting
    size_t mNextToDeliver = 0;
};

}  // namespace orvel::probe
