// A text of UTF-8 bytes that owns its storage. A null pointer given for a text aborts.
#pragma once

#include <log/log.h>
#include <utils/Errors.h>

#include <string>

namespace android {

class String8 {
  public:
    String8() = default;
    String8(const char* text) : mText(checked(text)) {}

    // Valid until the text is changed.
    const char* string() const { return mText.c_str(); }
    size_t length() const { return mText.size(); }

    status_t setTo(const char* text) { return mText.assign(checked(text)), OK; }

  private:
    static const char* checked(const char* text) {
        LOG_ALWAYS_FATAL_IF(text == nullptr, "null given for a text");
        return text;
    }

    std::string mText;
};

}  // namespace android
