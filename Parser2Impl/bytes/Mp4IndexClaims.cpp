#include "Mp4IndexClaims.h"

#include <algorithm>

#include "ByteOrder.h"

namespace orvel {

namespace {

constexpr int64_t kHeaderSize = 8;
constexpr size_t kMaxDepth = 10;
constexpr uint64_t kEndless = UINT32_MAX;
constexpr uint64_t kEncryptedSample = 12;  // takes as much memory as so many index entries

// The boxes that the demultiplexer enters, whatever they are in.
bool isEntered(uint32_t type) {
    switch (type) {
        case fourCharacterCode("moov"):
        case fourCharacterCode("trak"):
        case fourCharacterCode("mdia"):
        case fourCharacterCode("minf"):
        case fourCharacterCode("stbl"):
        case fourCharacterCode("moof"):
        case fourCharacterCode("traf"):
        case fourCharacterCode("mfra"):
        case fourCharacterCode("edts"):
        case fourCharacterCode("dinf"):
        case fourCharacterCode("udta"):
        case fourCharacterCode("tref"):
        case fourCharacterCode("mvex"):
        case fourCharacterCode("ilst"):
        case fourCharacterCode("sinf"):
        case fourCharacterCode("schi"):
            return true;
        default:
            return false;
    }
}

// What sound's chunks hang on, and the lists that 'sync' groups have unrolled.
bool isTable(uint32_t type) {
    return type == fourCharacterCode("stts") || type == fourCharacterCode("stsc") ||
           type == fourCharacterCode("stco") || type == fourCharacterCode("co64") ||
           type == fourCharacterCode("ctts") || type == fourCharacterCode("sbgp");
}

}  // namespace

uint64_t Mp4IndexClaims::inBlock(int64_t offset, const uint8_t* data, size_t size) {
    // A jump ahead inside the parent, or to a box that was found, leaves the walk as it is.
    const bool insideParent =
            !mParents.empty() && mParents.back().payload.begin <= offset && offset <= mNext;
    if (offset != mBlock.end) {
        mTail.clear();
        const bool seen = std::binary_search(mSeen.begin(), mSeen.end(), offset);
        if (!(insideParent || seen) || mNext < mBlock.end) {
            mSeen.clear();
            mParents.clear();
            mNext = offset;
        }
    }
    mBlock = {offset, offset + static_cast<int64_t>(size)};
    mData = data;
    // Elsewhere the demultiplexer has built the track's index.
    if (offset < mTrack.begin || mTrack.end <= offset) leaveTrack();
    mSeen.erase(mSeen.begin(), std::lower_bound(mSeen.begin(), mSeen.end(), offset));
    mClaims = 0;
    const uint64_t records = mRecords;
    while (mNext < mBlock.end && stepOverBox()) {
    }
    if (mNext >= offset) mTail.clear();
    if (mNext < mBlock.end)
        mTail.insert(mTail.end(), data + std::max(mNext, offset) - offset, data + size);
    if (mRecords > records) mClaims += mRecords;
    return mClaims + trackClaim();
}

void Mp4IndexClaims::passOver(int64_t offset, size_t size) {
    const int64_t end = offset + static_cast<int64_t>(size);
    if (offset == mBlock.end && end <= mNext && !mIsInMedia) mBlock.end = end;
}

// The demultiplexer looks for the first box of 'meta', the handler, word by word. From there on it
// is entered like any other. False where the block cuts off the word.
bool Mp4IndexClaims::stepToHandler(int64_t end) {
    uint32_t word = fourCharacterCode("hdlr");
    const bool isOver = end - mNext <= kHeaderSize + 4;
    if (!isOver && !peek32(mNext + 4, &word)) return false;
    if (word == fourCharacterCode("hdlr")) mParents.back().type = fourCharacterCode("ilst");
    if (isOver) {
        mNext = end;
    } else if (word != fourCharacterCode("hdlr")) {
        mNext += 4;
    }
    return true;
}

// False where the block cuts off what has to be known of the box.
bool Mp4IndexClaims::stepOverBox() {
    const int64_t parentEnd = mParents.empty() ? INT64_MAX : mParents.back().payload.end;
    if (!mParents.empty() && mParents.back().type == fourCharacterCode("meta"))
        return stepToHandler(parentEnd);
    uint8_t header[kHeaderSize];
    int64_t size = 0;
    int64_t begin = mNext + kHeaderSize;
    if (parentEnd - mNext >= kHeaderSize) {
        if (!peek(mNext, header, sizeof(header))) return false;
        size = loadBe32(header);
        if (size == 1 && parentEnd - begin >= 8) {
            uint8_t largeSize[8];
            if (!peek(begin, largeSize, sizeof(largeSize))) return false;
            // What falls below the smallest number comes out as a large one, as there.
            if (__builtin_sub_overflow(static_cast<int64_t>(loadBe64(largeSize)), 8, &size))
                size = INT64_MAX;
            begin += 8;
        }
        if (size == 0) size = parentEnd - begin + kHeaderSize;
    }
    uint32_t type = size < kHeaderSize ? 0 : loadBe32(header + 4);
    // The demultiplexer would read it again and again.
    if (type == fourCharacterCode("tfra") && loadBe32(header) == 0) mClaims += kEndless;
    const bool isInTrack = mParents.empty() ? mTrack.begin < mNext && mNext < mTrack.end
                                            : mParents.back().type != fourCharacterCode("moov");
    const bool isMisplaced =
            isInTrack && (type == fourCharacterCode("trak") || type == fourCharacterCode("mdat"));
    if (size < kHeaderSize || isMisplaced || mParents.size() > kMaxDepth) {
        // The demultiplexer gives up on the rest of the parent.
        mNext = parentEnd;
        if (!mParents.empty()) mParents.pop_back();
        return true;
    }
    const ByteRange payload{begin, begin + std::min(size - kHeaderSize, parentEnd - begin)};
    if (type == fourCharacterCode("free") || type == fourCharacterCode("hoov")) {
        uint32_t first;  // of a hidden movie box
        if (!peek32(begin + 4, &first)) return false;
        if (first == fourCharacterCode("mvhd") || first == fourCharacterCode("cmov"))
            type = fourCharacterCode("moov");
    }
    const int64_t box = mNext;
    if (isEntered(type) || type == fourCharacterCode("meta")) {
        mParents.push_back({payload, type});
        mNext = type == fourCharacterCode("meta") ? payload.begin - 4 : payload.begin;
        if (type == fourCharacterCode("trak") || type == fourCharacterCode("moof")) leaveTrack();
        if (type == fourCharacterCode("trak")) {
            mTrack.begin = box;
            mTrack.end = payload.end;
            if (box >= mNextTrack) ++mTracks;
            mNextTrack = std::max(mNextTrack, payload.begin);
        }
        if (type == fourCharacterCode("moof")) recordFragments(payload.begin, 1);
    } else {
        if (!take(type, payload.begin)) return false;
        mNext = payload.end;
        if (type == fourCharacterCode("stsc")) mTrack.chunkRuns.push_back(payload);
        mTrack.isChanged = mTrack.isChanged || isTable(type);
        mIsInMedia = type == fourCharacterCode("mdat");
    }
    mSeen.push_back(box);
    return true;
}

uint64_t Mp4IndexClaims::trackClaim() {
    if (mTrack.isChanged) {
        mTrack.chunkEntries = 0;
        // Of several lists, some versions take the first, some the last.
        for (const ByteRange& runs : mTrack.chunkRuns) {
            if (mTrack.mayBeByChunks() && mTrack.chunks > 0)
                mTrack.chunkEntries = std::max(mTrack.chunkEntries, soundChunks(runs));
        }
        // Of video with such groups both lists of runs are unrolled, one number for each sample.
        if (mTrack.syncGroups > 0)
            mTrack.listed = std::max(
                    {mTrack.listed, runTotal(mTrack.offsetRuns), runTotal(mTrack.syncGroups)});
        mTrack.isChanged = false;
    }
    const bool byChunks = mTrack.isSound && mTrack.mayBeByChunks() && mTrack.firstDuration == 1;
    // Room for the chunks' offsets is made before they are read.
    return std::max<uint64_t>(byChunks ? 0 : mTrack.samples, mTrack.listed) + mTrack.chunkEntries +
           mTrack.chunks;
}

// A record of each track for each fragment, when it is read and where an index names it.
void Mp4IndexClaims::recordFragments(int64_t payload, uint64_t count) {
    if (payload <= mLastFragment) return;
    mLastFragment = payload;
    mRecords += count * mTracks;
}

void Mp4IndexClaims::leaveTrack() {
    mHasHeaderless = mHasHeaderless || (mTrack.end > 0 && mTrack.end <= mNext && !mTrack.hasHeader);
    mClaims += trackClaim();
    mTrack = {};
}

// False where the block cuts off a field.
bool Mp4IndexClaims::take(uint32_t type, int64_t payload) {
    uint32_t value = 0;
    uint32_t version;  // and flags
    bool isWhole;
    switch (type) {
        case fourCharacterCode("tkhd"):
            mTrack.hasHeader = true;
            return true;
        case fourCharacterCode("hdlr"):
            // QuickTime has a second one, of the data handler.
            if (!peek32(payload + 8, &value)) return false;
            if (value == fourCharacterCode("soun")) mTrack.isSound = true;
            if (value == fourCharacterCode("vide") || value == fourCharacterCode("subp") ||
                value == fourCharacterCode("clcp"))
                mTrack.isSound = false;
            return true;
        case fourCharacterCode("stts"):
            if (!peek32(payload + 12, &value)) return false;
            mTrack.firstDuration = static_cast<int32_t>(value);
            return peek32(payload + 4, &mTrack.timeRuns);
        case fourCharacterCode("stsz"):
        case fourCharacterCode("stz2"):
            return peekCount(payload + 8, &mTrack.samples);
        case fourCharacterCode("stco"):
        case fourCharacterCode("co64"):
            isWhole = peekCount(payload + 4, &value);
            mTrack.chunks = std::max(mTrack.chunks, value);
            return isWhole;
        case fourCharacterCode("ctts"):
            return takeList(payload + 4, &mTrack.offsetRuns);
        case fourCharacterCode("stss"):
        case fourCharacterCode("stps"):
            return takeList(payload + 4, nullptr);
        case fourCharacterCode("sbgp"):
            if (!peek32(payload, &version) || !peek32(payload + 4, &value)) return false;
            return takeList(payload + (version >> 24 == 1 ? 12 : 8),
                            value == fourCharacterCode("sync") ? &mTrack.syncGroups : nullptr);
        case fourCharacterCode("sgpd"):
            if (!peek32(payload, &version)) return false;
            return takeList(payload + 8 + 4 * std::min(version >> 24, 2u), nullptr);
        case fourCharacterCode("keys"):
            isWhole = peekCount(payload + 4, &value);
            mClaims += value;
            return isWhole;
        case fourCharacterCode("senc"):
            isWhole = peekCount(payload + 4, &value);
            mClaims += value * kEncryptedSample;
            return isWhole;
        case fourCharacterCode("sidx"):
            if (!peek32(payload, &version) ||
                !peek32(payload + (version >> 24 == 0 ? 20 : 28), &value))
                return false;
            recordFragments(payload, value & 0xFFFF);
            return true;
        case fourCharacterCode("trun"):
            isWhole = peekCount(payload + 4, &value);
            if (value > 0) mClaims += mHasHeaderless ? kEndless : value;
            return isWhole;
        default:
            return true;
    }
}

// Room for what a list claims is made before it is read. The last one that is not empty counts.
bool Mp4IndexClaims::takeList(int64_t count, int64_t* last) {
    uint32_t value;
    const bool isWhole = peekCount(count, &value);
    mTrack.listed = std::max<uint64_t>(mTrack.listed, value);
    if (value > 0 && last != nullptr) *last = count;
    return isWhole;
}

// The samples of a list's runs of eight bytes. Like the demultiplexer, it reads on beyond the box.
uint64_t Mp4IndexClaims::runTotal(int64_t count) const {
    ExactReader reader(mSource);
    const auto read = [&](int64_t offset, uint32_t* value) {
        return peek32(offset, value) || reader.read32(offset, value);
    };
    uint32_t runs;
    if (count == 0 || !read(count, &runs)) return 0;
    uint64_t total = 0;
    uint32_t samples;
    for (int64_t i = 0; i < runs && total <= kEndless; ++i) {
        if (!read(count + 4 + 8 * i, &samples)) break;
        total += samples;
    }
    return total;
}

// The demultiplexer makes one entry of up to 1024 samples of a chunk; where the sample description
// asks for it, of 160, for which nothing is claimed here.
uint64_t Mp4IndexClaims::soundChunks(const ByteRange& list) const {
    constexpr uint32_t kEntrySamples = 1024;
    constexpr int64_t kHeadSize = 8;
    constexpr int64_t kRunSize = 12;
    ExactReader reader(mSource);
    const auto read = [&](int64_t offset, uint32_t* value) {
        return peek32(offset, value) || reader.read32(offset, value);
    };
    uint32_t runs;
    if (!read(list.begin + 4, &runs)) return 0;
    // The demultiplexer refuses more than the box holds.
    if (runs > (list.size() - kHeadSize) / kRunSize) return 0;
    uint64_t entries = 0;
    for (int64_t i = 0; i < runs && entries <= kEndless; ++i) {
        const int64_t run = list.begin + kHeadSize + i * kRunSize;
        uint32_t first;
        uint32_t samples;
        uint32_t next;
        if (!read(run, &first) || !read(run + 4, &samples)) break;
        if (i + 1 < runs && !read(run + kRunSize, &next)) break;
        const uint64_t end = i + 1 < runs ? next : uint64_t{mTrack.chunks} + 1;
        // A run that ends before it begins counts as one without end, as it does there.
        const uint64_t chunks = end >= first ? end - first : kEndless;
        entries += chunks * ((uint64_t{samples} + kEntrySamples - 1) / kEntrySamples);
    }
    return entries;
}

// Reads from the block and from what is kept of the one before it.
bool Mp4IndexClaims::peek(int64_t offset, void* out, size_t size) const {
    auto* to = static_cast<uint8_t*>(out);
    const auto tailSize = static_cast<int64_t>(mTail.size());
    const int64_t begin = mBlock.begin - tailSize;
    if (offset < begin || mBlock.end - offset < static_cast<int64_t>(size)) return false;
    for (size_t i = 0; i < size; ++i) {
        const int64_t at = offset - begin + static_cast<int64_t>(i);
        to[i] = at < tailSize ? mTail[static_cast<size_t>(at)] : mData[at - tailSize];
    }
    return true;
}

// One that is cut off counts with zeros for its missing bytes, as it does there at the end of file.
bool Mp4IndexClaims::peekCount(int64_t offset, uint32_t* value) const {
    uint8_t bytes[4] = {};
    int64_t found = 0;
    while (found < 4 && peek(offset + found, &bytes[found], 1))
        ++found;
    *value = loadBe32(bytes);
    return found == 4;
}

bool Mp4IndexClaims::peek32(int64_t offset, uint32_t* value) const {
    uint8_t bytes[4];
    if (!peek(offset, bytes, sizeof(bytes))) return false;
    *value = loadBe32(bytes);
    return true;
}

}  // namespace orvel
