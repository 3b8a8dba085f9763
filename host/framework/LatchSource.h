#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "framework/SourceDecorators.h"

namespace orvel::host {

/**
 * Blocks reads at a chosen point until it is told to go on: a source that hangs, for tests that
 * must not depend on time. Reads pass freely until an arm call.
 */
class LatchSource final : public SourceDecorator {
  public:
    explicit LatchSource(DataSource& inner) : SourceDecorator(inner) {}
    /** Releases blocked reads and waits until they have left. */
    ~LatchSource() override;

    /** From now on reads that reach byte `offset` or beyond block. Any thread. */
    void armAtOffset(off64_t offset);
    /** From now on the readAt call of this number (from 1, over all threads) and later ones block.
     */
    void armAtCall(uint64_t call);
    /** Lets every blocked read go on; the next one blocks again. Any thread. */
    void step();
    /** Disarms, and lets every blocked read go on. Any thread; nothing happens when not armed. */
    void release();

    /** Waits until `reads` reads are blocked; false when that took longer than `timeout`. */
    bool waitUntilBlocked(size_t reads = 1,
                          std::chrono::milliseconds timeout = std::chrono::seconds(60));

    /** readAt calls so far, blocked ones included. */
    uint64_t calls() const;

    ssize_t readAt(off64_t offset, void* data, size_t size) override;

  private:
    bool isHeld_l(off64_t offset, size_t size, uint64_t call) const;

    mutable std::mutex mLock;  // never held while the inner source is called
    std::condition_variable mReleased;
    std::condition_variable mChanged;  // a read blocked, or left
    // Guarded by mLock.
    std::optional<off64_t> mOffset;
    std::optional<uint64_t> mCall;
    uint64_t mCalls = 0;
    uint64_t mReleases = 0;  // a read that blocked under an earlier arm call leaves at its release
    size_t mBlocked = 0;
    size_t mInside = 0;
};

}  // namespace orvel::host
