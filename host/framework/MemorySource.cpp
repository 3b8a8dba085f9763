#include "framework/MemorySource.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvel::host {

MemorySource::MemorySource(std::vector<uint8_t> bytes)
    : mOwned(std::move(bytes)), mData(mOwned.data()), mSize(mOwned.size()) {}

MemorySource::MemorySource(const void* data, size_t size)
    : mData(static_cast<const uint8_t*>(data)), mSize(size) {}

ssize_t MemorySource::readAt(off64_t offset, void* data, size_t size) {
    if (offset < 0) return android::BAD_VALUE;
    if (static_cast<uint64_t>(offset) >= mSize) return 0;
    const size_t count = std::min(size, mSize - static_cast<size_t>(offset));
    if (count > 0) memcpy(data, mData + offset, count);
    return static_cast<ssize_t>(count);
}

android::status_t MemorySource::getSize(off64_t* size) {
    *size = static_cast<off64_t>(mSize);
    return android::OK;
}

}  // namespace orvel::host
