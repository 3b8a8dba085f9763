#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace orvel::probe::test {

using Json = nlohmann::ordered_json;
using Arguments = std::vector<std::string>;

struct RunResult {
    int exitCode = -1;  // -1: it did not exit by itself
    std::string out, err;

    bool says(const std::string& text) const { return out.find(text) != std::string::npos; }
    std::vector<std::string> lines() const;
    /** Line `i` of --json. */
    Json object(size_t i = 0) const { return Json::parse(lines().at(i)); }
};

/** A folder of the test's own, removed at the end. */
class Workspace {
  public:
    Workspace();
    ~Workspace();
    /** Writes a file and returns its path. */
    std::string file(const std::string& name, const std::string& content) const;
    std::string path(const std::string& name) const { return mFolder + "/" + name; }
    std::string content(const std::string& name) const;

    /** orvelprobe over the fake plug-in; stdout goes to `to`, or comes back, through a command. */
    RunResult fake(const Arguments& arguments, const std::string& to = "") const;
    /** The same over the plug-in itself. */
    RunResult real(Arguments arguments, const std::string& to = "") const;

  private:
    std::string mFolder;
};

}  // namespace orvel::probe::test
