// FFmpeg's messages in the platform log.
#pragma once

#include <stdarg.h>

namespace android {

class __attribute__((visibility("default"))) OrvelMediaLog {
  public:
    // For av_log_set_callback: logs one message under the tag "FFmpeg", without the newline at its
    // end. `level` is FFmpeg's: up to 16 (panic, fatal, error) becomes error, 24 warning, 32 info,
    // 40 (verbose) debug, 48 and above verbose. Any thread; a message that nobody wants is not
    // formatted.
    static void OrvelMediaLogCallback(void* context, int level, const char* format,
                                      va_list arguments);
};

}  // namespace android
