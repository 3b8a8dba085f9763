#include "probe_command.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace orvel::probe::test {
namespace {

[[noreturn]] void runCommand(std::vector<std::string>& arguments) {
    arguments.insert(arguments.begin(), ORVELPROBE);
    if (std::find(arguments.begin(), arguments.end(), "--plugin") == arguments.end()) {
        arguments.insert(arguments.begin() + 1, {"--plugin", FAKE_PLUGIN});
    }
    // A crash has to stay a crash where a sanitizer would make an exit status of it.
    for (const char* name : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) {
        const char* old = getenv(name);
        setenv(name, ((old ? std::string(old) + ":" : "") + "handle_segv=0").c_str(), 1);
    }
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    execv(ORVELPROBE, pointers.data());
    _exit(127);
}

void waitFor(pid_t pid, std::chrono::steady_clock::time_point begin, RunResult* result) {
    int status = 0;
    waitpid(pid, &status, 0);
    result->exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result->seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

Workspace::Workspace() {
    std::string name = std::filesystem::temp_directory_path().string() + "/probe-test-XXXXXX";
    mFolder = mkdtemp(name.data()) ? name : "";
    EXPECT_FALSE(mFolder.empty());
}

Workspace::~Workspace() {
    std::error_code ignored;
    std::filesystem::remove_all(mFolder, ignored);
}

std::string Workspace::file(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
}

std::string Workspace::content(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

RunResult Workspace::probe(std::vector<std::string> arguments) const {
    RunResult result;
    const auto begin = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(open(path(".out").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), STDOUT_FILENO);
        dup2(open(path(".err").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), STDERR_FILENO);
        runCommand(arguments);
    }
    waitFor(pid, begin, &result);
    result.out = content(".out");
    result.err = content(".err");
    return result;
}

RunResult Workspace::probeOnTerminal(std::vector<std::string> arguments) const {
    RunResult result;
    const auto begin = std::chrono::steady_clock::now();
    winsize size{24, 100, 0, 0};
    int terminal = -1;
    const pid_t pid = forkpty(&terminal, nullptr, nullptr, &size);
    if (pid == 0) {
        setenv("TERM", "xterm", 1);
        unsetenv("NO_COLOR");
        runCommand(arguments);
    }
    char buffer[4096];
    for (ssize_t length; (length = read(terminal, buffer, sizeof(buffer))) > 0;) {
        result.out.append(buffer, static_cast<size_t>(length));
    }
    waitFor(pid, begin, &result);
    close(terminal);
    return result;
}

}  // namespace orvel::probe::test
