#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

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

/**
 * What a file's child process is doing, in memory that it shares with its parent: for the progress
 * line while the child runs, and for the report of a crash or a hang when it no longer can tell.
 * Written by the child, read by the parent at any time; every field stands for itself.
 */
struct ChildState {
    std::atomic<Step> step{Step::Start};
    std::atomic<uint64_t> samples{0};  // delivered so far, over all tracks
    std::atomic<uint64_t> bytes{0};
    std::atomic<uint64_t> track{0};      // of the last sample
    std::atomic<int64_t> timeUs{0};      // of the last sample
    std::atomic<int64_t> durationUs{0};  // 0: not known
    std::atomic<int> exitCode{0};        // what it is about to leave with; counts at Step::Done

    static_assert(std::atomic<uint64_t>::is_always_lock_free, "shared between processes");

    /** "while sniffing", "while reading, after 120 samples (last: track 1 at 3.200 s)". */
    std::string whereabouts() const;
};

struct Unmap {
    void operator()(ChildState* state) const;
};
/** In an anonymous page, shared with children forked later. Throws std::system_error. */
using SharedChildState = std::unique_ptr<ChildState, Unmap>;
SharedChildState makeSharedChildState();

}  // namespace orvel::probe
