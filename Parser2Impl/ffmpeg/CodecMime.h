#pragma once

#include <stdint.h>

#include "FFmpegCompat.h"

namespace orvel {

// FFmpeg's codecs and sample formats in the platform's words. Any thread.

// The MIME type for a codec; null for a codec that the plug-in does not offer.
const char* codecId2MimeType(AVCodecID id);

// Whether a video MIME type with this codec tag is one of the special combinations.
bool isSupportedMimeTypeWithCodec(const char* mime, const char* codecTag);

// The PCM encoding code for a sample format; 16 bits for any that has none.
int32_t getAudioEncoding(AVSampleFormat format);

}  // namespace orvel
