#pragma once

#include <unistd.h>

#include <chrono>
#include <string>

#include "process/ChildState.h"

namespace orvel::probe {

/**
 * One line on stderr, if that is a terminal, that says how far a long read is. Appears after a
 * moment, so that short runs leave no trace.
 */
class ProgressLine {
  public:
    ~ProgressLine() { clear(); }
    /** `state` null: the file has not begun. */
    void draw(const std::string& file, size_t index, size_t files, const ChildState* state);
    /** Takes the line away; before anything else is written, and when a file is done. */
    void clear();

  private:
    const bool mEnabled = isatty(STDERR_FILENO) != 0;
    bool mShown = false;
    const std::chrono::steady_clock::time_point mSince = std::chrono::steady_clock::now();
};

}  // namespace orvel::probe
