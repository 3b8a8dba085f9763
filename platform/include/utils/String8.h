// A text of UTF-8 bytes that owns its storage. A null pointer given for a text aborts.
#pragma once

#include <stdarg.h>
#include <string.h>
#include <utils/Errors.h>

#include <string>

namespace android {

class __attribute__((visibility("default"))) String8 {
  public:
    String8() = default;
    String8(const char* text) : mText(checked(text)) {}
    String8(const char* text, size_t length) : mText(checked(text), length) {}
    explicit String8(const std::string& text) : mText(text) {}

    static String8 empty() { return String8(); }
    static String8 format(const char* format, ...) __attribute__((format(printf, 1, 2)));
    static String8 formatV(const char* format, va_list arguments)
            __attribute__((format(printf, 1, 0)));

    // Valid until the text is changed.
    const char* c_str() const { return mText.c_str(); }
    const char* string() const { return mText.c_str(); }
    operator const char*() const { return mText.c_str(); }
    size_t size() const { return mText.size(); }
    size_t length() const { return mText.size(); }
    size_t bytes() const { return mText.size(); }
    bool isEmpty() const { return mText.empty(); }

    void clear() { mText.clear(); }
    void setTo(const String8& other) { mText = other.mText; }
    status_t setTo(const char* text) { return mText.assign(checked(text)), OK; }
    status_t setTo(const char* text, size_t length) {
        return mText.assign(checked(text), length), OK;
    }
    status_t append(const String8& other) { return mText.append(other.mText), OK; }
    status_t append(const char* text) { return mText.append(checked(text)), OK; }
    status_t append(const char* text, size_t length) {
        return mText.append(checked(text), length), OK;
    }
    status_t appendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));
    status_t appendFormatV(const char* format, va_list arguments)
            __attribute__((format(printf, 2, 0)));

    String8& operator=(const char* text) { return mText = checked(text), *this; }
    String8& operator+=(const String8& other) { return append(other), *this; }
    String8& operator+=(const char* text) { return append(text), *this; }
    String8 operator+(const String8& other) const { return String8(mText + other.mText); }
    String8 operator+(const char* text) const { return String8(mText + checked(text)); }

    // As strcmp: negative, zero or positive.
    int compare(const String8& other) const { return mText.compare(other.mText); }
    // Position of the first occurrence at or after `start`, or -1.
    ssize_t find(const char* text, size_t start = 0) const {
        return static_cast<ssize_t>(mText.find(checked(text), start));
    }

    bool operator==(const String8& other) const { return mText == other.mText; }
    bool operator!=(const String8& other) const { return mText != other.mText; }
    bool operator<(const String8& other) const { return mText < other.mText; }
    bool operator==(const char* text) const { return mText == checked(text); }
    bool operator!=(const char* text) const { return mText != checked(text); }
    bool operator<(const char* text) const { return mText < checked(text); }

  private:
    static const char* checked(const char* text);

    std::string mText;
};

}  // namespace android
