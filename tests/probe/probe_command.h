// Runs the command as a shell would and keeps what it left behind.
#pragma once

#include <string>
#include <vector>

namespace orvel::probe::test {

struct RunResult {
    int exitCode = -1;  // -1: it did not exit by itself
    std::string out;
    std::string err;
    double seconds = 0;
};

// A folder of the test's own, removed at the end.
class Workspace {
  public:
    Workspace();
    ~Workspace();
    // Writes a file and returns its path.
    std::string file(const std::string& name, const std::string& content) const;
    std::string path(const std::string& name) const { return mFolder + "/" + name; }
    std::string content(const std::string& name) const;

    // orvelprobe with the fake plug-in (unless `arguments` name another one).
    RunResult probe(std::vector<std::string> arguments) const;
    // The same with stdout and stderr on one terminal of 100 columns; everything is in `out`.
    RunResult probeOnTerminal(std::vector<std::string> arguments) const;

  private:
    std::string mFolder;
};

}  // namespace orvel::probe::test
