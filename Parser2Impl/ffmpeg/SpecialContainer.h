#pragma once

#include "FFmpegCompat.h"

namespace orvel {

// Questions about an opened container that decide whether the plug-in takes it.

// The stream of the type that FFmpeg holds for the main one; negative without one.
int bestStream(AVFormatContext* context, AVMediaType type);

// The main audio stream is DTS or E-AC-3.
bool isSupportedSpecialAudio(AVFormatContext* context);

// The main video stream is one of the special combinations of MIME type and codec tag, and: the
// file was written by the DivX tools. Nobody asks for either yet.
bool isSupportedSpecialVideo(AVFormatContext* context);
bool isGeneratedByDivxTools(const AVFormatContext* context);

}  // namespace orvel
