#include "framework/Buffer.h"

#include <utility>

namespace orvel::host {

Buffer::Buffer(Buffer&& other) noexcept : mBuffer(std::exchange(other.mBuffer, nullptr)) {}

Buffer& Buffer::operator=(Buffer&& other) noexcept {
    if (this != &other) {
        reset();
        mBuffer = std::exchange(other.mBuffer, nullptr);
    }
    return *this;
}

const uint8_t* Buffer::data() const {
    return static_cast<const uint8_t*>(mBuffer->data(mBuffer->handle)) +
           mBuffer->range_offset(mBuffer->handle);
}

size_t Buffer::size() const {
    return mBuffer->range_length(mBuffer->handle);
}

size_t Buffer::capacity() const {
    return mBuffer->size(mBuffer->handle);
}

FormatView Buffer::format() const {
    return FormatView(mBuffer->meta_data(mBuffer->handle));
}

std::optional<int64_t> Buffer::timeUs() const {
    return format().int64(kKeyTimeUs);
}

std::optional<bool> Buffer::isSync() const {
    const auto value = format().int32(kKeyIsSyncFrame);
    if (!value) return std::nullopt;
    return *value != 0;
}

std::optional<int64_t> Buffer::targetTimeUs() const {
    return format().int64(kKeyTargetTime);
}

void Buffer::reset() {
    android::CMediaBuffer* buffer = std::exchange(mBuffer, nullptr);
    if (buffer != nullptr) buffer->release(buffer->handle);
}

}  // namespace orvel::host
