#define LOG_TAG "String8"

#include <log/log.h>
#include <stdio.h>
#include <utils/String8.h>

namespace android {

const char* String8::checked(const char* text) {
    LOG_ALWAYS_FATAL_IF(text == nullptr, "null given for a text");
    return text;
}

String8 String8::format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    String8 result = formatV(format, arguments);
    va_end(arguments);
    return result;
}

String8 String8::formatV(const char* format, va_list arguments) {
    String8 result;
    result.appendFormatV(format, arguments);
    return result;
}

status_t String8::appendFormat(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    status_t status = appendFormatV(format, arguments);
    va_end(arguments);
    return status;
}

status_t String8::appendFormatV(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    int length = vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) return UNKNOWN_ERROR;
    size_t before = mText.size();
    mText.resize(before + static_cast<size_t>(length) + 1);  // one for vsnprintf's zero
    vsnprintf(&mText[before], static_cast<size_t>(length) + 1, format, arguments);
    mText.pop_back();
    return OK;
}

}  // namespace android
