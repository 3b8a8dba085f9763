// What the plug-in logged, kept for the report.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace orvel::probe {

class SniffTrace;

// Listens to the plug-in's log from construction to destruction; one at a time in a process.
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Where every line goes from now on, besides; null: nowhere. The trace is the caller's.
    void setTrace(SniffTrace* trace);
    // While one exists, nothing that its thread logs counts: FFmpeg logs for plug-in and reference
    // reader alike.
    class Pause {
      public:
        Pause();
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
    };
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
    SniffTrace* mTrace = nullptr;
    std::vector<Warning> mWarnings;
    size_t mOtherWarnings = 0;
};

}  // namespace orvel::probe
