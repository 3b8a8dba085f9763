#include "PresentationTimes.h"

#include <algorithm>
#include <utility>

#include "Saturate.h"

namespace orvel {

namespace {

int64_t addSaturated(int64_t a, int64_t b) {
    int64_t sum;
    if (!__builtin_add_overflow(a, b, &sum)) return sum;
    return b < 0 ? INT64_MIN : INT64_MAX;
}

}  // namespace

PresentationTimes::PresentationTimes(size_t count, const EntryAt& entryAt,
                                     const CompositionTable& table, uint64_t movieSamples)
    : mOffsets(table.movieOffsets), mShift(table.movieShift) {
    if (mOffsets.size() > count) {
        mOffsets.resize(count);
        mOffsets.shrink_to_fit();
    }
    mTimestamps.resize(count);
    mKeys.resize((count + 63) / 64);
    for (size_t i = 0; i < count; ++i) {
        const IndexEntry entry = entryAt(i);
        mTimestamps[i] = entry.timestamp;
        if (entry.key) mKeys[i / 64] |= uint64_t{1} << (i % 64);
    }
    if (table.runSampleCount > 0) placeRunOffsets(entryAt, table, movieSamples);
    buildBlocks();
}

// The demultiplexer gives an offset to every entry once it has met a run; 0 to those without.
void PresentationTimes::placeRunOffsets(const EntryAt& entryAt, const CompositionTable& table,
                                        uint64_t movieSamples) {
    if (mOffsets.size() > movieSamples) mOffsets.resize(movieSamples);
    mOffsets.resize(count(), 0);
    FragmentOffsets::Lookup lookup(table.fragmentOffsets);
    size_t placed = 0;
    for (size_t i = 0; i < count(); ++i) {
        const std::optional<int32_t> offset = lookup.find(entryAt(i).position);
        if (!offset) continue;
        mOffsets[i] = *offset;
        mShift = std::max(mShift, shiftOf(*offset));
        ++placed;
    }
    uint64_t expected;
    mComplete = !__builtin_add_overflow(movieSamples, table.runSampleCount, &expected) &&
                count() == expected && placed == table.fragmentOffsets.sampleCount();
}

void PresentationTimes::buildBlocks() {
    mBlocks.reserve((count() + kBlockEntries - 1) / kBlockEntries);
    for (size_t i = 0; i < count(); ++i) {
        const int64_t time = pts(i);
        if (i % kBlockEntries == 0) mBlocks.push_back({time, time});
        Block& block = mBlocks.back();
        block.minPts = std::min(block.minPts, time);
        block.maxPts = std::max(block.maxPts, time);
    }
}

int64_t PresentationTimes::pts(size_t index) const {
    if (index >= mOffsets.size()) return mTimestamps[index];
    return addSaturated(mTimestamps[index], int64_t{mShift} + mOffsets[index]);
}

// About count / 256 + a few times 256 steps where presentation order follows decode order roughly,
// as in every real file; count steps at worst.
size_t PresentationTimes::closest(int64_t wanted) const {
    const auto leastDistance = [wanted](const Block& block) {
        return distance(wanted, std::clamp(wanted, block.minPts, block.maxPts));
    };
    size_t nearest = 0;
    uint64_t nearestDistance = UINT64_MAX;
    for (size_t b = 0; b < mBlocks.size() && nearestDistance > 0; ++b) {
        const uint64_t least = leastDistance(mBlocks[b]);
        if (least >= nearestDistance) continue;
        nearest = b;
        nearestDistance = least;
    }
    // Any entry of the nearest block will do to begin with: blocks that cannot hold a nearer one,
    // which is nearly all of them, are then left out.
    size_t best = nearest * kBlockEntries;
    uint64_t bestDistance = distance(wanted, pts(best));
    const auto searchBlock = [&](size_t b) {
        const size_t end = std::min(count(), (b + 1) * kBlockEntries);
        for (size_t i = b * kBlockEntries; i < end; ++i) {
            const int64_t time = pts(i);
            const uint64_t away = distance(wanted, time);
            const bool better = away != bestDistance ? away < bestDistance
                                : time != pts(best)  ? time > pts(best)
                                                     : i < best;
            if (!better) continue;
            best = i;
            bestDistance = away;
        }
    };
    searchBlock(nearest);
    for (size_t b = 0; b < mBlocks.size(); ++b) {
        if (b != nearest && leastDistance(mBlocks[b]) <= bestDistance) searchBlock(b);
    }
    return best;
}

int64_t PresentationTimes::searchClosest(int64_t wanted, ClosestMode mode,
                                         BackwardSeek backward) const {
    if (count() == 0 || !mComplete) return -1;
    const size_t found = closest(wanted);
    return mode == ClosestMode::PresentationTime ? pts(found) : seekTimestamp(found, backward);
}

int64_t PresentationTimes::seekTimestamp(size_t closest, BackwardSeek backward) const {
    // A leading picture of an open group of pictures comes after its key entry in decode order but
    // is presented before it: it needs the key entry before that one.
    const int64_t closestPts = pts(closest);
    int64_t key = keyBelow(closest + 1);
    while (key > 0 && pts(static_cast<size_t>(key)) > closestPts) {
        key = keyBelow(static_cast<size_t>(key));
    }
    const auto landing = static_cast<size_t>(std::max<int64_t>(key, 0));
    const int64_t next = keyFrom(landing + 1);
    const int64_t beforeNext =
            next < 0 ? INT64_MAX : addSaturated(mTimestamps[static_cast<size_t>(next)], -1);
    // Short of the next key entry backward lands on this one and forward on the next.
    const bool nextIsNear = next >= 0 && static_cast<size_t>(next) <= closest;
    int64_t time = nextIsNear ? beforeNext : mTimestamps[closest];
    if (backward == BackwardSeek::ByPresentationOfCra) {
        time = std::min(std::max(time, pts(landing)), beforeNext);
    }
    return addSaturated(time, mShift);
}

// Searches the way the library does, so that entries of equal time, and times out of order, give
// the library's answer.
int64_t PresentationTimes::firstKeyAtOrAfter(int64_t seekTime) const {
    const int64_t wanted = addSaturated(seekTime, -int64_t{mShift});
    size_t low = 0;  // one more than the last index known to be at or before
    size_t high = count();
    if (high > 0 && mTimestamps[high - 1] < wanted) low = high;
    while (high > low) {
        const size_t middle = (low + high - 1) / 2;
        const int64_t time = mTimestamps[middle];
        if (time >= wanted) high = middle;
        if (time <= wanted) low = middle + 1;
    }
    return keyFrom(high);
}

// The last key entry below end, or -1.
int64_t PresentationTimes::keyBelow(size_t end) const {
    for (size_t i = end; i > 0;) {
        const size_t word = (i - 1) / 64;
        const uint64_t bits = mKeys[word] & (UINT64_MAX >> (63 - (i - 1) % 64));
        if (bits != 0) return static_cast<int64_t>(64 * word + 63) - __builtin_clzll(bits);
        i = 64 * word;
    }
    return -1;
}

// The first key entry from begin on, or -1.
int64_t PresentationTimes::keyFrom(size_t begin) const {
    for (size_t i = begin; i < count();) {
        const size_t word = i / 64;
        const uint64_t bits = mKeys[word] & (UINT64_MAX << (i % 64));
        if (bits != 0) return static_cast<int64_t>(64 * word) + __builtin_ctzll(bits);
        i = 64 * (word + 1);
    }
    return -1;
}

size_t PresentationTimes::memoryBytes() const {
    return mTimestamps.capacity() * sizeof(int64_t) + mOffsets.capacity() * sizeof(int32_t) +
           mKeys.capacity() * sizeof(uint64_t) + mBlocks.capacity() * sizeof(Block);
}

}  // namespace orvel
