#pragma once

#include <atomic>
#include <functional>

#include "framework/SourceDecorators.h"

namespace orvel::host {

/** Tells a listener what the plug-in asks and gets, and notes which reads failed. */
class ObservedSource final : public SourceDecorator {
  public:
    /** `length` -1: the size was asked, `result` is the answer. Any thread. */
    using Listener = std::function<void(off64_t offset, ssize_t length, off64_t result)>;

    ObservedSource(DataSource& inner, Listener listener)
        : SourceDecorator(inner), mListener(std::move(listener)) {}
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;

    /** Bytes given so far. Any thread. */
    uint64_t bytes() const { return mBytes; }
    /** Reads that failed so far, and offset and status of the first. Any thread. */
    uint64_t failures() const { return mFailures; }
    off64_t failedAt() const { return mFailedAt; }
    android::status_t failure() const { return mFailure; }

  private:
    const Listener mListener;
    std::atomic<uint64_t> mBytes{0}, mFailures{0};
    std::atomic<off64_t> mFailedAt{0};
    std::atomic<android::status_t> mFailure{0};
};

}  // namespace orvel::host
