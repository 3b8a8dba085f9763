#pragma once

#include <stddef.h>
#include <stdint.h>

#include "FFmpegCompat.h"

namespace orvel {

// The private record in which the platform's decoders find a stream's codec parameters:
// FFmpeg 4.x's AVCodecParameters on a 64-bit machine without its extradata pointer, then the
// extradata. The layout is fixed, whatever the built library's own record looks like; host byte
// order.
constexpr size_t kCodecParametersSize = 136;

inline size_t codecParametersBlobSize(const AVCodecParameters& parameters) {
    return kCodecParametersSize + static_cast<size_t>(parameters.extradata_size);
}

// Fills blob, which has codecParametersBlobSize bytes, completely.
void writeCodecParametersBlob(const AVCodecParameters& parameters, uint8_t* blob);

}  // namespace orvel
