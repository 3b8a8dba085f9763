#include "process/Supervisor.h"

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
#include <utility>

namespace orvel::probe {
namespace {

constexpr auto kTickInterval = std::chrono::milliseconds(100);
// A file that hangs holds up those behind it in the order; beyond this much waiting output no new
// ones are begun.
constexpr size_t kMaxWaitingBytes = 256 << 20;

constexpr int kSignals[] = {SIGCHLD, SIGINT, SIGTERM, SIGHUP};
volatile sig_atomic_t endSignal = 0;  // the signal that asked the command to end

void onSignal(int signal) {
    if (signal != SIGCHLD) endSignal = signal;
}

// Blocked except inside ppoll, so that no child's end can slip by unseen and nothing is left behind
// when the command is to end.
class Signals {
  public:
    Signals() {
        sigset_t block;
        sigemptyset(&block);
        for (const int signal : kSignals) {
            ::signal(signal, onSignal);
            sigaddset(&block, signal);
        }
        sigprocmask(SIG_BLOCK, &block, nullptr);
    }
    ~Signals() { restore(); }
    static void restore() {
        sigset_t none;
        sigemptyset(&none);
        for (const int signal : kSignals)
            ::signal(signal, SIG_DFL);
        sigprocmask(SIG_SETMASK, &none, nullptr);
    }
};

}  // namespace

void Supervisor::run(size_t files) {
    const Signals signals;
    size_t nextToStart = 0, waitingBytes = 0;
    while (mNextToDeliver < files) {
        while (nextToStart < files && mRunning.size() < mSettings.jobs &&
               waitingBytes <= kMaxWaitingBytes && start(nextToStart)) {
            nextToStart++;
        }
        wait();
        if (endSignal != 0) {
            killAll();
            throw Interrupted{endSignal};
        }
        mRunning.erase(std::remove_if(mRunning.begin(), mRunning.end(),
                                      [this](Child& child) { return reap(child); }),
                       mRunning.end());
        for (auto next = mWaiting.find(mNextToDeliver); next != mWaiting.end();
             next = mWaiting.find(mNextToDeliver)) {
            const Outcome outcome = std::move(next->second);
            mWaiting.erase(next);
            if (!mSettings.deliver(mNextToDeliver++, outcome)) return killAll();
        }
        waitingBytes = 0;
        for (const auto& [index, outcome] : mWaiting)
            waitingBytes += outcome.output.size();
    }
}

// False when the system has no process or pipe to spare just now; throws when it has none at all.
bool Supervisor::start(size_t index) {
    int ends[2];
    const auto fail = [this](const char* what, int error) {
        if (mRunning.empty()) throw std::system_error(error, std::generic_category(), what);
        return false;
    };
    if (pipe2(ends, O_CLOEXEC) != 0) return fail("pipe", errno);
    const pid_t parent = getpid();
    fflush(nullptr);  // or the child would write the parent's buffered text a second time
    Child child;
    child.index = index;
    child.pid = fork();
    if (child.pid == 0) {
        close(ends[0]);
        // Dies with the parent, also if the parent died before prctl.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(1);
        runChild(index, *child.state, ends[1]);
    }
    const int error = errno;
    close(ends[1]);
    if (child.pid < 0) {
        close(ends[0]);
        return fail("fork", error);
    }
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    child.pipe = ends[0];
    child.deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(mSettings.timeout);
    mRunning.push_back(std::move(child));
    return true;
}

void Supervisor::runChild(size_t index, ChildState& state, int pipe) {
    Signals::restore();
    signal(SIGPIPE, SIG_DFL);  // the reader of what it writes has had enough
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    FILE* out = fdopen(pipe, "w");
    if (!out) _exit(1);
    state.exitCode = mSettings.job(index, state, out);
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
    const auto left = std::max(until - now, Clock::duration::zero());
    const timespec timeout{0, static_cast<long>(std::chrono::nanoseconds(left).count())};
    sigset_t none;
    sigemptyset(&none);
    ppoll(polled.data(), polled.size(), &timeout, &none);
    const ChildState* next = nullptr;
    for (Child& child : mRunning) {
        child.drain();
        if (!child.killed && Clock::now() >= child.deadline) {
            child.killed = true;
            kill(child.pid, SIGKILL);
        }
        if (child.index == mNextToDeliver) next = child.state.get();
    }
    mSettings.tick(mNextToDeliver, next);
}

void Supervisor::Child::drain() {
    char buffer[65536];
    while (pipe >= 0) {
        const ssize_t length = read(pipe, buffer, sizeof(buffer));
        if (length < 0 && errno == EINTR) continue;
        if (length < 0 && errno == EAGAIN) return;
        if (length > 0) {
            output.append(buffer, static_cast<size_t>(length));
        } else {
            close(std::exchange(pipe, -1));
        }
    }
}

// True when the child has ended; its outcome then waits for its turn.
bool Supervisor::reap(Child& child) {
    int status = 0;
    if (waitpid(child.pid, &status, WNOHANG) != child.pid) return false;
    child.drain();  // what it wrote between the last look and its end
    if (child.pipe >= 0) close(child.pipe);
    const ChildState& state = *child.state;
    Outcome& outcome = mWaiting[child.index];
    outcome.output = std::move(child.output);
    outcome.step = state.step;
    outcome.whereabouts = state.whereabouts();
    outcome.samples = state.samples;
    outcome.bytes = state.bytes;
    if (WIFSIGNALED(status)) {
        outcome.how = child.killed ? Outcome::How::TimedOut : Outcome::How::Crashed;
        outcome.number = WTERMSIG(status);
    } else if (state.step != Step::Done || WEXITSTATUS(status) != state.exitCode) {
        outcome.how = Outcome::How::Exited;
        outcome.number = WEXITSTATUS(status);
    }
    return true;
}

void Supervisor::killAll() {
    for (Child& child : mRunning) {
        kill(child.pid, SIGKILL);
        waitpid(child.pid, nullptr, 0);
        if (child.pipe >= 0) close(child.pipe);
    }
    mRunning.clear();
}

}  // namespace orvel::probe
