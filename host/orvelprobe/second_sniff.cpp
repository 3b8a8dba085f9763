#include "second_sniff.h"

#include <cutils/properties.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "container_names.h"
#include "options.h"
#include "sniff_trace.h"

namespace orvel::probe {
namespace {

// "1 4 reason": taken, container, the sentence.
std::string inChild(const host::Plugin& plugin, host::DataSource& source, int64_t fileBytes,
                    LogCapture& log) {
    const std::string mask = std::to_string(kAllContainers);
    property_set(kMaskProperty, mask.c_str());
    SniffTrace trace;
    log.setTrace(&trace);
    TracedSource traced(source, trace);
    const bool taken = plugin.sniff(traced).taken();
    log.setTrace(nullptr);
    const ExplainReport steps = trace.take();
    return std::to_string(taken) + " " + std::to_string(bestContainer(steps)) + " " +
           sniffReason({steps, taken, mask, fileBytes}, std::nullopt);
}

std::string readAll(int pipe) {
    std::string text;
    char buffer[1024];
    for (;;) {
        const ssize_t length = read(pipe, buffer, sizeof(buffer));
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) return text;
        text.append(buffer, static_cast<size_t>(length));
    }
}

}  // namespace

std::optional<WideSniff> sniffWithEveryContainer(const host::Plugin& plugin,
                                                 host::DataSource& source, int64_t fileBytes,
                                                 LogCapture& log) {
    int ends[2];
    if (pipe(ends) != 0) return std::nullopt;
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(1);
        const std::string text = inChild(plugin, source, fileBytes, log);
        _exit(write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0
                                                                                            : 1);
    }
    close(ends[1]);
    const std::string text = pid > 0 ? readAll(ends[0]) : "";
    close(ends[0]);
    int status = -1;
    if (pid > 0) waitpid(pid, &status, 0);
    WideSniff wide;
    int taken = 0, used = 0;
    if (status != 0 || sscanf(text.c_str(), "%d %u %n", &taken, &wide.container, &used) != 2) {
        return std::nullopt;
    }
    wide.taken = taken != 0;
    wide.reason = text.substr(static_cast<size_t>(used));
    return wide;
}

}  // namespace orvel::probe
