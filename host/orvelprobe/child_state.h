// What a file's child process is doing, in memory that it shares with its parent: read by the
// progress line while the child runs, and by the report of a crash or a hang when it no longer can.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

namespace orvel::probe {

enum class Step : int {
    Start,
    LoadPlugin,
    Sniff,
    SniffAgain,
    Create,
    Describe,
    StartTracks,
    Read,
    Seek,
    Output,
    Close,
    Done,
};

// Written by the child, read by the parent at any time; every field stands for itself.
struct ChildState {
    std::atomic<Step> step{Step::Start};
    std::atomic<uint64_t> samples{0};  // delivered so far, over all tracks
    std::atomic<uint64_t> bytes{0};
    std::atomic<uint64_t> track{0};       // of the last sample
    std::atomic<int64_t> timeUs{0};       // of the last sample
    std::atomic<int64_t> durationUs{0};   // 0: not known
    std::atomic<bool> outputDone{false};  // everything that the file had to say has been written
    std::atomic<int> exitCode{0};         // what it is about to leave with; counts at Step::Done
    std::atomic<bool> noPlugin{false};  // the plug-in cannot be loaded: no other file can do better

    static_assert(std::atomic<uint64_t>::is_always_lock_free, "shared between processes");

    // The error of the report, null-terminated, cut if need be. Counts once outputDone is set.
    char error[1024] = {};
    void setError(const std::string& text);

    // "while sniffing", "while reading, after 120 samples (last: track 1 at 3.200 s)".
    std::string whereabouts() const;
};

// An anonymous page shared with children forked later. Move-only.
class SharedChildState {
  public:
    SharedChildState();  // throws std::system_error
    ~SharedChildState();
    SharedChildState(SharedChildState&& other) noexcept : mState(other.mState) {
        other.mState = nullptr;
    }
    SharedChildState& operator=(SharedChildState&& other) noexcept {
        std::swap(mState, other.mState);
        return *this;
    }
    ChildState* operator->() const { return mState; }
    ChildState& operator*() const { return *mState; }

  private:
    ChildState* mState;
};

}  // namespace orvel::probe
