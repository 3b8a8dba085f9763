#pragma once

#include <media/stagefright/MediaErrors.h>

#include <atomic>
#include <optional>

#include "framework/SourceDecorators.h"

namespace orvel::host {

/** What goes wrong, and when. With both atOffset and atCall set, either brings the fault. */
struct Fault {
    enum class Repeat {
        Once,     // the first read concerned fails, those after it succeed
        ForGood,  // every read concerned fails; for atCall: that call and all later ones
    };

    /** A fault at byte `offset`. */
    static Fault at(off64_t offset, Repeat repeat = Repeat::ForGood,
                    android::status_t result = android::ERROR_IO) {
        return {offset, std::nullopt, repeat, result};
    }
    /** A fault at the `call`-th readAt. */
    static Fault onCall(uint64_t call, Repeat repeat = Repeat::ForGood,
                        android::status_t result = android::ERROR_IO) {
        return {std::nullopt, call, repeat, result};
    }

    /** Reads that would cover this byte fail as a whole, as over a bad sector. */
    std::optional<off64_t> atOffset = std::nullopt;
    /** The readAt call of this number fails; calls count from 1 over all threads. */
    std::optional<uint64_t> atCall = std::nullopt;
    Repeat repeat = Repeat::ForGood;
    /** What a failing read returns: a negative status, or 0 for zero bytes before the end. */
    android::status_t result = android::ERROR_IO;
    /** In place of a failure: a read that is hit gives at most so many bytes. */
    std::optional<size_t> cutTo = std::nullopt;
};

/** A size that changes while the source is in use, as a file that is being cut or written. */
struct SizeChange {
    /** The change shows from the readAt call of this number on (from 1); 0: from the beginning. */
    uint64_t atCall = 0;
    /** What getSize says from then on. Reads are cut at it when it lies before the real end. */
    off64_t size = 0;
};

/** Brings one fault, one change of the size, or both. Stack several for more. */
class FaultSource final : public SourceDecorator {
  public:
    FaultSource(DataSource& inner, Fault fault);
    FaultSource(DataSource& inner, SizeChange change);
    FaultSource(DataSource& inner, Fault fault, SizeChange change);

    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;

    /** readAt calls so far. */
    uint64_t calls() const { return mCalls.load(); }
    /** Reads that were made to fail so far; 0 tells a test that the fault was never met. */
    uint64_t faults() const { return mFaults.load(); }

  private:
    bool isHit(off64_t offset, size_t size, uint64_t call);
    bool sizeHasChanged(uint64_t call) const;

    const std::optional<Fault> mFault;
    const std::optional<SizeChange> mChange;
    // Atomic; read without a lock.
    std::atomic<uint64_t> mCalls{0};
    std::atomic<uint64_t> mFaults{0};
    std::atomic<bool> mSpent{false};  // a Repeat::Once fault has happened
};

}  // namespace orvel::host
