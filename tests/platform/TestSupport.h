// What the tests of the platform's stand-in share.
#pragma once

#include <gtest/gtest.h>
#include <standin/log_control.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

// Opened once; whoever waits passes from then on.
class Latch {
  public:
    void open() {
        std::lock_guard<std::mutex> hold(mLock);
        mOpen = true;
        mChanged.notify_all();
    }
    void wait() {
        std::unique_lock<std::mutex> hold(mLock);
        mChanged.wait(hold, [this] { return mOpen; });
    }

  private:
    std::mutex mLock;
    std::condition_variable mChanged;
    bool mOpen = false;
};

// Collects what is logged while it lives.
class LogCapture {
  public:
    struct Line {
        int priority;
        std::string tag;
        std::string text;
    };

    LogCapture() { standin::setLogHook(&LogCapture::add, this); }
    ~LogCapture() { standin::setLogHook(nullptr, nullptr); }

    std::vector<Line> take() {
        std::lock_guard<std::mutex> hold(mLock);
        return std::exchange(mLines, {});
    }

  private:
    static void add(void* cookie, int priority, const char* tag, const char* text) {
        auto* self = static_cast<LogCapture*>(cookie);
        std::lock_guard<std::mutex> hold(self->mLock);
        self->mLines.push_back({priority, tag, text});
    }

    std::mutex mLock;
    std::vector<Line> mLines;
};

// Allocations through operator new, by every thread of the process, since it started.
// Not counted under the sanitizers.
size_t allocationCount();
bool allocationsAreCounted();
