// How many index entries the boxes of an MP4 file make the demultiplexer build: a sample size table
// of one size for all (ISO/IEC 14496-12, 8.7.3), the chunks of uncompressed sound (8.7.4), runs of
// composition offsets (8.6.1.3) beside 'sync' groups (8.9.2) and a track run (8.8.8) claim any
// number of samples in a few bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ByteSource.h"
#include "Mp4Box.h"

namespace orvel {

// Follows the demultiplexer's reads of boxes, block by block, and looks at each header on the way,
// before the block is handed on. Boxes are found where the demultiplexer reads on from box to box,
// and where it jumps to one. Not found are those inside 'wave' and sample descriptions, and
// compressed movies ('cmov').
//
// A box whose head a block cuts off is looked at with the block after it. The source is read only
// for the chunks of tracks whose samples last one tick and the runs of tracks with 'sync' groups,
// where another block had them. Not thread-safe.
class Mp4IndexClaims {
  public:
    explicit Mp4IndexClaims(ByteSource& source) : mSource(source) {}

    // The demultiplexer is about to see the size bytes at offset. Returns how many entries it may
    // add to its index, and to its lists of chunks and of keys, because of them: those of the track
    // whose tables they go on with, of the tracks that they hold, and of the track runs. A track
    // run beside a track without a header counts as endless: the demultiplexer spends seconds on
    // each.
    uint64_t inBlock(int64_t offset, const uint8_t* data, size_t size);

    // The demultiplexer has read what is in a box straight to its place. Where that goes on from a
    // block, so does the next block from there.
    void passOver(int64_t offset, size_t size);

  private:
    struct Track {
        int64_t begin = 0;  // of the box
        int64_t end = 0;    // 0: no track
        bool hasHeader = false;
        bool isSound = false;
        uint32_t samples = 0;
        uint32_t chunks = 0;
        uint32_t timeRuns = 0;
        int32_t firstDuration = 0;
        uint64_t listed = 0;               // the longest of the lists of runs and of key samples
        int64_t offsetRuns = 0;            // where 'ctts' says how many runs follow; 0: nowhere
        int64_t syncGroups = 0;            // where 'sbgp' of type 'sync' does
        std::vector<ByteRange> chunkRuns;  // the payloads of 'stsc'
        uint64_t chunkEntries = 0;         // of sound that is indexed by chunks

        bool isChanged = false;  // chunkEntries and listed are to be counted again

        // Sound whose samples last one tick each is, whatever its number of samples. The
        // demultiplexer makes one tick of a negative duration in some versions, and sound of a
        // track by its codec.
        bool mayBeByChunks() const { return timeRuns == 1 && firstDuration <= 1; }
    };
    struct Parent {
        ByteRange payload;
        uint32_t type;
    };

    bool stepOverBox();
    bool stepToHandler(int64_t end);
    void leaveTrack();
    uint64_t trackClaim();
    bool take(uint32_t type, int64_t payload);
    void recordFragments(int64_t payload, uint64_t count);
    bool takeList(int64_t count, int64_t* last);
    uint64_t runTotal(int64_t count) const;
    uint64_t soundChunks(const ByteRange& list) const;
    bool peek(int64_t offset, void* out, size_t size) const;
    bool peekCount(int64_t offset, uint32_t* value) const;
    bool peek32(int64_t offset, uint32_t* value) const;

    ByteSource& mSource;
    ByteRange mBlock;
    const uint8_t* mData = nullptr;
    std::vector<uint8_t> mTail;    // what lies before the block, from mNext on
    std::vector<Parent> mParents;  // the boxes that mNext lies in
    int64_t mNext = 0;             // the next box
    Track mTrack;
    std::vector<int64_t> mSeen;   // begins of the boxes that lie in the block, ascending
    bool mHasHeaderless = false;  // some track had no 'tkhd'
    bool mIsInMedia = false;      // the last box that was stepped over is 'mdat'
    uint64_t mTracks = 0;
    int64_t mNextTrack = 0;     // tracks before it are counted
    int64_t mLastFragment = 0;  // the last one, or index of them, that is counted
    uint64_t mRecords = 0;      // of fragments, in all
    uint64_t mClaims = 0;       // of the block, without mTrack's
};

}  // namespace orvel
