#include "framework/DataSource.h"

#include <media/stagefright/MediaErrors.h>

namespace orvel::host {
namespace {

DataSource& self(void* handle) {
    return *static_cast<DataSource*>(handle);
}

// The plug-in is built without exceptions: one that crossed it would skip its locks and
// destructors.
template <typename Result, typename Call>
Result guarded(Result onException, Call call) noexcept {
    try {
        return call();
    } catch (...) {
        return onException;
    }
}

ssize_t readAtEntry(void* handle, off64_t offset, void* data, size_t size) {
    return guarded<ssize_t>(android::ERROR_IO,
                            [&] { return self(handle).readAt(offset, data, size); });
}

android::status_t getSizeEntry(void* handle, off64_t* size) {
    *size = -1;
    android::status_t status = guarded<android::status_t>(
            android::UNKNOWN_ERROR, [&] { return self(handle).getSize(size); });
    if (status == android::UNKNOWN_ERROR) *size = -1;
    return status;
}

uint32_t flagsEntry(void* handle) {
    return guarded<uint32_t>(0, [&] { return self(handle).flags(); });
}

bool getUriEntry(void* handle, char* uri, size_t size) {
    return guarded(false, [&] { return self(handle).getUri(uri, size); });
}

}  // namespace

DataSource::DataSource() {
    mTable.readAt = readAtEntry;
    mTable.getSize = getSizeEntry;
    mTable.flags = flagsEntry;
    mTable.getUri = getUriEntry;
    mTable.handle = this;
}

uint32_t DataSource::flags() {
    return 0;
}

bool DataSource::getUri(char*, size_t) {
    return false;
}

}  // namespace orvel::host
