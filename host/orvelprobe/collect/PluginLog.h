#pragma once

#include <mutex>

#include "Report.h"

namespace orvel::probe {

/**
 * What the plug-in logged, and while it decides also what it read, in the order in which it
 * happened. Listens from construction to destruction; one at a time in a process. Any thread.
 */
class PluginLog {
  public:
    PluginLog();
    ~PluginLog();
    PluginLog(const PluginLog&) = delete;
    PluginLog& operator=(const PluginLog&) = delete;

    /** Begins a trace: from now on every line and every read is noted, up to a bound. */
    void trace();
    /** `length` -1: the size was asked. Counts while a trace goes on. */
    void addRead(off64_t offset, ssize_t length, off64_t result);
    /** Ends it: {"steps": [...], "omitted": N}, as in "explain" of the JSON output. */
    Json endTrace();

    /** While one exists, nothing that its thread logs counts: FFmpeg logs for all its users. */
    class Pause {
      public:
        Pause();
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
    };
    /**
     * The warnings and errors since construction, but for those of any ordinary run: each text
     * once, with how often it came; at most `maxLines`, then how many more there are.
     */
    Json notes(size_t maxLines) const;
    /** FFmpeg's codec ids of streams that the plug-in skipped, in their order. */
    std::vector<int> skippedCodecs() const;

  private:
    static void onLine(void* cookie, int priority, const char* tag, const char* text);
    void add(Json step, bool always);
    void note(const std::string& line);

    mutable std::mutex mMutex;  // guards all below: lines and reads come from the plug-in's threads
    bool mTracing = false;
    Json mSteps;
    size_t mOmitted = 0;
    Json mNotes = Json::object();  // how often each came, in the order of their first
    std::vector<int> mSkipped;
};

}  // namespace orvel::probe
