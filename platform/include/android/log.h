// The platform log. Every function may be called from any thread; lines are written whole.
// A line that neither the level nor a hook asks for (<standin/LogControl.h>) is not even
// formatted.
#pragma once

#include <stdarg.h>

#pragma GCC visibility push(default)
extern "C" {

typedef enum android_LogPriority {
    ANDROID_LOG_UNKNOWN = 0,
    ANDROID_LOG_DEFAULT,
    ANDROID_LOG_VERBOSE,
    ANDROID_LOG_DEBUG,
    ANDROID_LOG_INFO,
    ANDROID_LOG_WARN,
    ANDROID_LOG_ERROR,
    ANDROID_LOG_FATAL,
    ANDROID_LOG_SILENT,
} android_LogPriority;

// Each returns the length of the text, or a negative errno when the line was not wanted.

// The text is cut at 4000 bytes.
int __android_log_write(int priority, const char* tag, const char* text);

// The formatted text is cut at 1023 bytes.
int __android_log_print(int priority, const char* tag, const char* format, ...)
        __attribute__((__format__(printf, 3, 4)));
int __android_log_vprint(int priority, const char* tag, const char* format, va_list arguments)
        __attribute__((__format__(printf, 3, 0)));

// Logs at fatal priority, whatever the level, and aborts. Without a format the text is
// "Assertion failed: CONDITION".
void __android_log_assert(const char* condition, const char* tag, const char* format, ...)
        __attribute__((__noreturn__, __format__(printf, 3, 4)));

}  // extern "C"
#pragma GCC visibility pop
