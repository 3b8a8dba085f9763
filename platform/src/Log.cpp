#include <android/log.h>
#include <errno.h>
#include <standin/LogControl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <shared_mutex>

#include "LogInternal.h"

namespace {

constexpr size_t kMaxFormatted = 1024;  // with the zero
constexpr size_t kMaxText = 4000;

struct Hook {
    static constexpr int kNone = ANDROID_LOG_SILENT + 1;

    // Shared while the hook runs, exclusive to change it: a change waits for calls under way.
    std::shared_mutex lock;
    standin::LogHook call = nullptr;  // guarded by lock, as the cookie
    void* cookie = nullptr;
    // The least priority that it is called for, so that a line nobody wants costs no lock.
    std::atomic<int> level{kNone};
};

// Never destroyed: threads log until the process ends.
Hook& hook() {
    static Hook& instance = *new Hook;
    return instance;
}

std::atomic<int> gLevel{ANDROID_LOG_SILENT};

// True on a thread that is inside the hook: its own lines must not come back to it.
thread_local bool tInHook = false;

char letterOf(int priority) {
    constexpr char kLetters[] = "??VDIWEFS";
    return priority >= 0 && priority <= ANDROID_LOG_SILENT ? kLetters[priority] : '?';
}

void writeAll(const char* data, size_t size) {
    while (size > 0) {
        ssize_t written = write(STDERR_FILENO, data, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            return;
        }
        data += written;
        size -= static_cast<size_t>(written);
    }
}

// "D Tag     : text" for each line of the text, each in one write.
void print(int priority, const char* tag, const char* text) {
    int savedErrno = errno;
    do {
        size_t length = strcspn(text, "\n");
        char line[kMaxText + 128];
        int size = snprintf(line, sizeof(line), "%c %-8.100s: %.*s\n", letterOf(priority), tag,
                            static_cast<int>(length), text);
        if (size > 0) writeAll(line, static_cast<size_t>(size));
        text += length;
    } while (*text == '\n' && *++text != '\0');
    errno = savedErrno;
}

void callHook(int priority, const char* tag, const char* text) {
    Hook& target = hook();
    if (tInHook || priority < target.level.load(std::memory_order_acquire)) return;
    std::shared_lock hold(target.lock);
    if (target.call == nullptr) return;
    tInHook = true;
    target.call(target.cookie, priority, tag, text);
    tInHook = false;
}

// `always`: print whatever the level.
int emit(int priority, const char* tag, const char* text, bool always) {
    if (tag == nullptr) tag = "";
    callHook(priority, tag, text);
    if (always || priority >= gLevel.load(std::memory_order_relaxed)) print(priority, tag, text);
    return static_cast<int>(strlen(text));
}

}  // namespace

namespace standin {

bool logWanted(int priority) {
    return priority >= gLevel.load(std::memory_order_relaxed) ||
           priority >= hook().level.load(std::memory_order_acquire);
}

void setLogHook(LogHook call, void* cookie, int minPriority) {
    Hook& target = hook();
    std::unique_lock hold(target.lock);
    target.call = call;
    target.cookie = cookie;
    target.level.store(call != nullptr ? minPriority : Hook::kNone, std::memory_order_release);
}

void setLogLevel(int minPriority) {
    gLevel.store(minPriority, std::memory_order_relaxed);
}

}  // namespace standin

int __android_log_write(int priority, const char* tag, const char* text) {
    if (!standin::logWanted(priority)) return -EPERM;
    if (text == nullptr) text = "";
    size_t length = strnlen(text, kMaxText + 1);
    if (length <= kMaxText) return emit(priority, tag, text, false);
    char cut[kMaxText + 1];
    memcpy(cut, text, kMaxText);
    cut[kMaxText] = '\0';
    return emit(priority, tag, cut, false);
}

int __android_log_vprint(int priority, const char* tag, const char* format, va_list arguments) {
    if (!standin::logWanted(priority)) return -EPERM;
    char text[kMaxFormatted];
    vsnprintf(text, sizeof(text), format, arguments);
    return emit(priority, tag, text, false);
}

int __android_log_print(int priority, const char* tag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int result = __android_log_vprint(priority, tag, format, arguments);
    va_end(arguments);
    return result;
}

void __android_log_assert(const char* condition, const char* tag, const char* format, ...) {
    char text[kMaxFormatted];
    if (format != nullptr) {
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(text, sizeof(text), format, arguments);
        va_end(arguments);
    } else if (condition != nullptr) {
        snprintf(text, sizeof(text), "Assertion failed: %s", condition);
    } else {
        snprintf(text, sizeof(text), "Unspecified assertion failed");
    }
    emit(ANDROID_LOG_FATAL, tag, text, true);
    abort();
}
