#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "framework/BufferGroup.h"

namespace orvel::host {

/**
 * The buffers behind a BufferGroup; see there for behaviour and threads. Owned by shared pointers:
 * the group's, those of tracks, and one that it holds on itself as long as buffers are out.
 */
class BufferGroup::Core : public std::enable_shared_from_this<BufferGroup::Core> {
  public:
    Core();
    ~Core();
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    android::CMediaBufferGroup* table() { return &mTable; }

    bool init(size_t buffers, size_t bufferSize, size_t growthLimit);
    void addBuffer(size_t size);
    media_status_t acquire(android::CMediaBuffer** out, bool nonBlocking, size_t requestedSize);
    bool hasBuffers() const;

    size_t outstanding() const;
    size_t bufferCount() const;
    size_t totalBytes() const;
    uint64_t acquires() const;
    bool waitUntilBlocked(size_t count, std::chrono::milliseconds timeout) const;
    void failAcquire(uint64_t call, media_status_t status);
    void setMaxBufferSize(size_t bytes);

  private:
    /** One CMediaBuffer. Never freed before the core, so that whoever knows its address is safe. */
    struct Slot {
        Slot(Core* owner);
        ~Slot();
        Slot(const Slot&) = delete;
        Slot& operator=(const Slot&) = delete;

        /** Replaces the memory; on failure nothing has changed. Range and content are undefined. */
        bool resize(size_t bytes);
        void freeMemory();

        android::CMediaBuffer table;
        Core* const core;
        AMediaFormat* const format;
        // Changed under the core's lock while the buffer is free; the holder reads them.
        void* memory = nullptr;
        size_t size = 0;
        // The holder's.
        size_t rangeOffset = 0;
        size_t rangeLength = 0;
        // Guarded by the core's lock. A slot that is neither out nor attached is a spare without
        // memory; one that is out and not attached stems from before the last init.
        bool out = false;
        bool attached = false;
    };

    void release(Slot* slot);
    Slot* attach_l(size_t bytes);
    void detach_l(Slot* slot);
    Slot* findOrMake_l(size_t wantedSize, bool* outOfMemory);
    size_t grownSize_l(size_t wantedSize) const;
    static void setEntries(android::CMediaBuffer* table, Slot* slot);

    android::CMediaBufferGroup mTable;  // set once in the constructor

    mutable std::mutex mLock;
    std::condition_variable mReleased;
    mutable std::condition_variable mBlockedChanged;
    // Guarded by mLock.
    std::vector<std::unique_ptr<Slot>> mSlots;
    size_t mAttached = 0;     // number of attached slots
    size_t mOutstanding = 0;  // number of slots that are out
    size_t mGrowthLimit = 0;
    size_t mMaxBufferSize = SIZE_MAX;
    size_t mBlocked = 0;  // acquire calls that wait
    uint64_t mAcquires = 0;
    std::map<uint64_t, media_status_t> mScript;
    std::shared_ptr<Core> mKeepAlive;  // set exactly while mOutstanding > 0
};

}  // namespace orvel::host
