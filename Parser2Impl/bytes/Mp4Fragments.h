// The movie fragments ('moof', ISO/IEC 14496-12 clause 8.8) of an MP4 file.
#pragma once

#include <cstdint>

#include "Mp4Box.h"
#include "Mp4Movie.h"
#include "Mp4SampleTables.h"

namespace orvel {

// Walks over every fragment after the movie box and adds what the runs of the track say to table.
// False when a fragment is broken, or leaves open where the track's samples lie, or cannot be read;
// table is then of no use. Reads the fragments' headers and runs, never their media.
bool readFragments(ExactReader& reader, const Mp4Movie& movie, int32_t trackId,
                   CompositionTable* table);

}  // namespace orvel
