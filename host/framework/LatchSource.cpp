#include "framework/LatchSource.h"

namespace orvel::host {

LatchSource::~LatchSource() {
    release();
    std::unique_lock<std::mutex> lock(mLock);
    mChanged.wait(lock, [this] { return mInside == 0; });
}

void LatchSource::armAtOffset(off64_t offset) {
    std::lock_guard<std::mutex> lock(mLock);
    mOffset = offset;
}

void LatchSource::armAtCall(uint64_t call) {
    std::lock_guard<std::mutex> lock(mLock);
    mCall = call;
}

void LatchSource::release() {
    std::lock_guard<std::mutex> lock(mLock);
    mOffset.reset();
    mCall.reset();
    ++mReleases;
    mBlocked = 0;
    mReleased.notify_all();
}

void LatchSource::step() {
    std::lock_guard<std::mutex> lock(mLock);
    mCall = mCalls + 1;
    ++mReleases;
    mBlocked = 0;
    mReleased.notify_all();
}

bool LatchSource::waitUntilBlocked(size_t reads, std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, timeout, [&] { return mBlocked >= reads; });
}

uint64_t LatchSource::calls() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mCalls;
}

bool LatchSource::isHeld_l(off64_t offset, size_t size, uint64_t call) const {
    if (mCall && call >= *mCall) return true;
    if (!mOffset || offset < 0) return false;
    return offset >= *mOffset || size > static_cast<uint64_t>(*mOffset - offset);
}

ssize_t LatchSource::readAt(off64_t offset, void* data, size_t size) {
    {
        std::unique_lock<std::mutex> lock(mLock);
        ++mInside;
        if (isHeld_l(offset, size, ++mCalls)) {
            const uint64_t releases = mReleases;
            ++mBlocked;
            mChanged.notify_all();
            mReleased.wait(lock, [&] { return mReleases != releases; });
        }
    }
    // Leaves by destruction, so that an inner source that throws does not hang the destructor.
    struct Leave {
        LatchSource& latch;
        ~Leave() {
            std::lock_guard<std::mutex> lock(latch.mLock);
            --latch.mInside;
            latch.mChanged.notify_all();
        }
    } leave{*this};
    return inner().readAt(offset, data, size);
}

}  // namespace orvel::host
