#pragma once

#include <cstdint>

namespace orvel::bench {

/** What the process asked of the heap while counting was on, over all threads and libraries. */
struct HeapCounts {
    uint64_t allocations = 0;  // calls that gave memory; a realloc is one
    int64_t peakBytes = 0;     // most bytes alive at once beyond those alive when counting began
};

/**
 * Switches the counting on or off; it begins at zero each time. This executable puts its own
 * malloc, free and their kin before the C library's. Off, a call costs one look at a flag; timed
 * turns run with it off. Not while other threads allocate.
 */
void countHeap(bool on);

/** Any thread. */
HeapCounts heapCounts();

}  // namespace orvel::bench
