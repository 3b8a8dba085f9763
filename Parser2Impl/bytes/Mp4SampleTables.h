// Composition offsets of one MP4 track: how far each sample's presentation time lies from its
// decode time, from 'ctts' (ISO/IEC 14496-12, 8.6.1.3) and from the track runs of fragments
// (8.8.8). All offsets are in the track's time scale and read as signed whatever the box's version.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "Mp4Box.h"

namespace orvel {

// Composition offsets of the samples of fragments by the samples' position in the file.
// About 8.5 bytes a sample; in the worst file a few times the bytes that its runs take there.
class FragmentOffsets {
  public:
    // Samples come run by run, each run in the order of its positions.
    void append(int64_t position, int32_t offset);

    // Orders the runs. False when they interleave, so that a position names no single run.
    bool finish();

    size_t sampleCount() const { return mSamples.size(); }
    size_t memoryBytes() const;

    // Finds samples in any order, fast in the order of positions. Samples without bytes share a
    // position with their successor: asked for twice in a row, the second answer is the next one's.
    class Lookup {
      public:
        explicit Lookup(const FragmentOffsets& offsets) : mOffsets(offsets) {}
        std::optional<int32_t> find(int64_t position);

      private:
        bool advance();

        const FragmentOffsets& mOffsets;
        // The sample last found: number mStep of chunk mChunk, at mPosition. None at first
        // and after a miss.
        size_t mChunk = SIZE_MAX;
        size_t mStep = 0;
        int64_t mPosition = 0;
    };

  private:
    static constexpr uint32_t kChunkSamples = 64;

    struct Sample {
        uint32_t distance;  // from the chunk's sample before, in bytes; 0 for the first
        int32_t offset;
    };
    struct Chunk {
        int64_t firstPosition;
        int64_t lastPosition;
        size_t firstSample;
        uint32_t count;
    };

    std::deque<Sample> mSamples;  // grows without the spare half of a vector
    std::vector<Chunk> mChunks;
};

struct CompositionTable {
    // 'ctts' expanded: one offset for each sample of 'moov', at most as many as were asked for.
    // Samples after the last one have none.
    std::vector<int32_t> movieOffsets;
    // How far the demultiplexer starts decode times below zero because of negative offsets in
    // 'ctts'; not negative.
    int32_t movieShift = 0;
    // Samples of all the track's runs in fragments, those without offsets included.
    uint64_t runSampleCount = 0;
    // Samples of runs that carry offsets; those of others have offset 0.
    FragmentOffsets fragmentOffsets;
};

// The shift that an offset asks for: its amount below zero, at most INT32_MAX.
constexpr int32_t shiftOf(int32_t offset) {
    return offset >= 0 ? 0 : offset == INT32_MIN ? INT32_MAX : -offset;
}

// Reads a ctts payload into movieOffsets (at most maxSamples of them) and movieShift, as the
// demultiplexer does. False when the box claims more runs than it holds or cannot be read.
bool readCompositionOffsets(ExactReader& reader, const ByteRange& ctts, size_t maxSamples,
                            CompositionTable* table);

}  // namespace orvel
