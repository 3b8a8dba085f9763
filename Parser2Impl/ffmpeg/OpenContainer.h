#pragma once

#include <stdint.h>

#include <utils/Vector.h>

#include "FFmpegCompat.h"
#include "base/MetaDataValue.h"

namespace orvel {

class FFmpegExtensions;

// One track: a stream that has a MIME type. Held by value, in ascending stream order; a track index
// is a position in that list, and can differ from the stream index.
struct TrackInfo {
    MetaDataValue meta;          // the track format
    int32_t streamIndex = -1;    // FFmpeg's; the key of the reader's track map
    AVRational timeBase = {};    // the stream's, seconds
    int64_t durationUs = 0;      // 0: unknown
    AVStream* stream = nullptr;  // lives as long as the format context
    // Bits per coded sample of the last audio track described so far: its own, for an audio track.
    int32_t bitsPerSample = 0;
};

// What the reader sees of the container object. Valid while the object is held.
struct OpenContainer {
    AVFormatContext* context;
    android::Vector<TrackInfo>& tracks;
    FFmpegExtensions& extensions;
};

}  // namespace orvel
