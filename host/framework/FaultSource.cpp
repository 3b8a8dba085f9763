#include "framework/FaultSource.h"

#include <algorithm>

namespace orvel::host {

FaultSource::FaultSource(DataSource& inner, Fault fault)
    : SourceDecorator(inner), mFault(std::move(fault)) {}

FaultSource::FaultSource(DataSource& inner, SizeChange change)
    : SourceDecorator(inner), mChange(change) {}

FaultSource::FaultSource(DataSource& inner, Fault fault, SizeChange change)
    : SourceDecorator(inner), mFault(std::move(fault)), mChange(change) {}

bool FaultSource::isHit(off64_t offset, size_t size, uint64_t call) {
    const bool once = mFault->repeat == Fault::Repeat::Once;
    // The distance is taken only where it cannot overflow; the size may be anything.
    const bool covers = mFault->atOffset && offset >= 0 && offset <= *mFault->atOffset &&
                        size > static_cast<uint64_t>(*mFault->atOffset - offset);
    const bool called =
            mFault->atCall && (once ? call == *mFault->atCall : call >= *mFault->atCall);
    if (!covers && !called) return false;
    return !once || !mSpent.exchange(true);
}

bool FaultSource::sizeHasChanged(uint64_t call) const {
    return mChange && call >= mChange->atCall;
}

ssize_t FaultSource::readAt(off64_t offset, void* data, size_t size) {
    const uint64_t call = mCalls.fetch_add(1) + 1;
    if (mFault && isHit(offset, size, call)) {
        mFaults.fetch_add(1);
        if (!mFault->cutTo) return mFault->result;
        size = std::min(size, *mFault->cutTo);
    }
    if (sizeHasChanged(call) && offset >= 0) {
        if (offset >= mChange->size) return 0;
        size = static_cast<size_t>(
                std::min<uint64_t>(size, static_cast<uint64_t>(mChange->size - offset)));
    }
    return inner().readAt(offset, data, size);
}

android::status_t FaultSource::getSize(off64_t* size) {
    if (!sizeHasChanged(mCalls.load())) return inner().getSize(size);
    *size = mChange->size;
    return android::OK;
}

}  // namespace orvel::host
