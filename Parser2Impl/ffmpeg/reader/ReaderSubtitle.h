#pragma once

#include "FFmpegReader.h"

namespace orvel {

// Reads the subtitle track's next sample by its stream's index into its cache. Looper thread, with
// the reader's mLock. ERROR_END_OF_STREAM after the last entry or at the end of the file; BAD_VALUE
// for an entry outside the file; ERROR_IO. An entry that cannot be read is not tried again.
android::status_t readSubtitleData(const OpenContainer& container, FFmpegReader::Track& track);

}  // namespace orvel
