// Presentation times of the entries of a stream's index, and the searches that need them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "Mp4SampleTables.h"

namespace orvel {

// An index entry as the demultiplexer keeps it. Times are in the stream's time base.
struct IndexEntry {
    int64_t timestamp;  // decode time
    int64_t position;   // in the file, bytes
    bool key;
};

enum class ClosestMode {
    SeekTimestamp = 0,     // what av_seek_frame has to be given
    PresentationTime = 1,  // when the sample is presented
};

// How a demultiplexer treats a backward seek.
enum class BackwardSeek {
    ByDecodeTime,
    // FFmpeg 5.1 on HEVC files with 'sync' sample groups: to an entry that is a CRA picture only
    // when that picture is presented at or before the time asked for.
    ByPresentationOfCra,
};

// An immutable snapshot: built by the thread that owns the index, then readable by any number of
// threads at once. Sums of hostile numbers saturate, as the demultiplexer's own do.
//
// Memory: 8 bytes an entry for the decode time, 4 for the offset (none when there are no offsets),
// 1/8 for the key flag and 1/16 for the search: below 12.2 bytes an entry.
class PresentationTimes {
  public:
    using EntryAt = std::function<IndexEntry(size_t index)>;

    // Answers every question as an empty index does.
    PresentationTimes() = default;

    // entryAt is called during the call only, in any order, with 0 to count - 1. table is that of
    // the stream's track; containers without one pass an empty table and get decode times.
    // movieSamples is the number of samples that 'moov' lists (the stream's nb_frames); it matters
    // to files with fragments alone.
    PresentationTimes(size_t count, const EntryAt& entryAt, const CompositionTable& table,
                      uint64_t movieSamples);

    size_t count() const { return mTimestamps.size(); }
    int64_t timestamp(size_t index) const { return mTimestamps[index]; }
    int64_t pts(size_t index) const;
    bool isKey(size_t index) const { return (mKeys[index / 64] >> (index % 64) & 1) != 0; }

    // How far the demultiplexer's decode times start below zero; av_seek_frame subtracts it from
    // what it is given. Not negative.
    int64_t shift() const { return mShift; }

    // Every sample of the file is in the index. One that lacks some, as that of a fragmented file
    // with a segment index does at first, cannot say which sample is the closest.
    bool complete() const { return mComplete; }

    // For the entry presented nearest to wanted (of two as near the later one, of several presented
    // at one time the first): its presentation time, or the time to seek to in order to land on a
    // key entry from which it can be decoded. -1 for an empty or incomplete index; other negative
    // answers are times below zero, which callers take for none as well.
    int64_t searchClosest(int64_t wanted, ClosestMode mode,
                          BackwardSeek backward = BackwardSeek::ByDecodeTime) const;

    // The key entry on which a forward av_seek_frame to seekTime lands by decode time: the first
    // one at or after it; -1 when there is none.
    int64_t firstKeyAtOrAfter(int64_t seekTime) const;

    // Bytes held, the object itself left out.
    size_t memoryBytes() const;

  private:
    static constexpr size_t kBlockEntries = 256;

    struct Block {
        int64_t minPts;
        int64_t maxPts;
    };

    void placeRunOffsets(const EntryAt& entryAt, const CompositionTable& table,
                         uint64_t movieSamples);
    void buildBlocks();
    size_t closest(int64_t wanted) const;
    int64_t seekTimestamp(size_t closest, BackwardSeek backward) const;
    int64_t keyBelow(size_t end) const;
    int64_t keyFrom(size_t begin) const;

    std::vector<int64_t> mTimestamps;
    // Composition offsets of the first entries; entries after them are presented at their decode
    // time.
    std::vector<int32_t> mOffsets;
    std::vector<uint64_t> mKeys;  // one bit an entry
    std::vector<Block> mBlocks;   // of kBlockEntries entries each
    int32_t mShift = 0;
    bool mComplete = true;
};

}  // namespace orvel
