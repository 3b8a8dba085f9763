// What the readers of untrusted boxes need of a file.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace orvel {

// Random access to bytes. Used by one thread at a time; a call may block on I/O.
class ByteSource {
  public:
    virtual ~ByteSource() = default;

    // Reads up to size bytes at offset. Returns how many were read, fewer than asked for whatever
    // reason, 0 at or past the end, or a negative value on an error.
    virtual ssize_t readAt(int64_t offset, void* data, size_t size) = 0;

    // Length in bytes, negative when unknown.
    virtual int64_t size() = 0;
};

}  // namespace orvel
