#pragma once

#include <mutex>
#include <string>
#include <vector>

#include <standin/LogControl.h>

namespace orvel::test {

// Collects what is logged while it exists, from any thread, as "priority tag: text".
class LogCapture {
  public:
    LogCapture() { standin::setLogHook(&LogCapture::onLine, this); }
    ~LogCapture() { standin::setLogHook(nullptr, nullptr); }

    // The lines with the tag since the last call.
    std::vector<std::string> take(const std::string& tag) {
        std::lock_guard<std::mutex> lock(mMutex);
        std::vector<std::string> taken;
        for (const std::string& line : mLines) {
            if (line.compare(2, tag.size() + 1, tag + ":") == 0) taken.push_back(line);
        }
        mLines.clear();
        return taken;
    }

  private:
    static void onLine(void* cookie, int priority, const char* tag, const char* text) {
        auto* self = static_cast<LogCapture*>(cookie);
        std::lock_guard<std::mutex> lock(self->mMutex);
        self->mLines.push_back(std::string(1, "??VDIWEF"[priority]) + " " + tag + ": " + text);
    }

    std::mutex mMutex;
    std::vector<std::string> mLines;
};

using Lines = std::vector<std::string>;

}  // namespace orvel::test
