// A block of memory with a valid range. Not thread-safe, apart from its references.
#pragma once

#include <media/stagefright/foundation/ABase.h>
#include <stddef.h>
#include <stdint.h>
#include <utils/RefBase.h>

namespace android {

#pragma GCC visibility push(default)

// Inside, since a class keeps the visibility of its first declaration.
struct AMessage;

struct ABuffer : public RefBase {
    // Owns `capacity` bytes, not initialised, all of them in the range. Without memory for them the
    // capacity is 0 and base() null.
    explicit ABuffer(size_t capacity);
    // Over memory of the caller, which must outlive the buffer.
    ABuffer(void* data, size_t capacity);

    // A copy of the bytes; null when there is no memory for it.
    static sp<ABuffer> CreateAsCopy(const void* data, size_t capacity);

    uint8_t* base() { return mData; }
    uint8_t* data() { return mData + mRangeOffset; }
    size_t capacity() const { return mCapacity; }
    size_t size() const { return mRangeLength; }
    size_t offset() const { return mRangeOffset; }

    // A range that is not inside the capacity aborts.
    void setRange(size_t offset, size_t size);

    // Made on first use.
    sp<AMessage> meta();

  protected:
    ~ABuffer() override;

  private:
    uint8_t* mData;
    size_t mCapacity;
    size_t mRangeOffset = 0;
    size_t mRangeLength;
    const bool mOwnsData;
    sp<AMessage> mMeta;

    DISALLOW_EVIL_CONSTRUCTORS(ABuffer);
};

#pragma GCC visibility pop

}  // namespace android
