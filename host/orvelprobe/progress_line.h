// One line on a terminal that says how far a long read is.
#pragma once

#include <chrono>
#include <string>

#include "child_state.h"

namespace orvel::probe {

// Draws on stderr, and only if that is a terminal. Appears after a moment, so that short runs leave
// no trace.
class ProgressLine {
  public:
    explicit ProgressLine(bool enabled);
    ~ProgressLine() { clear(); }
    // `state` null: the file has not begun.
    void draw(const std::string& file, size_t index, size_t files, const ChildState* state);
    // Takes the line away; before anything else is written, and when a file is done.
    void clear();

  private:
    const bool mEnabled;
    bool mShown = false;
    bool mAppeared = false;
    std::chrono::steady_clock::time_point mSince;  // construction, or the last drawing
};

}  // namespace orvel::probe
