#include "framework/ReadOptions.h"

#include <media/MediaExtractorPluginApi.h>

namespace orvel::host {

static_assert(static_cast<uint32_t>(SeekMode::PreviousSync) == android::SEEK_PREVIOUS_SYNC);
static_assert(static_cast<uint32_t>(SeekMode::NextSync) == android::SEEK_NEXT_SYNC);
static_assert(static_cast<uint32_t>(SeekMode::ClosestSync) == android::SEEK_CLOSEST_SYNC);
static_assert(static_cast<uint32_t>(SeekMode::Closest) == android::SEEK_CLOSEST);
static_assert(static_cast<uint32_t>(SeekMode::FrameIndex) == android::SEEK_FRAME_INDEX);

uint32_t ReadOptions::word() const {
    uint32_t word = nonBlocking ? static_cast<uint32_t>(android::NONBLOCKING) : 0;
    if (seek) word |= static_cast<uint32_t>(android::SEEK) | static_cast<uint32_t>(seek->mode);
    return word;
}

}  // namespace orvel::host
