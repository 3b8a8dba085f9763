#pragma once

#include <stdint.h>

#include <optional>

#include "FFmpegCompat.h"
#include "OpenContainer.h"
#include "base/OrvelMetaData.h"

namespace orvel {

class FFmpegExtensions;

// The format of a track: functions of what FFmpeg says about its stream. Each adds its entries to
// meta. mime is the codec's MIME type, fileMime that of the container, which may be null.

// Sample rate, channels, sample size, padding, limits and codec configuration.
void initAudioMeta(const AVStream* stream, OrvelMetaData& meta, const char* mime);

// Picture size, rotation (clockwise degrees), frame rate, limits and codec configuration.
void initVideoMeta(const AVStream* stream, OrvelMetaData& meta, const char* mime,
                   const char* fileMime, std::optional<int32_t> rotation);

// Limits and the sample descriptions, which extensions reads from the file.
void initSubtitleMeta(const AVStream* stream, OrvelMetaData& meta, FFmpegExtensions& extensions);

// The private record of the codec parameters, for audio and video. Nothing without memory for it.
void setOrvelSpecificMeta(const AVStream* stream, OrvelMetaData& meta);

// What all tracks have in common. fileDurationUs, the container's, serves a stream without a
// duration of its own; negative: unknown. bitsPerSample stays the caller's.
void initTrackInfo(AVStream* stream, const char* fileMime, int64_t fileDurationUs, TrackInfo* info);

}  // namespace orvel
