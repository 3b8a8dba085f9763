#include "framework/Track.h"

#include <media/NdkMediaErrorPriv.h>

#include <cstdlib>
#include <utility>

namespace orvel::host {

Track::~Track() {
    reset();
}

Track::Track(Track&& other) noexcept
    : mTable(std::exchange(other.mTable, nullptr)),
      mGroup(std::move(other.mGroup)),
      mStarted(std::exchange(other.mStarted, false)) {}

Track& Track::operator=(Track&& other) noexcept {
    if (this != &other) {
        reset();
        mTable = std::exchange(other.mTable, nullptr);
        mGroup = std::move(other.mGroup);
        mStarted = std::exchange(other.mStarted, false);
    }
    return *this;
}

void Track::reset() {
    if (mTable == nullptr) return;
    mTable->free(mTable->data);
    ::free(mTable);  // the plug-in made the table with malloc
    mTable = nullptr;
    mGroup.reset();
}

android::status_t Track::start(const BufferGroup& group) {
    // The earlier share goes after the call, in which the plug-in lets go of the earlier group.
    std::shared_ptr<BufferGroup::Core> previous = std::exchange(mGroup, group.core());
    const auto status = reverse_translate_error(mTable->start(mTable->data, group.table()));
    mStarted = status == android::OK;
    return status;
}

android::status_t Track::stop() {
    mStarted = false;
    return reverse_translate_error(mTable->stop(mTable->data));
}

android::status_t Track::format(Format* format) const {
    return reverse_translate_error(mTable->getFormat(mTable->data, format->get()));
}

ReadResult Track::read(const ReadOptions& options) {
    android::CMediaBuffer* buffer = nullptr;
    ReadResult result;
    result.status = reverse_translate_error(
            mTable->read(mTable->data, &buffer, options.word(), options.seekTimeUs()));
    if (result.status == android::OK) result.buffer = Buffer(buffer);
    return result;
}

bool Track::supportsNonBlockingRead() const {
    return mTable->supportsNonBlockingRead(mTable->data);
}

}  // namespace orvel::host
