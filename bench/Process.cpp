#include "Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace orvel::bench {
namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

// The number behind `key` in this process's status; 0 when there is none.
uint64_t statusNumber(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, key.size() + 1, key + ":") != 0) continue;
        return strtoull(line.c_str() + key.size() + 1, nullptr, 10);
    }
    return 0;
}

std::runtime_error cannotStart(const std::string& program, int error) {
    return std::runtime_error(program +
                              " cannot be started: " + std::generic_category().message(error));
}

}  // namespace

Usage usage() {
    rusage now{};
    getrusage(RUSAGE_SELF, &now);
    return {seconds(now.ru_utime) + seconds(now.ru_stime), static_cast<uint64_t>(now.ru_nvcsw),
            static_cast<uint64_t>(now.ru_nivcsw)};
}

uint64_t residentBytes() {
    return 1024 * statusNumber("VmRSS");
}

uint64_t peakResidentBytes() {
    return 1024 * statusNumber("VmHWM");
}

void resetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5\n";
}

uint64_t threadCount() {
    return statusNumber("Threads");
}

double loadAverage() {
    double load = 0;
    return getloadavg(&load, 1) == 1 ? load : 0;
}

std::filesystem::path thisProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

std::string run(const std::vector<std::string>& arguments) {
    const std::string& program = arguments.front();
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw cannotStart(program, errno);
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t child = -1;
    const int error =
            posix_spawnp(&child, program.c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::string output;
    char buffer[4096];
    for (;;) {
        const ssize_t count = error == 0 ? read(ends[0], buffer, sizeof(buffer)) : 0;
        if (count > 0) output.append(buffer, static_cast<size_t>(count));
        if (count == 0 || (count < 0 && errno != EINTR)) break;
    }
    close(ends[0]);
    if (error != 0) throw cannotStart(program, error);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return output;
    throw std::runtime_error(
            program + (WIFSIGNALED(status)
                               ? " ended by signal " + std::to_string(WTERMSIG(status))
                               : " ended with status " + std::to_string(WEXITSTATUS(status))));
}

}  // namespace orvel::bench
