#pragma once

#include <vector>

#include "framework/DataSource.h"

namespace orvel::host {

/** Bytes in memory: owned, or borrowed from the caller for the life of the source. */
class MemorySource final : public DataSource {
  public:
    explicit MemorySource(std::vector<uint8_t> bytes);
    /** Borrows: `data` must stay valid and unchanged as long as the source lives. */
    MemorySource(const void* data, size_t size);

    /** Fills `size` bytes unless the memory ends. A negative offset: BAD_VALUE. */
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;

  private:
    // Set once in the constructor.
    std::vector<uint8_t> mOwned;
    const uint8_t* mData;
    size_t mSize;
};

}  // namespace orvel::host
