// The log as macros. A source file defines LOG_TAG before its first include.
#pragma once

#include <android/log.h>

#ifndef LOG_TAG
#define LOG_TAG nullptr
#endif

#ifndef LOG_NDEBUG
#define LOG_NDEBUG 1
#endif

// Verbose lines cost nothing unless the file asks for them with LOG_NDEBUG 0; their arguments are
// checked all the same.
#if LOG_NDEBUG
#define ALOGV(...)                                                                 \
    do {                                                                           \
        if (false) __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, __VA_ARGS__); \
    } while (false)
#else
#define ALOGV(...) ((void)__android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, __VA_ARGS__))
#endif
#define ALOGD(...) ((void)__android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, __VA_ARGS__))
#define ALOGI(...) ((void)__android_log_print(ANDROID_LOG_INFO, LOG_TAG, __VA_ARGS__))
#define ALOGW(...) ((void)__android_log_print(ANDROID_LOG_WARN, LOG_TAG, __VA_ARGS__))
#define ALOGE(...) ((void)__android_log_print(ANDROID_LOG_ERROR, LOG_TAG, __VA_ARGS__))

#define LOG_ALWAYS_FATAL(...) __android_log_assert(nullptr, LOG_TAG, __VA_ARGS__)
#define LOG_ALWAYS_FATAL_IF(condition, ...)                           \
    (__builtin_expect(!!(condition), false)                           \
             ? __android_log_assert(#condition, LOG_TAG, __VA_ARGS__) \
             : (void)0)
