// The foundation's text class: bytes with their own storage. Not thread-safe.
#pragma once

#include <stddef.h>

#include <string>

namespace android {

struct AString {
    AString() = default;
    AString(const char* text) : mText(text) {}
    AString(const char* text, size_t size) : mText(text, size) {}

    const char* c_str() const { return mText.c_str(); }
    size_t size() const { return mText.size(); }
    bool empty() const { return mText.empty(); }

    void clear() { mText.clear(); }
    void setTo(const char* text) { mText = text; }
    void append(const char* text) { mText += text; }
    void append(const char* text, size_t size) { mText.append(text, size); }
    void append(const AString& other) { mText += other.mText; }

    bool operator==(const AString& other) const { return mText == other.mText; }
    bool operator!=(const AString& other) const { return mText != other.mText; }
    bool operator<(const AString& other) const { return mText < other.mText; }
    bool operator==(const char* text) const { return mText == text; }
    bool operator!=(const char* text) const { return mText != text; }

  private:
    std::string mText;
};

}  // namespace android
