#include "framework/SourceDecorators.h"

#include <media/stagefright/MediaErrors.h>

#include <algorithm>
#include <thread>

namespace orvel::host {

ssize_t SourceDecorator::readAt(off64_t offset, void* data, size_t size) {
    return mInner.readAt(offset, data, size);
}

android::status_t SourceDecorator::getSize(off64_t* size) {
    return mInner.getSize(size);
}

uint32_t SourceDecorator::flags() {
    return mInner.flags();
}

bool SourceDecorator::getUri(char* uri, size_t size) {
    return mInner.getUri(uri, size);
}

// Zero would turn every read into an end of file.
ShortReadSource::ShortReadSource(DataSource& inner, size_t maxBytes)
    : SourceDecorator(inner), mMaxBytes(std::max<size_t>(maxBytes, 1)) {}

ssize_t ShortReadSource::readAt(off64_t offset, void* data, size_t size) {
    return inner().readAt(offset, data, std::min(size, mMaxBytes));
}

DelaySource::DelaySource(DataSource& inner, std::chrono::microseconds delay)
    : SourceDecorator(inner), mDelay(delay) {}

ssize_t DelaySource::readAt(off64_t offset, void* data, size_t size) {
    std::this_thread::sleep_for(mDelay);
    return inner().readAt(offset, data, size);
}

android::status_t UnknownSizeSource::getSize(off64_t* size) {
    *size = -1;
    return android::ERROR_UNSUPPORTED;
}

}  // namespace orvel::host
