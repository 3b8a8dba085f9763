// What the stock demultiplexer does not tell about an MP4 file, read from its boxes: timed-text
// sample descriptions and composition offsets. The file is untrusted: every size is checked,
// nothing is allocated ahead of the bytes that justify it, and the work is linear in the boxes
// walked over. Whatever is broken, compressed or unreadable gives no answer, never a wrong one.
//
// A broken movie, or a track's broken composition offsets, stay unknown: they are not read again.
// So do those that the source failed to deliver kMaxAttempts times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "ByteSource.h"
#include "Mp4Movie.h"
#include "Mp4SampleTables.h"

namespace orvel {

// Names a track as the demultiplexer's streams do: the nth (from 0) of the streams with this id.
// Attached pictures are streams without a track; they have id 0 and do not count.
struct Mp4TrackRef {
    int32_t id;
    uint32_t nth;
};

// How often a walk over boxes may still be tried: the source's failure may pass, a broken file
// stays broken.
class Mp4Attempts {
  public:
    static constexpr int kMaxAttempts = 3;

    bool left() const { return mLeft > 0; }
    void failed(const ExactReader& reader) { mLeft = reader.failed() ? mLeft - 1 : 0; }

  private:
    int mLeft = kMaxAttempts;
};

// Owns nothing of the source, which outlives it. Reads nothing before the first question, and then
// only what the question needs. One thread at a time; every call may block on I/O.
class Mp4BoxReader {
  public:
    explicit Mp4BoxReader(ByteSource& source) : mSource(source) {}

    // Where the track's sample entries of type 'tx3g' (3GPP TS 26.245, 5.16) lie: whole boxes in
    // file order, at most 1024. The file really has that many bytes, also when its size is unknown
    // or wrong: memory for their sum is justified.
    std::optional<std::vector<ByteRange>> timedTextDescriptions(const Mp4TrackRef& ref);

    // Reads the ranges one after the other into out, which has room for the sum of their sizes.
    // False when some byte cannot be read; out is then of no use.
    bool readRanges(const std::vector<ByteRange>& ranges, uint8_t* out);

    // The composition offsets of the track's samples. maxSamples bounds how many of 'ctts' are
    // kept: the caller's number of index entries. Unknown for tracks in a file whose 'mvex' is
    // broken, since any of them may go on in fragments.
    std::optional<CompositionTable> compositionTable(const Mp4TrackRef& ref, size_t maxSamples);

    // The track has sample groups of type 'sync'. False also when that cannot be read.
    bool hasSyncGroups(const Mp4TrackRef& ref);

  private:
    // The track of the movie, which is read first unless it is known; null when unknown.
    const Mp4Track* findTrack(ExactReader& reader, const Mp4TrackRef& ref);
    bool readCompositionTable(ExactReader& reader, const Mp4Track& track, const Mp4TrackRef& ref,
                              size_t maxSamples, CompositionTable* table);

    ByteSource& mSource;
    std::optional<Mp4Movie> mMovie;
    Mp4Attempts mMovieAttempts;
    std::vector<Mp4Attempts> mTableAttempts;  // one for each of mMovie's tracks
};

}  // namespace orvel
