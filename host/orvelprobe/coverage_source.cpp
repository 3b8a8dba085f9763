#include "coverage_source.h"

#include <algorithm>
#include <iterator>

namespace orvel::probe {

ssize_t CoverageSource::readAt(off64_t offset, void* data, size_t size) {
    const ssize_t result = inner().readAt(offset, data, size);
    if (result <= 0) return result;
    off64_t begin = offset, end = offset + result;
    const std::lock_guard<std::mutex> lock(mMutex);
    auto range = mRanges.upper_bound(begin);
    if (range != mRanges.begin() && std::prev(range)->second >= begin) --range;
    while (range != mRanges.end() && range->first <= end) {
        begin = std::min(begin, range->first);
        end = std::max(end, range->second);
        mBytes -= static_cast<uint64_t>(range->second - range->first);
        range = mRanges.erase(range);
    }
    mRanges.emplace_hint(range, begin, end);
    mBytes += static_cast<uint64_t>(end - begin);
    return result;
}

uint64_t CoverageSource::bytes() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mBytes;
}

void CoverageSource::reset() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mRanges.clear();
    mBytes = 0;
}

}  // namespace orvel::probe
