#include "framework/CountingSource.h"

namespace orvel::host {
namespace {

constexpr off64_t kNoPosition = -1;

}  // namespace

CountingSource::CountingSource(DataSource& inner, bool record)
    : SourceDecorator(inner), mRecord(record), mNextOffset(kNoPosition) {}

ssize_t CountingSource::readAt(off64_t offset, void* data, size_t size) {
    const ssize_t result = inner().readAt(offset, data, size);
    const off64_t delivered = result > 0 ? result : 0;
    const off64_t expected = mNextOffset.exchange(offset + delivered);
    if (expected != kNoPosition && expected != offset) mJumps.fetch_add(1);
    mBytes.fetch_add(static_cast<uint64_t>(delivered));
    mCalls.fetch_add(1);
    if (mRecord) {
        std::lock_guard<std::mutex> lock(mLock);
        mReads.push_back({offset, size, result});
    }
    return result;
}

android::status_t CountingSource::getSize(off64_t* size) {
    mSizeCalls.fetch_add(1);
    return inner().getSize(size);
}

SourceCounts CountingSource::counts() const {
    return {mCalls.load(), mJumps.load(), mBytes.load(), mSizeCalls.load()};
}

std::vector<CountingSource::Read> CountingSource::reads() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mReads;
}

void CountingSource::reset() {
    mCalls = 0;
    mJumps = 0;
    mBytes = 0;
    mSizeCalls = 0;
    mNextOffset = kNoPosition;
    std::lock_guard<std::mutex> lock(mLock);
    mReads.clear();
}

}  // namespace orvel::host
