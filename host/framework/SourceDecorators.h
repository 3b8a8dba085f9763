#pragma once

#include <chrono>

#include "framework/DataSource.h"

namespace orvel::host {

/**
 * A source in front of another. It refers to the inner source, which must outlive it, and passes on
 * whatever a derived class does not change. Decorators stack in any order.
 */
class SourceDecorator : public DataSource {
  public:
    explicit SourceDecorator(DataSource& inner) : mInner(inner) {}

    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;
    uint32_t flags() override;
    bool getUri(char* uri, size_t size) override;

  protected:
    DataSource& inner() { return mInner; }

  private:
    DataSource& mInner;
};

/** Gives at most `maxBytes` (at least 1) a read, as a slow network does. */
class ShortReadSource final : public SourceDecorator {
  public:
    ShortReadSource(DataSource& inner, size_t maxBytes);
    ssize_t readAt(off64_t offset, void* data, size_t size) override;

  private:
    const size_t mMaxBytes;
};

/** Lets a fixed time pass before each readAt; reads of several threads wait side by side. */
class DelaySource final : public SourceDecorator {
  public:
    DelaySource(DataSource& inner, std::chrono::microseconds delay);
    ssize_t readAt(off64_t offset, void* data, size_t size) override;

  private:
    const std::chrono::microseconds mDelay;
};

/** Does not tell its size: getSize stores -1 and returns ERROR_UNSUPPORTED. */
class UnknownSizeSource final : public SourceDecorator {
  public:
    explicit UnknownSizeSource(DataSource& inner) : SourceDecorator(inner) {}
    android::status_t getSize(off64_t* size) override;
};

}  // namespace orvel::host
