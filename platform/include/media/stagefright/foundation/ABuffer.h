// A block of memory. Not thread-safe, apart from its references.
#pragma once

#include <media/stagefright/foundation/ABase.h>
#include <stddef.h>
#include <stdint.h>
#include <utils/RefBase.h>

namespace android {

struct __attribute__((visibility("default"))) ABuffer : public RefBase {
    // Owns `capacity` bytes, not initialised. Without memory for them the capacity is 0 and base()
    // null.
    explicit ABuffer(size_t capacity);

    uint8_t* base() { return mData; }
    uint8_t* data() { return mData; }
    size_t capacity() const { return mCapacity; }

  protected:
    ~ABuffer() override;

  private:
    uint8_t* const mData;
    const size_t mCapacity;

    DISALLOW_EVIL_CONSTRUCTORS(ABuffer);
};

}  // namespace android
