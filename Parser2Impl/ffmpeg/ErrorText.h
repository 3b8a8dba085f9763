#pragma once

#include "FFmpegCompat.h"

namespace orvel {

// FFmpeg's text for one of its negative error codes, for a log line.
class ErrorText {
  public:
    explicit ErrorText(int error) { av_strerror(error, mText, sizeof(mText)); }
    const char* c_str() const { return mText; }

  private:
    char mText[64] = {};
};

}  // namespace orvel
