#include "OrvelMediaBuffer.h"

#include <media/NdkMediaErrorPriv.h>

namespace orvel {

using android::MediaBufferGroupHelper;
using android::MediaBufferHelper;

OrvelMediaBuffer::OrvelMediaBuffer(MediaBufferHelper* buffer)
    : mBuffer(buffer), mMetaData(new OrvelMetaData(buffer->meta_data())) {}

OrvelMediaBuffer::~OrvelMediaBuffer() = default;

void OrvelMediaBuffer::release() {
    mBuffer->release();
}

void* OrvelMediaBuffer::data() const {
    return mBuffer->data();
}

size_t OrvelMediaBuffer::size() const {
    return mBuffer->size();
}

size_t OrvelMediaBuffer::range_offset() const {
    return mBuffer->range_offset();
}

size_t OrvelMediaBuffer::range_length() const {
    return mBuffer->range_length();
}

void OrvelMediaBuffer::set_range(size_t offset, size_t length) {
    mBuffer->set_range(offset, length);
}

OrvelMetaData& OrvelMediaBuffer::meta_data() {
    return *mMetaData;
}

MediaBufferHelper* OrvelMediaBuffer::getBuffer() const {
    return mBuffer;
}

OrvelMediaBufferGroup::OrvelMediaBufferGroup(MediaBufferGroupHelper* group) : mGroup(group) {}

OrvelMediaBufferGroup::~OrvelMediaBufferGroup() = default;

bool OrvelMediaBufferGroup::init(size_t buffers, size_t bufferSize, size_t growthLimit) {
    return mGroup->init(buffers, bufferSize, growthLimit);
}

void OrvelMediaBufferGroup::add_buffer(size_t size) {
    mGroup->add_buffer(size);
}

android::status_t OrvelMediaBufferGroup::acquire_buffer(IOrvelMediaBuffer** out, bool nonBlocking,
                                                        size_t requestedSize) {
    MediaBufferHelper* helper = nullptr;
    const media_status_t status = mGroup->acquire_buffer(&helper, nonBlocking, requestedSize);
    if (status != AMEDIA_OK || helper == nullptr) {
        *out = nullptr;
        return reverse_translate_error(status);
    }
    // Runs for every sample: the entry is made for a buffer's first use alone.
    std::unique_ptr<OrvelMediaBuffer>& wrapper = mWrappers[helper];
    // A group that replaces a buffer by a larger one may make the new one where the old one was:
    // the same helper then, with another format.
    if (wrapper == nullptr || wrapper->meta_data().getHandle() != helper->meta_data()) {
        wrapper = std::make_unique<OrvelMediaBuffer>(helper);
    }
    *out = wrapper.get();
    wrapper->meta_data().clear();  // nothing of the buffer's previous use may survive
    return reverse_translate_error(status);
}

bool OrvelMediaBufferGroup::has_buffers() {
    return mGroup->has_buffers();
}

}  // namespace orvel
