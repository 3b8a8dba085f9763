#pragma once

#include <stdint.h>

#include <optional>

#include "ContainerTable.h"
#include "FFmpegCompat.h"

namespace orvel {

class OrvelDataSource;

// What the first bytes of a source look like.
struct ProbeResult {
    const Container* container = nullptr;  // null: no probe scored
    AVInputFormatPtr format = nullptr;
    int score = 0;  // of AVPROBE_SCORE_MAX
};

// Runs the demuxers' probes of the containers whose bits are in mask over the source, in the
// table's order, until one is certain. Ends early, with the best so far, when fewer than 1024 bytes
// can be read or the ID3 tags take 3 MiB. Nothing when there is no memory for the bytes. May block
// on the source's I/O.
std::optional<ProbeResult> probeContainers(OrvelDataSource& source, uint32_t mask);

// Bytes taken by the chain of ID3v2 tags at the start of the source (ID3v2.4.0, 3.1). From 3 MiB on
// the exact value is not looked for any further.
int64_t getID3Size(OrvelDataSource& source);

}  // namespace orvel
