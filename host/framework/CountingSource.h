#pragma once

#include <atomic>
#include <mutex>
#include <vector>

#include "framework/SourceDecorators.h"

namespace orvel::host {

/** What a source was asked for so far. */
struct SourceCounts {
    uint64_t calls = 0;      // readAt calls that have returned
    uint64_t jumps = 0;      // of these, reads that do not begin where the previous one ended
    uint64_t bytes = 0;      // bytes delivered
    uint64_t sizeCalls = 0;  // getSize calls
};

/**
 * Counts what the plug-in costs the source. Counters are atomic and may be read while reads run;
 * reads count in the order in which they return. The first read is never a jump.
 */
class CountingSource final : public SourceDecorator {
  public:
    struct Read {
        off64_t offset;
        size_t length;   // as asked
        ssize_t result;  // as readAt returned it
    };

    /** `record`: keep every read for reads(); memory grows with each, so for tools only. */
    explicit CountingSource(DataSource& inner, bool record = false);

    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;

    /** A consistent view when no read is running; otherwise each counter on its own is right. */
    SourceCounts counts() const;
    /** Every read so far, in the order of their returns; empty unless recording. Any thread. */
    std::vector<Read> reads() const;
    /** Sets every counter to 0, forgets the record and the position. Not while reads are running.
     */
    void reset();

  private:
    const bool mRecord;
    // Atomic; read without a lock.
    std::atomic<uint64_t> mCalls{0};
    std::atomic<uint64_t> mJumps{0};
    std::atomic<uint64_t> mBytes{0};
    std::atomic<uint64_t> mSizeCalls{0};
    std::atomic<off64_t> mNextOffset;
    mutable std::mutex mLock;
    std::vector<Read> mReads;  // guarded by mLock
};

}  // namespace orvel::host
