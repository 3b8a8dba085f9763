#include "ProbeCommand.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace orvel::probe::test {

std::vector<std::string> RunResult::lines() const {
    std::vector<std::string> all;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);)
        all.push_back(line);
    return all;
}

Workspace::Workspace() {
    std::string name = std::filesystem::temp_directory_path().string() + "/probe-test-XXXXXX";
    mFolder = mkdtemp(name.data()) ? name : "";
    EXPECT_FALSE(mFolder.empty());
    // A crash has to stay a crash where a sanitizer would make an exit status of it.
    for (const char* sanitizer : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) {
        const char* old = getenv(sanitizer);
        setenv(sanitizer, ((old ? std::string(old) + ":" : "") + "handle_segv=0").c_str(), 1);
    }
}

Workspace::~Workspace() {
    std::filesystem::remove_all(mFolder);
}

std::string Workspace::file(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
}

std::string Workspace::content(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

RunResult Workspace::fake(const Arguments& arguments, const std::string& to) const {
    std::string command = "cd '" + mFolder + "' && { " ORVELPROBE;
    if (std::count(arguments.begin(), arguments.end(), "--plugin") == 0)
        command += " --plugin " FAKE_PLUGIN;
    for (std::string argument : arguments) {
        for (size_t at = 0; (at = argument.find('\'', at)) != std::string::npos; at += 4)
            argument.replace(at, 1, "'\\''");
        command += " '" + argument + "'";
    }
    command += " 2>.err; echo $? >.code; } " + (to.empty() ? ">.out" : to);
    EXPECT_NE(system(command.c_str()), -1);
    return {atoi(content(".code").c_str()), content(".out"), content(".err")};
}

RunResult Workspace::real(Arguments arguments, const std::string& to) const {
    if (std::count(arguments.begin(), arguments.end(), "--plugin") == 0)
        arguments.insert(arguments.end(), {"--plugin", PLUGIN});
    return fake(arguments, to);
}

}  // namespace orvel::probe::test
