#include "supervisor.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace orvel::probe {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kTickInterval = std::chrono::milliseconds(100);
// A file that hangs holds up those behind it in the order; beyond this much waiting output no new
// ones are begun.
constexpr size_t kMaxWaitingBytes = 256 << 20;

void onChildSignal(int) {}

// SIGCHLD stays blocked except inside ppoll, so that no child's end can slip by unseen.
class ChildSignals {
  public:
    ChildSignals() {
        struct sigaction action {};
        action.sa_handler = onChildSignal;
        sigaction(SIGCHLD, &action, &mOldAction);
        sigset_t block;
        sigemptyset(&block);
        sigaddset(&block, SIGCHLD);
        sigprocmask(SIG_BLOCK, &block, &mOldMask);
    }
    ~ChildSignals() {
        sigaction(SIGCHLD, &mOldAction, nullptr);
        sigprocmask(SIG_SETMASK, &mOldMask, nullptr);
    }

  private:
    struct sigaction mOldAction {};
    sigset_t mOldMask{};
};

}  // namespace

struct Supervisor::Child {
    size_t index = 0;
    pid_t pid = -1;
    int pipe = -1;
    SharedChildState state;
    Clock::time_point deadline;
    bool killed = false;
    std::string output;
};

Supervisor::Supervisor(Settings settings, Job job, Deliver deliver, Tick tick)
    : mSettings(settings),
      mJob(std::move(job)),
      mDeliver(std::move(deliver)),
      mTick(std::move(tick)) {}

Supervisor::~Supervisor() {
    killAll();
}

void Supervisor::run(size_t files) {
    const ChildSignals signals;
    size_t nextToStart = 0;
    mNextToDeliver = 0;
    while (mNextToDeliver < files) {
        while (nextToStart < files && mRunning.size() < mSettings.jobs &&
               mWaitingBytes <= kMaxWaitingBytes && start(nextToStart)) {
            nextToStart++;
        }
        wait();
        for (size_t i = 0; i < mRunning.size();) {
            if (reap(mRunning[i])) {
                mRunning.erase(mRunning.begin() + static_cast<ptrdiff_t>(i));
            } else {
                i++;
            }
        }
        for (;;) {
            const auto next = std::find_if(mWaiting.begin(), mWaiting.end(), [this](auto& entry) {
                return entry.first == mNextToDeliver;
            });
            if (next == mWaiting.end()) break;
            const Outcome outcome = std::move(next->second);
            mWaiting.erase(next);
            mWaitingBytes -= outcome.output.size();
            if (!mDeliver(mNextToDeliver++, outcome)) return killAll();
        }
    }
}

// False when the system has no process or pipe to spare just now; throws when it has none at all.
bool Supervisor::start(size_t index) {
    int ends[2];
    const auto fail = [this](const char* what) {
        if (mRunning.empty()) throw std::system_error(errno, std::generic_category(), what);
        return false;
    };
    if (pipe2(ends, O_CLOEXEC) != 0) return fail("pipe");
    const pid_t parent = getpid();
    fflush(nullptr);  // or the child would write the parent's buffered text a second time
    Child child;
    const pid_t pid = fork();
    if (pid < 0) {
        const int error = errno;
        close(ends[0]);
        close(ends[1]);
        errno = error;
        return fail("fork");
    }
    if (pid == 0) {
        close(ends[0]);
        // A parent that is killed leaves nobody behind, not even one that came too late for it.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(1);
        runChild(index, *child.state, ends[1]);
    }
    close(ends[1]);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    child.index = index;
    child.pid = pid;
    child.pipe = ends[0];
    child.deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(mSettings.timeout);
    mRunning.push_back(std::move(child));
    return true;
}

void Supervisor::runChild(size_t index, ChildState& state, int pipe) {
    signal(SIGCHLD, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int null = open("/dev/null", O_RDONLY);
    dup2(null, STDIN_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    FILE* out = fdopen(pipe, "w");
    if (!out) _exit(1);
    state.exitCode = mJob(index, state, out);
    state.step = Step::Done;
    // Not _exit: a leak checker, where one is built in, reports at this point.
    exit(state.exitCode);
}

// Until a child writes or ends, the next deadline or the next tick.
void Supervisor::wait() {
    const auto now = Clock::now();
    auto until = now + kTickInterval;
    std::vector<pollfd> polled;
    for (const Child& child : mRunning) {
        if (child.pipe >= 0) polled.push_back({child.pipe, POLLIN, 0});
        if (!child.killed) until = std::min(until, child.deadline);
    }
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::max(until - now, Clock::duration::zero()));
    const timespec timeout{static_cast<time_t>(left.count() / 1000000000),
                           static_cast<long>(left.count() % 1000000000)};
    sigset_t none;
    sigemptyset(&none);
    ppoll(polled.data(), polled.size(), &timeout, &none);
    for (Child& child : mRunning) {
        drain(child);
        if (!child.killed && Clock::now() >= child.deadline) {
            child.killed = true;
            kill(child.pid, SIGKILL);
        }
    }
    const auto head = std::find_if(mRunning.begin(), mRunning.end(), [this](const Child& child) {
        return child.index == mNextToDeliver;
    });
    mTick(mNextToDeliver, head == mRunning.end() ? nullptr : &*head->state);
}

void Supervisor::drain(Child& child) {
    char buffer[65536];
    while (child.pipe >= 0) {
        const ssize_t length = read(child.pipe, buffer, sizeof(buffer));
        if (length > 0) {
            child.output.append(buffer, static_cast<size_t>(length));
        } else if (length < 0 && errno == EINTR) {
            continue;
        } else if (length < 0 && errno == EAGAIN) {
            return;
        } else {
            close(child.pipe);
            child.pipe = -1;
        }
    }
}

// True when the child has ended; its outcome then waits for its turn.
bool Supervisor::reap(Child& child) {
    int status = 0;
    const pid_t pid = waitpid(child.pid, &status, WNOHANG);
    if (pid != child.pid) return false;
    drain(child);  // what it wrote between the last look and its end
    if (child.pipe >= 0) close(child.pipe);
    finish(child, status);
    return true;
}

void Supervisor::finish(Child& child, int status) {
    Outcome outcome;
    outcome.output = std::move(child.output);
    outcome.outputDone = child.state->outputDone;
    if (outcome.outputDone) outcome.error = child.state->error;
    outcome.noPlugin = child.state->noPlugin;
    outcome.samples = child.state->samples;
    outcome.bytes = child.state->bytes;
    outcome.whereabouts = child.state->whereabouts();
    if (child.killed && WIFSIGNALED(status)) {
        outcome.how = Outcome::How::TimedOut;
    } else if (WIFSIGNALED(status)) {
        outcome.how = Outcome::How::Crashed;
        outcome.number = WTERMSIG(status);
    } else if (child.state->step != Step::Done || WEXITSTATUS(status) != child.state->exitCode) {
        outcome.how = Outcome::How::Exited;
        outcome.number = WEXITSTATUS(status);
    } else {
        outcome.exitCode = WEXITSTATUS(status);
    }
    mWaitingBytes += outcome.output.size();
    mWaiting.emplace_back(child.index, std::move(outcome));
}

void Supervisor::killAll() {
    for (Child& child : mRunning) {
        kill(child.pid, SIGKILL);
        waitpid(child.pid, nullptr, 0);
        if (child.pipe >= 0) close(child.pipe);
    }
    mRunning.clear();
    mWaiting.clear();
    mWaitingBytes = 0;
}

}  // namespace orvel::probe
