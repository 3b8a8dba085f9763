// The parts of an MP4 file's 'moov' box (ISO/IEC 14496-12 clause 8) that say where a track's sample
// descriptions and composition offsets are. Only headers are read, not the tables themselves.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Mp4Box.h"

namespace orvel {

struct Mp4Track {
    // tkhd's track_ID as the demultiplexer publishes it in the stream's id; a track without a
    // header cannot be named.
    std::optional<int32_t> id;
    // Payloads of the sample table's boxes, absent when the track has none.
    std::optional<ByteRange> stsd;
    std::optional<ByteRange> ctts;
    // Sample groups of type 'sync' (8.9.2, ISO/IEC 14496-15 clause 9.5) mark random access points.
    bool hasSyncGroups = false;
    // A box appears twice; the track is not used.
    bool ambiguous = false;
};

// 'trex' (8.8.3): what holds for a track's fragments that do not say otherwise.
struct Mp4FragmentDefaults {
    int32_t trackId;
    uint32_t sampleSize;
    bool hasTrack;  // the movie has a track with the id
};

struct Mp4Movie {
    std::vector<Mp4Track> tracks;  // in file order, which is the order of the streams
    // Empty without 'mvex', and then the file has no fragments. Sorted by track id; of several for
    // the same track the first counts.
    std::vector<Mp4FragmentDefaults> fragmentDefaults;
    // Some default cannot be read, so nothing is known about fragments.
    bool fragmentsBroken = false;
    int64_t end = 0;  // first byte after 'moov'

    // The n-th (from 0) track with the id, or null.
    const Mp4Track* track(int32_t id, uint32_t nth) const;
    const Mp4FragmentDefaults* defaultsOf(int32_t trackId) const;
};

// Reads the file's first 'moov'. Nothing when there is none, when it is compressed ('cmov') or
// broken, or when the source fails.
std::optional<Mp4Movie> readMovie(ExactReader& reader);

}  // namespace orvel
