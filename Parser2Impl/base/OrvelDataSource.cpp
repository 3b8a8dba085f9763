#include "OrvelDataSource.h"

namespace orvel {

OrvelDataSource::OrvelDataSource(android::CDataSource* source) : mSource(source) {}

OrvelDataSource::~OrvelDataSource() = default;

ssize_t OrvelDataSource::readAt(off64_t offset, void* data, size_t size) {
    return mSource->readAt(mSource->handle, offset, data, size);
}

android::status_t OrvelDataSource::getSize(off64_t* size) {
    return mSource->getSize(mSource->handle, size);
}

uint32_t OrvelDataSource::flags() {
    return mSource->flags(mSource->handle);
}

bool OrvelDataSource::getUri(char* uri, size_t size) {
    return mSource->getUri(mSource->handle, uri, size);
}

}  // namespace orvel
