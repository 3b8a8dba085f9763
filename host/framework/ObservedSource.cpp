#include "framework/ObservedSource.h"

namespace orvel::host {

ssize_t ObservedSource::readAt(off64_t offset, void* data, size_t size) {
    const ssize_t result = inner().readAt(offset, data, size);
    if (result >= 0) {
        mBytes.fetch_add(static_cast<uint64_t>(result), std::memory_order_relaxed);
    } else if (mFailures.fetch_add(1) == 0) {
        mFailedAt = offset;
        mFailure = static_cast<android::status_t>(result);
    }
    mListener(offset, static_cast<ssize_t>(size), result);
    return result;
}

android::status_t ObservedSource::getSize(off64_t* size) {
    const android::status_t status = inner().getSize(size);
    mListener(0, -1, *size);
    return status;
}

}  // namespace orvel::host
