#define LOG_TAG "Parser2Creater"
#include "OrvelMetaData.h"

#include <log/log.h>
#include <media/stagefright/foundation/ADebug.h>

#include "MetaKeyTables.h"

namespace orvel {

using android::AMessage;
using android::String8;

namespace {

// The body of every set and find operation: hands the framework's name of the key to use, or logs
// that the table does not know the key.
template <typename Use>
bool withName(const MetaKeyTable& table, uint32_t key, const char* operation, Use use) {
    const char* name = table.findName(key);
    if (name == nullptr) {
        ALOGW("Can't %s when  key is %#x", operation, key);
        return false;
    }
    use(name);
    return true;
}

// The same for bytes, which have two tables, and another priority of the line.
template <typename Use>
bool withDataName(uint32_t key, const char* operation, Use use) {
    const char* name = kCsdKeys.findName(key);
    if (name == nullptr) name = kBufferKeys.findName(key);
    if (name == nullptr) {
        ALOGI("Can't %s when  key is %#x", operation, key);
        return false;
    }
    use(name);
    return true;
}

}  // namespace

OrvelMetaData::OrvelMetaData()
    : mFormat(AMediaFormat_new()), mMessage(new AMessage), mOwnsFormat(true) {}

OrvelMetaData::OrvelMetaData(const OrvelMetaData& other) : OrvelMetaData() {
    copyEntriesFrom(other);
}

OrvelMetaData::OrvelMetaData(AMediaFormat* format)
    : mFormat(format), mMessage(nullptr), mOwnsFormat(false) {}

OrvelMetaData::~OrvelMetaData() {
    if (mOwnsFormat) AMediaFormat_delete(mFormat);
}

void OrvelMetaData::clear() {
    AMediaFormat_clear(mFormat);
}

bool OrvelMetaData::remove(uint32_t /*key*/) {
    return false;
}

bool OrvelMetaData::setCString(uint32_t key, const char* value) {
    return withName(kCStringKeys, key, "setString",
                    [&](const char* name) { AMediaFormat_setString(mFormat, name, value); });
}

bool OrvelMetaData::setInt32(uint32_t key, int32_t value) {
    // Written for every sample, so before the search: neither key is in the table.
    if (key == kKeyIsSyncFrame) {
        AMediaFormat_setInt32(mFormat, "is-sync-frame", value != 0 ? 1 : 0);
        return true;
    }
    if (key == kKeyIsDefault && value != 0) {
        AMediaFormat_setInt32(mFormat, "is-default", 1);
        return true;
    }
    return withName(kInt32Keys, key, "setInt32",
                    [&](const char* name) { AMediaFormat_setInt32(mFormat, name, value); });
}

bool OrvelMetaData::setInt64(uint32_t key, int64_t value) {
    return withName(kInt64Keys, key, "setInt64",
                    [&](const char* name) { AMediaFormat_setInt64(mFormat, name, value); });
}

bool OrvelMetaData::setFloat(uint32_t key, float value) {
    return withName(kFloatKeys, key, "setFloat",
                    [&](const char* name) { AMediaFormat_setFloat(mFormat, name, value); });
}

bool OrvelMetaData::setPointer(uint32_t key, void* value) {
    return withName(kPointerKeys, key, "setPointer", [&](const char* name) {
        CHECK(mMessage != nullptr);
        mMessage->setPointer(name, value);
    });
}

bool OrvelMetaData::setRect(uint32_t key, int32_t left, int32_t top, int32_t right,
                            int32_t bottom) {
    return withName(kRectKeys, key, "setRect", [&](const char* name) {
        AMediaFormat_setRect(mFormat, name, left, top, right, bottom);
    });
}

bool OrvelMetaData::findCString(uint32_t key, const char** value) const {
    return withName(kCStringKeys, key, "findCString",
                    [&](const char* name) { AMediaFormat_getString(mFormat, name, value); });
}

bool OrvelMetaData::findInt32(uint32_t key, int32_t* value) const {
    return withName(kInt32Keys, key, "findInt32",
                    [&](const char* name) { AMediaFormat_getInt32(mFormat, name, value); });
}

bool OrvelMetaData::findInt64(uint32_t key, int64_t* value) const {
    return withName(kInt64Keys, key, "findInt64",
                    [&](const char* name) { AMediaFormat_getInt64(mFormat, name, value); });
}

bool OrvelMetaData::findFloat(uint32_t key, float* value) const {
    return withName(kFloatKeys, key, "findFloat",
                    [&](const char* name) { AMediaFormat_getFloat(mFormat, name, value); });
}

bool OrvelMetaData::findPointer(uint32_t key, void** value) const {
    return withName(kPointerKeys, key, "findPointer", [&](const char* name) {
        CHECK(mMessage != nullptr);
        mMessage->findPointer(name, value);
    });
}

bool OrvelMetaData::findRect(uint32_t key, int32_t* left, int32_t* top, int32_t* right,
                             int32_t* bottom) const {
    return withName(kRectKeys, key, "findRect", [&](const char* name) {
        AMediaFormat_getRect(mFormat, name, left, top, right, bottom);
    });
}

bool OrvelMetaData::setData(uint32_t key, uint32_t /*type*/, const void* data, size_t size) {
    return withDataName(key, "setData", [&](const char* name) {
        AMediaFormat_setBuffer(mFormat, name, data, size);
    });
}

bool OrvelMetaData::findData(uint32_t key, uint32_t* /*type*/, const void** data,
                             size_t* size) const {
    return withDataName(key, "findData", [&](const char* name) {
        // The platform's getter takes the address of a pointer to non-const; nobody writes
        // through it.
        AMediaFormat_getBuffer(mFormat, name, const_cast<void**>(data), size);
    });
}

bool OrvelMetaData::hasData(uint32_t /*key*/) const {
    return false;
}

String8 OrvelMetaData::toString() const {
    return String8(AMediaFormat_toString(mFormat));
}

void OrvelMetaData::dumpToLog() const {
    ALOGI("dumpToLog: %s", AMediaFormat_toString(mFormat));
}

AMediaFormat* OrvelMetaData::getHandle() const {
    return mFormat;
}

void OrvelMetaData::copyEntriesFrom(const OrvelMetaData& source) {
    if (source.mFormat != mFormat) AMediaFormat_copy(mFormat, source.mFormat);
}

}  // namespace orvel
