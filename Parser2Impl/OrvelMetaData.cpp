#define LOG_TAG "Parser2Creater"
#include "OrvelMetaData.h"

#include <log/log.h>
#include <media/stagefright/foundation/ADebug.h>

#include "MetaKeyTables.h"

namespace orvel {

using android::AMessage;
using android::String8;

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
    const char* name = kCStringKeys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't setString when  key is %#x", key);
        return false;
    }
    AMediaFormat_setString(mFormat, name, value);
    return true;
}

bool OrvelMetaData::setInt32(uint32_t key, int32_t value) {
    const char* name = kInt32Keys.findName(key);
    if (name != nullptr) {
        AMediaFormat_setInt32(mFormat, name, value);
        return true;
    }
    if (key == kKeyIsSyncFrame) {
        AMediaFormat_setInt32(mFormat, "is-sync-frame", value != 0 ? 1 : 0);
        return true;
    }
    if (key == kKeyIsDefault && value != 0) {
        AMediaFormat_setInt32(mFormat, "is-default", 1);
        return true;
    }
    ALOGW("Can't setInt32 when  key is %#x", key);
    return false;
}

bool OrvelMetaData::setInt64(uint32_t key, int64_t value) {
    const char* name = kInt64Keys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't setInt64 when  key is %#x", key);
        return false;
    }
    AMediaFormat_setInt64(mFormat, name, value);
    return true;
}

bool OrvelMetaData::setFloat(uint32_t key, float value) {
    const char* name = kFloatKeys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't setFloat when  key is %#x", key);
        return false;
    }
    AMediaFormat_setFloat(mFormat, name, value);
    return true;
}

bool OrvelMetaData::setPointer(uint32_t key, void* value) {
    const char* name = kPointerKeys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't setPointer when  key is %#x", key);
        return false;
    }
    CHECK(mMessage != nullptr);
    mMessage->setPointer(name, value);
    return true;
}

bool OrvelMetaData::setRect(uint32_t key, int32_t left, int32_t top, int32_t right,
                            int32_t bottom) {
    const char* name = kRectKeys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't setRect when  key is %#x", key);
        return false;
    }
    AMediaFormat_setRect(mFormat, name, left, top, right, bottom);
    return true;
}

bool OrvelMetaData::findCString(uint32_t key, const char** value) const {
    const char* name = kCStringKeys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't findCString when  key is %#x", key);
        return false;
    }
    AMediaFormat_getString(mFormat, name, value);
    return true;
}

bool OrvelMetaData::findInt32(uint32_t key, int32_t* value) const {
    const char* name = kInt32Keys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't findInt32 when  key is %#x", key);
        return false;
    }
    AMediaFormat_getInt32(mFormat, name, value);
    return true;
}

bool OrvelMetaData::findInt64(uint32_t key, int64_t* value) const {
    const char* name = kInt64Keys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't findInt64 when  key is %#x", key);
        return false;
    }
    AMediaFormat_getInt64(mFormat, name, value);
    return true;
}

bool OrvelMetaData::findFloat(uint32_t key, float* value) const {
    const char* name = kFloatKeys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't findFloat when  key is %#x", key);
        return false;
    }
    AMediaFormat_getFloat(mFormat, name, value);
    return true;
}

bool OrvelMetaData::findPointer(uint32_t key, void** value) const {
    const char* name = kPointerKeys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't findPointer when  key is %#x", key);
        return false;
    }
    CHECK(mMessage != nullptr);
    mMessage->findPointer(name, value);
    return true;
}

bool OrvelMetaData::findRect(uint32_t key, int32_t* left, int32_t* top, int32_t* right,
                             int32_t* bottom) const {
    const char* name = kRectKeys.findName(key);
    if (name == nullptr) {
        ALOGW("Can't findRect when  key is %#x", key);
        return false;
    }
    AMediaFormat_getRect(mFormat, name, left, top, right, bottom);
    return true;
}

bool OrvelMetaData::setData(uint32_t key, uint32_t /*type*/, const void* data, size_t size) {
    const char* name = kCsdKeys.findName(key);
    if (name == nullptr) name = kBufferKeys.findName(key);
    if (name == nullptr) {
        ALOGI("Can't setData when  key is %#x", key);
        return false;
    }
    AMediaFormat_setBuffer(mFormat, name, data, size);
    return true;
}

bool OrvelMetaData::findData(uint32_t key, uint32_t* /*type*/, const void** data,
                             size_t* size) const {
    const char* name = kCsdKeys.findName(key);
    if (name == nullptr) name = kBufferKeys.findName(key);
    if (name == nullptr) {
        ALOGI("Can't findData when  key is %#x", key);
        return false;
    }
    // The platform's getter takes the address of a pointer to non-const; nobody writes through it.
    AMediaFormat_getBuffer(mFormat, name, const_cast<void**>(data), size);
    return true;
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
