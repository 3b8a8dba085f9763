// What the plug-in logged, kept for the report.
#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace orvel::probe {

// Listens to the plug-in's log from construction to destruction; one at a time in a process.
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The texts of info priority and above since the last call, the last 64 of them.
    std::vector<std::string> takeRecent();
    // The warnings and errors since construction, but for those of any ordinary run: each different
    // text once, with how often it came; at most `maxLines`, then a line that says how many more
    // there are.
    std::vector<std::string> warnings(size_t maxLines) const;

  private:
    static void onLine(void* cookie, int priority, const char* tag, const char* text);

    struct Warning {
        std::string text;
        size_t count;
    };
    mutable std::mutex mMutex;  // lines come from the plug-in's threads, too
    std::deque<std::string> mRecent;
    std::vector<Warning> mWarnings;
    size_t mOtherWarnings = 0;
};

}  // namespace orvel::probe
