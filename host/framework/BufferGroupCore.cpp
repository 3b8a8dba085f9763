#include "framework/BufferGroupCore.h"

#include <media/NdkMediaErrorPriv.h>
#include <media/NdkMediaFormat.h>
#include <utils/Errors.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace orvel::host {
namespace {

using android::CMediaBuffer;
using android::CMediaBufferGroup;

constexpr size_t kAlignment = 64;

[[noreturn]] __attribute__((format(printf, 1, 2))) void die(const char* text, ...) {
    va_list args;
    va_start(args, text);
    vfprintf(stderr, text, args);
    va_end(args);
    fputc('\n', stderr);
    abort();
}

}  // namespace

BufferGroup::Core::Slot::Slot(Core* owner) : core(owner), format(AMediaFormat_new()) {
    setEntries(&table, this);
}

BufferGroup::Core::Slot::~Slot() {
    freeMemory();
    AMediaFormat_delete(format);
}

bool BufferGroup::Core::Slot::resize(size_t bytes) {
    void* replacement = nullptr;
    if (posix_memalign(&replacement, kAlignment, std::max<size_t>(bytes, 1)) != 0) return false;
    free(memory);
    memory = replacement;
    size = bytes;
    return true;
}

void BufferGroup::Core::Slot::freeMemory() {
    free(memory);
    memory = nullptr;
    size = 0;
}

void BufferGroup::Core::setEntries(CMediaBuffer* table, Slot* slot) {
    table->handle = slot;
    table->release = [](void* handle) {
        auto* slot = static_cast<Slot*>(handle);
        slot->core->release(slot);
    };
    table->data = [](void* handle) { return static_cast<Slot*>(handle)->memory; };
    table->size = [](void* handle) { return static_cast<Slot*>(handle)->size; };
    table->range_offset = [](void* handle) { return static_cast<Slot*>(handle)->rangeOffset; };
    table->range_length = [](void* handle) { return static_cast<Slot*>(handle)->rangeLength; };
    table->set_range = [](void* handle, size_t offset, size_t length) {
        auto* slot = static_cast<Slot*>(handle);
        if (offset > slot->size || length > slot->size - offset) {
            die("BufferGroup: range %zu+%zu set on a buffer of %zu bytes", offset, length,
                slot->size);
        }
        slot->rangeOffset = offset;
        slot->rangeLength = length;
    };
    table->meta_data = [](void* handle) { return static_cast<Slot*>(handle)->format; };
}

BufferGroup::Core::Core() {
    mTable.handle = this;
    mTable.init = [](void* handle, size_t buffers, size_t bufferSize, size_t growthLimit) {
        return static_cast<Core*>(handle)->init(buffers, bufferSize, growthLimit);
    };
    mTable.add_buffer = [](void* handle, size_t size) {
        static_cast<Core*>(handle)->addBuffer(size);
    };
    mTable.acquire_buffer = [](void* handle, CMediaBuffer** out, bool nonBlocking, size_t size) {
        return static_cast<Core*>(handle)->acquire(out, nonBlocking, size);
    };
    mTable.has_buffers = [](void* handle) { return static_cast<Core*>(handle)->hasBuffers(); };
}

BufferGroup::Core::~Core() = default;

bool BufferGroup::Core::init(size_t buffers, size_t bufferSize, size_t growthLimit) {
    std::lock_guard<std::mutex> lock(mLock);
    mGrowthLimit = std::max(growthLimit, buffers);
    const size_t bytes = std::min(bufferSize, mMaxBufferSize);
    bool complete = true;
    for (const auto& slot : mSlots) {
        if (!slot->attached) continue;
        const bool keep = !slot->out && buffers > 0;
        if (keep && (slot->size == bytes || slot->resize(bytes))) {
            --buffers;
        } else {
            complete = complete && !keep;
            detach_l(slot.get());
        }
    }
    for (; buffers > 0 && complete; --buffers) {
        complete = attach_l(bytes) != nullptr;
    }
    mReleased.notify_all();
    return complete;
}

void BufferGroup::Core::addBuffer(size_t size) {
    std::lock_guard<std::mutex> lock(mLock);
    attach_l(std::min(size, mMaxBufferSize));
    mReleased.notify_one();
}

/** Makes one more buffer, free to be handed out. Null when there is not enough memory. */
BufferGroup::Core::Slot* BufferGroup::Core::attach_l(size_t bytes) {
    Slot* slot = nullptr;
    for (const auto& candidate : mSlots) {
        if (!candidate->attached && !candidate->out) slot = candidate.get();
    }
    if (slot == nullptr) slot = mSlots.emplace_back(std::make_unique<Slot>(this)).get();
    if (!slot->resize(bytes)) return nullptr;
    slot->attached = true;
    ++mAttached;
    return slot;
}

/** Takes a buffer out of circulation: at once, or when it comes back. */
void BufferGroup::Core::detach_l(Slot* slot) {
    slot->attached = false;
    --mAttached;
    if (!slot->out) slot->freeMemory();
}

/** Half as much again, so that slowly growing samples do not bring new memory each time. */
size_t BufferGroup::Core::grownSize_l(size_t wantedSize) const {
    const size_t grown = wantedSize < SIZE_MAX / 3 * 2 ? wantedSize + wantedSize / 2 : wantedSize;
    return std::min(grown, mMaxBufferSize);
}

BufferGroup::Core::Slot* BufferGroup::Core::findOrMake_l(size_t wantedSize, bool* outOfMemory) {
    Slot* smallest = nullptr;
    for (const auto& slot : mSlots) {
        if (slot->out || !slot->attached) continue;
        if (slot->size >= wantedSize) return slot.get();
        if (smallest == nullptr || slot->size < smallest->size) smallest = slot.get();
    }
    Slot* made = nullptr;
    if (mAttached < mGrowthLimit) {
        made = attach_l(grownSize_l(wantedSize));
    } else if (smallest == nullptr) {
        return nullptr;
    } else if (smallest->resize(grownSize_l(wantedSize))) {
        made = smallest;
    }
    *outOfMemory = made == nullptr;
    return made;
}

media_status_t BufferGroup::Core::acquire(CMediaBuffer** out, bool nonBlocking,
                                          size_t requestedSize) {
    *out = nullptr;
    Slot* slot = nullptr;
    {
        std::unique_lock<std::mutex> lock(mLock);
        ++mAcquires;
        if (!mScript.empty()) {
            const auto script = mScript.find(mAcquires);
            if (script != mScript.end()) return script->second;
        }
        for (;;) {
            bool outOfMemory = false;
            slot = findOrMake_l(std::min(requestedSize, mMaxBufferSize), &outOfMemory);
            if (slot != nullptr) break;
            if (outOfMemory) return translate_error(android::NO_MEMORY);
            if (nonBlocking) return AMEDIA_ERROR_WOULD_BLOCK;
            ++mBlocked;
            mBlockedChanged.notify_all();
            mReleased.wait(lock);
            --mBlocked;
        }
        slot->out = true;
        if (mOutstanding++ == 0) mKeepAlive = shared_from_this();
    }
    slot->rangeOffset = 0;
    slot->rangeLength = slot->size;
    AMediaFormat_clear(slot->format);
    *out = &slot->table;
    return AMEDIA_OK;
}

void BufferGroup::Core::release(Slot* slot) {
    std::shared_ptr<Core> last;  // dropped after the lock: it may be the end of this object
    std::lock_guard<std::mutex> lock(mLock);
    if (!slot->out) die("BufferGroup: a buffer was released that is not out");
    slot->out = false;
    if (--mOutstanding == 0) last = std::move(mKeepAlive);
    if (!slot->attached) {
        slot->freeMemory();
    } else if (mBlocked > 0) {
        // Any free buffer serves any waiting request, because it can be made larger.
        mReleased.notify_one();
    }
}

bool BufferGroup::Core::hasBuffers() const {
    std::lock_guard<std::mutex> lock(mLock);
    if (mAttached < mGrowthLimit) return true;
    return std::any_of(mSlots.begin(), mSlots.end(),
                       [](const auto& slot) { return slot->attached && !slot->out; });
}

size_t BufferGroup::Core::outstanding() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mOutstanding;
}

size_t BufferGroup::Core::bufferCount() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mAttached;
}

size_t BufferGroup::Core::totalBytes() const {
    std::lock_guard<std::mutex> lock(mLock);
    size_t bytes = 0;
    for (const auto& slot : mSlots)
        bytes += slot->size;
    return bytes;
}

uint64_t BufferGroup::Core::acquires() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mAcquires;
}

bool BufferGroup::Core::waitUntilBlocked(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(mLock);
    return mBlockedChanged.wait_for(lock, timeout, [&] { return mBlocked >= count; });
}

void BufferGroup::Core::failAcquire(uint64_t call, media_status_t status) {
    std::lock_guard<std::mutex> lock(mLock);
    mScript[call] = status;
}

void BufferGroup::Core::setMaxBufferSize(size_t bytes) {
    std::lock_guard<std::mutex> lock(mLock);
    mMaxBufferSize = bytes;
}

}  // namespace orvel::host
