// What the stock demultiplexer does not tell about an MP4 file, read from its boxes: timed-text
// sample descriptions and composition offsets. The file is untrusted: every size is checked,
// nothing is allocated ahead of the bytes that justify it, and the work is linear in the boxes
// walked over. Whatever is broken, compressed or unreadable gives no answer, never a wrong one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "ffmpeg/ByteSource.h"
#include "ffmpeg/Mp4Movie.h"
#include "ffmpeg/Mp4SampleTables.h"

namespace orvel {

// Names a track as the demultiplexer's streams do: the nth (from 0) of the streams with this id.
// Attached pictures are streams without a track; they have id 0 and do not count.
struct Mp4TrackRef {
    int32_t id;
    uint32_t nth;
};

// Owns nothing of the source, which outlives it. Reads nothing before the first question, and then
// only what the question needs. One thread at a time; every call may block on I/O.
class Mp4BoxReader {
  public:
    explicit Mp4BoxReader(ByteSource& source) : mSource(source) {}

    // The track's sample entries of type 'tx3g' (3GPP TS 26.245, 5.16), whole boxes in file order.
    std::optional<std::vector<std::vector<uint8_t>>> timedTextDescriptions(const Mp4TrackRef& ref);

    // The composition offsets of the track's samples. maxSamples bounds how many of 'ctts' are
    // kept: the caller's number of index entries.
    std::optional<CompositionTable> compositionTable(const Mp4TrackRef& ref, size_t maxSamples);

  private:
    // The track and the movie around it; null when unknown. A movie once read is kept, a failure
    // is tried again by the next question.
    const Mp4Track* findTrack(ExactReader& reader, const Mp4TrackRef& ref);

    ByteSource& mSource;
    std::optional<Mp4Movie> mMovie;
};

}  // namespace orvel
