// The C functions over AMediaFormat.
#define LOG_TAG "NdkMediaFormat"

#include <log/log.h>
#include <media/NdkMediaFormat.h>
#include <string.h>

#include <algorithm>

#include "MediaFormat.h"

using standin::FormatType;

AMediaFormat* AMediaFormat_new() {
    return new AMediaFormat;
}

media_status_t AMediaFormat_delete(AMediaFormat* format) {
    delete format;
    return AMEDIA_OK;
}

media_status_t AMediaFormat_copy(AMediaFormat* to, AMediaFormat* from) {
    to->copyFrom(*from);
    return AMEDIA_OK;
}

void AMediaFormat_clear(AMediaFormat* format) {
    format->clear();
}

const char* AMediaFormat_toString(AMediaFormat* format) {
    return format->toString();
}

bool AMediaFormat_getInt32(AMediaFormat* format, const char* name, int32_t* out) {
    const AMediaFormat::Entry* entry = format->find(name, FormatType::Int32);
    if (entry != nullptr) *out = entry->int32;
    return entry != nullptr;
}

bool AMediaFormat_getInt64(AMediaFormat* format, const char* name, int64_t* out) {
    const AMediaFormat::Entry* entry = format->find(name, FormatType::Int64);
    if (entry != nullptr) *out = entry->int64;
    return entry != nullptr;
}

bool AMediaFormat_getFloat(AMediaFormat* format, const char* name, float* out) {
    const AMediaFormat::Entry* entry = format->find(name, FormatType::Float);
    if (entry != nullptr) *out = entry->float32;
    return entry != nullptr;
}

bool AMediaFormat_getRect(AMediaFormat* format, const char* name, int32_t* left, int32_t* top,
                          int32_t* right, int32_t* bottom) {
    const AMediaFormat::Entry* entry = format->find(name, FormatType::Rect);
    if (entry == nullptr) return false;
    *left = entry->rect[0];
    *top = entry->rect[1];
    *right = entry->rect[2];
    *bottom = entry->rect[3];
    return true;
}

bool AMediaFormat_getString(AMediaFormat* format, const char* name, const char** out) {
    const AMediaFormat::Entry* entry = format->find(name, FormatType::String);
    if (entry == nullptr) return false;
    // The new text is made before the old one goes: whoever kept the old one holds freed memory.
    entry->lentText = std::make_unique<std::string>(entry->bytes);
    *out = entry->lentText->c_str();
    return true;
}

bool AMediaFormat_getBuffer(AMediaFormat* format, const char* name, void** data, size_t* size) {
    const AMediaFormat::Entry* entry = format->find(name, FormatType::Buffer);
    if (entry == nullptr) return false;
    *data = const_cast<char*>(entry->bytes.data());
    *size = entry->bytes.size();
    return true;
}

void AMediaFormat_setInt32(AMediaFormat* format, const char* name, int32_t value) {
    format->set(name, FormatType::Int32).int32 = value;
}

void AMediaFormat_setInt64(AMediaFormat* format, const char* name, int64_t value) {
    format->set(name, FormatType::Int64).int64 = value;
}

void AMediaFormat_setFloat(AMediaFormat* format, const char* name, float value) {
    format->set(name, FormatType::Float).float32 = value;
}

void AMediaFormat_setRect(AMediaFormat* format, const char* name, int32_t left, int32_t top,
                          int32_t right, int32_t bottom) {
    const int32_t rect[4] = {left, top, right, bottom};
    std::copy_n(rect, 4, format->set(name, FormatType::Rect).rect);
}

void AMediaFormat_setString(AMediaFormat* format, const char* name, const char* value) {
    if (value == nullptr) {
        ALOGE("null given as the text of \"%s\"", name);
        return;
    }
    format->setBytes(name, FormatType::String, value, strlen(value));
}

void AMediaFormat_setBuffer(AMediaFormat* format, const char* name, const void* data, size_t size) {
    if (data == nullptr && size > 0) {
        ALOGE("null given as the %zu bytes of \"%s\"", size, name);
        return;
    }
    format->setBytes(name, FormatType::Buffer, data != nullptr ? data : "", size);
}
