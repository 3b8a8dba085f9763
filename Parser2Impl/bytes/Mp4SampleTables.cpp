#include "Mp4SampleTables.h"

#include <algorithm>

#include "ByteOrder.h"

namespace orvel {

void FragmentOffsets::append(int64_t position, int32_t offset) {
    const bool continues = !mChunks.empty() && mChunks.back().count < kChunkSamples &&
                           position >= mChunks.back().lastPosition &&
                           position - mChunks.back().lastPosition <= UINT32_MAX;
    if (continues) {
        Chunk& chunk = mChunks.back();
        mSamples.push_back({static_cast<uint32_t>(position - chunk.lastPosition), offset});
        chunk.lastPosition = position;
        ++chunk.count;
    } else {
        mChunks.push_back({position, position, mSamples.size(), 1});
        mSamples.push_back({0, offset});
    }
}

bool FragmentOffsets::finish() {
    mChunks.shrink_to_fit();
    std::stable_sort(mChunks.begin(), mChunks.end(), [](const Chunk& a, const Chunk& b) {
        return a.firstPosition < b.firstPosition;
    });
    for (size_t i = 1; i < mChunks.size(); ++i) {
        if (mChunks[i - 1].lastPosition > mChunks[i].firstPosition) return false;
    }
    return true;
}

size_t FragmentOffsets::memoryBytes() const {
    return mSamples.size() * sizeof(Sample) + mChunks.capacity() * sizeof(Chunk);
}

bool FragmentOffsets::Lookup::advance() {
    const auto& chunks = mOffsets.mChunks;
    if (mChunk >= chunks.size()) return false;
    if (++mStep < chunks[mChunk].count) {
        mPosition += mOffsets.mSamples[chunks[mChunk].firstSample + mStep].distance;
        return true;
    }
    mStep = 0;
    if (++mChunk == chunks.size()) return false;
    mPosition = chunks[mChunk].firstPosition;
    return true;
}

std::optional<int32_t> FragmentOffsets::Lookup::find(int64_t position) {
    const auto& chunks = mOffsets.mChunks;
    if (!advance() || mPosition != position) {
        const auto chunk = std::lower_bound(
                chunks.begin(), chunks.end(), position,
                [](const Chunk& candidate, int64_t p) { return candidate.lastPosition < p; });
        mChunk = static_cast<size_t>(chunk - chunks.begin());
        mStep = 0;
        if (chunk == chunks.end()) return std::nullopt;
        mPosition = chunk->firstPosition;
        // Ends within the chunk, whose last position is not below the one wanted.
        while (mPosition < position)
            advance();
        if (mPosition != position) {
            mChunk = SIZE_MAX;
            return std::nullopt;
        }
    }
    return mOffsets.mSamples[chunks[mChunk].firstSample + mStep].offset;
}

bool readCompositionOffsets(ExactReader& reader, const ByteRange& ctts, size_t maxSamples,
                            CompositionTable* table) {
    constexpr int64_t kHeadSize = 8;
    constexpr int64_t kRunSize = 8;
    constexpr int32_t kLargestOffset = 1 << 28;
    uint32_t runCount;
    if (ctts.size() < kHeadSize || !reader.read32(ctts.begin + 4, &runCount)) return false;
    if (runCount > (ctts.size() - kHeadSize) / kRunSize) return false;
    std::vector<int32_t>& offsets = table->movieOffsets;
    for (uint32_t i = 0; i < runCount; ++i) {
        uint8_t run[kRunSize];
        if (!reader.read(ctts.begin + kHeadSize + i * kRunSize, run, sizeof(run))) return false;
        const int32_t count = loadBeI32(run);
        const int32_t offset = loadBeI32(run + 4);
        if (count <= 0) continue;
        // The last two runs are exempt from what follows: writers leave odd offsets there.
        const bool trusted = runCount - i > 2;
        if (trusted && (offset > kLargestOffset || offset < -kLargestOffset)) {
            offsets = {};
            return true;
        }
        offsets.insert(offsets.end(),
                       std::min<size_t>(static_cast<size_t>(count), maxSamples - offsets.size()),
                       offset);
        if (trusted) table->movieShift = std::max(table->movieShift, shiftOf(offset));
    }
    offsets.shrink_to_fit();
    return true;
}

}  // namespace orvel
