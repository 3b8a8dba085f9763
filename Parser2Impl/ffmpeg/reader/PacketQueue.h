#pragma once

#include <stddef.h>

#include <memory>

#include "ffmpeg/FFmpegCompat.h"

namespace orvel {

// A first-in first-out queue of packet pointers that allocates only while it grows past its longest
// length so far. Owns nothing; no lock.
class PacketQueue {
  public:
    bool empty() const { return mCount == 0; }
    size_t size() const { return mCount; }

    AVPacket* front() const { return mSlots[mHead]; }  // not when empty

    void push(AVPacket* packet) {
        if (mCount == mCapacity) grow();
        mSlots[(mHead + mCount) & (mCapacity - 1)] = packet;
        ++mCount;
    }

    AVPacket* pop() {  // not when empty
        AVPacket* packet = mSlots[mHead];
        mHead = (mHead + 1) & (mCapacity - 1);
        --mCount;
        return packet;
    }

  private:
    static constexpr size_t kFirstCapacity = 128;  // a power of two, as all that follow

    void grow() {
        const size_t capacity = mCapacity == 0 ? kFirstCapacity : 2 * mCapacity;
        std::unique_ptr<AVPacket*[]> slots(new AVPacket*[capacity]);
        for (size_t i = 0; i < mCount; ++i)
            slots[i] = mSlots[(mHead + i) & (mCapacity - 1)];
        mSlots = std::move(slots);
        mCapacity = capacity;
        mHead = 0;
    }

    std::unique_ptr<AVPacket*[]> mSlots;
    size_t mCapacity = 0;
    size_t mHead = 0;
    size_t mCount = 0;
};

}  // namespace orvel
