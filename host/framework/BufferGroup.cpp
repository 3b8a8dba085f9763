#include "framework/BufferGroup.h"

#include <utility>

#include "framework/BufferGroupCore.h"

namespace orvel::host {

BufferGroup::BufferGroup() : mCore(std::make_shared<Core>()) {}
BufferGroup::~BufferGroup() = default;
BufferGroup::BufferGroup(BufferGroup&& other) noexcept = default;
BufferGroup& BufferGroup::operator=(BufferGroup&& other) noexcept = default;

android::CMediaBufferGroup* BufferGroup::table() const {
    return mCore->table();
}

bool BufferGroup::init(size_t buffers, size_t bufferSize, size_t growthLimit) {
    return mCore->init(buffers, bufferSize, growthLimit);
}

void BufferGroup::addBuffer(size_t size) {
    mCore->addBuffer(size);
}

media_status_t BufferGroup::acquire(android::CMediaBuffer** out, bool nonBlocking,
                                    size_t requestedSize) {
    return mCore->acquire(out, nonBlocking, requestedSize);
}

bool BufferGroup::hasBuffers() const {
    return mCore->hasBuffers();
}

size_t BufferGroup::outstanding() const {
    return mCore->outstanding();
}

size_t BufferGroup::bufferCount() const {
    return mCore->bufferCount();
}

size_t BufferGroup::totalBytes() const {
    return mCore->totalBytes();
}

uint64_t BufferGroup::acquires() const {
    return mCore->acquires();
}

bool BufferGroup::waitUntilBlocked(size_t count, std::chrono::milliseconds timeout) const {
    return mCore->waitUntilBlocked(count, timeout);
}

void BufferGroup::failAcquire(uint64_t call, media_status_t status) {
    mCore->failAcquire(call, status);
}

void BufferGroup::setMaxBufferSize(size_t bytes) {
    mCore->setMaxBufferSize(bytes);
}

}  // namespace orvel::host
