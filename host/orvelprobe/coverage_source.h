// Which bytes of a file have been read, each counted once.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>

#include "framework/SourceDecorators.h"

namespace orvel::probe {

class CoverageSource final : public host::SourceDecorator {
  public:
    explicit CoverageSource(host::DataSource& inner) : SourceDecorator(inner) {}
    ssize_t readAt(off64_t offset, void* data, size_t size) override;

    // Distinct bytes delivered since construction or reset(). Any thread.
    uint64_t bytes() const;
    void reset();

  private:
    mutable std::mutex mMutex;
    std::map<off64_t, off64_t> mRanges;  // begin -> end, apart from one another; guarded by mMutex
    uint64_t mBytes = 0;                 // sum of their lengths; guarded by mMutex
};

}  // namespace orvel::probe
