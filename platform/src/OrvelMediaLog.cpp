#include <android/log.h>
#include <media/OrvelMediaLog.h>
#include <stdio.h>
#include <string.h>

#include "LogInternal.h"

namespace android {

namespace {

// FFmpeg's levels are steps of 8; values between two steps belong to the one above.
int priorityOf(int level) {
    if (level <= 16) return ANDROID_LOG_ERROR;
    if (level <= 24) return ANDROID_LOG_WARN;
    if (level <= 32) return ANDROID_LOG_INFO;
    if (level <= 40) return ANDROID_LOG_DEBUG;
    return ANDROID_LOG_VERBOSE;
}

}  // namespace

void OrvelMediaLog::OrvelMediaLogCallback(void* /* context */, int level, const char* format,
                                          va_list arguments) {
    if (level < 0) return;                    // "quiet"
    int priority = priorityOf(level & 0xff);  // above that is a colour
    if (!standin::logWanted(priority)) return;
    char text[1024];
    vsnprintf(text, sizeof(text), format, arguments);
    size_t length = strlen(text);
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r'))
        --length;
    text[length] = '\0';
    if (length > 0) __android_log_write(priority, "FFmpeg", text);
}

}  // namespace android
