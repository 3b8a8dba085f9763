#include "Mp4Fragments.h"

#include <algorithm>
#include <optional>

#include "ByteOrder.h"

namespace orvel {

namespace {

// tf_flags (8.8.7) and tr_flags (8.8.8).
enum TrackFragmentFlags : uint32_t {
    kTfhdBaseDataOffset = 0x1,
    kTfhdSampleDescription = 0x2,
    kTfhdDefaultDuration = 0x8,
    kTfhdDefaultSize = 0x10,
    kTfhdDefaultBaseIsMoof = 0x20000,
};
enum TrackRunFlags : uint32_t {
    kTrunDataOffset = 0x1,
    kTrunFirstSampleFlags = 0x4,
    kTrunDuration = 0x100,
    kTrunSize = 0x200,
    kTrunFlags = 0x400,
    kTrunCompositionOffset = 0x800,
};

// Position of a sample, or none where the file's numbers leave the range of file offsets.
using Position = std::optional<int64_t>;

Position advanced(const Position& position, int64_t distance) {
    int64_t sum;
    if (!position || __builtin_add_overflow(*position, distance, &sum) || sum < 0) return {};
    return sum;
}

// Takes one field after the other from a payload.
class FieldReader {
  public:
    FieldReader(ExactReader& reader, const ByteRange& payload) : mReader(reader), mRest(payload) {}

    bool next32(uint32_t* value) {
        if (mRest.size() < 4 || !mReader.read32(mRest.begin, value)) return false;
        mRest.begin += 4;
        return true;
    }
    bool next64(uint64_t* value) {
        if (mRest.size() < 8 || !mReader.read64(mRest.begin, value)) return false;
        mRest.begin += 8;
        return true;
    }
    int64_t left() const { return mRest.size(); }

  private:
    ExactReader& mReader;
    ByteRange mRest;
};

class FragmentWalk {
  public:
    FragmentWalk(ExactReader& reader, const Mp4Movie& movie, int32_t trackId,
                 CompositionTable* table)
        : mReader(reader), mMovie(movie), mTrackId(trackId), mTable(table) {}

    bool walk() {
        for (BoxWalk box(mReader, {mMovie.end, mReader.wholeFile().end}); box.next();) {
            if (box.type() == fourCharacterCode("moof") && !readFragment(box.payload()))
                return false;
        }
        return !mReader.failed() && mTable->fragmentOffsets.finish();
    }

  private:
    struct TrackFragment {
        int32_t trackId;
        bool wanted;
        // The demultiplexer has a stream for it. It steps over the runs of others without
        // moving the end of the last run.
        bool known;
        Position base;
        uint32_t sampleSize;
    };

    bool readFragment(const ByteRange& payload) {
        // The demultiplexer counts from 8 bytes before the payload, even after a header of 16.
        mFragmentStart = payload.begin - 8;
        mRunEnd = mFragmentStart;
        for (BoxWalk box(mReader, payload); box.next();) {
            if (box.type() == fourCharacterCode("traf") && !readTrackFragment(box.payload()))
                return false;
        }
        return !mReader.failed();
    }

    bool readTrackFragment(const ByteRange& range) {
        std::optional<TrackFragment> fragment;
        for (BoxWalk box(mReader, range); box.next();) {
            if (box.type() == fourCharacterCode("tfhd")) {
                fragment.emplace();
                if (!readHeader(box.payload(), &*fragment)) return false;
            } else if (box.type() == fourCharacterCode("trun")) {
                if (!fragment || !readRun(box.payload(), *fragment)) return false;
            }
        }
        return true;
    }

    bool readHeader(const ByteRange& payload, TrackFragment* fragment) {
        FieldReader fields(mReader, payload);
        uint32_t flags;
        uint32_t id;
        uint32_t ignored;
        if (!fields.next32(&flags) || !fields.next32(&id)) return false;
        fragment->trackId = static_cast<int32_t>(id);
        const Mp4FragmentDefaults* defaults = mMovie.defaultsOf(fragment->trackId);
        if (defaults == nullptr) return false;
        fragment->wanted = fragment->trackId == mTrackId;
        fragment->known = defaults->hasTrack;
        if ((flags & kTfhdBaseDataOffset) != 0) {
            uint64_t base;
            if (!fields.next64(&base)) return false;
            if (base <= INT64_MAX) fragment->base = static_cast<int64_t>(base);
        } else {
            fragment->base = (flags & kTfhdDefaultBaseIsMoof) != 0 ? mFragmentStart : mRunEnd;
        }
        if ((flags & kTfhdSampleDescription) != 0 && !fields.next32(&ignored)) return false;
        if ((flags & kTfhdDefaultDuration) != 0 && !fields.next32(&ignored)) return false;
        fragment->sampleSize = defaults->sampleSize;
        return (flags & kTfhdDefaultSize) == 0 || fields.next32(&fragment->sampleSize);
    }

    bool readRun(const ByteRange& payload, const TrackFragment& fragment) {
        FieldReader fields(mReader, payload);
        uint32_t flags;
        uint32_t count;
        uint32_t dataOffset = 0;
        uint32_t ignored;
        if (!fields.next32(&flags) || !fields.next32(&count)) return false;
        if ((flags & kTrunDataOffset) != 0 && !fields.next32(&dataOffset)) return false;
        if ((flags & kTrunFirstSampleFlags) != 0 && !fields.next32(&ignored)) return false;
        if (!fragment.known) return true;
        // Counted from the track fragment's base even when an earlier run precedes it.
        Position position = advanced(fragment.base, static_cast<int32_t>(dataOffset));
        const int64_t fieldCount = __builtin_popcount(
                flags & (kTrunDuration | kTrunSize | kTrunFlags | kTrunCompositionOffset));
        if (count > 0 && fields.left() / count < 4 * fieldCount) return false;
        if (fragment.wanted && !addCount(count)) return false;

        const bool hasOffsets = fragment.wanted && (flags & kTrunCompositionOffset) != 0;
        if ((flags & kTrunSize) == 0 && !hasOffsets) {
            // No table to read, and count may be any number.
            int64_t size;
            const bool fits = !__builtin_mul_overflow(
                    static_cast<int64_t>(count), static_cast<int64_t>(fragment.sampleSize), &size);
            mRunEnd = fits ? advanced(position, size) : std::nullopt;
            return true;
        }
        for (uint32_t i = 0; i < count; ++i) {
            uint32_t size = fragment.sampleSize;
            uint32_t offset = 0;
            if ((flags & kTrunDuration) != 0 && !fields.next32(&ignored)) return false;
            if ((flags & kTrunSize) != 0 && !fields.next32(&size)) return false;
            if ((flags & kTrunFlags) != 0 && !fields.next32(&ignored)) return false;
            if ((flags & kTrunCompositionOffset) != 0 && !fields.next32(&offset)) return false;
            if (hasOffsets) {
                if (!position) return false;
                mTable->fragmentOffsets.append(*position, static_cast<int32_t>(offset));
            }
            position = advanced(position, size);
        }
        mRunEnd = position;
        return true;
    }

    bool addCount(uint32_t count) {
        return !__builtin_add_overflow(mTable->runSampleCount, uint64_t{count},
                                       &mTable->runSampleCount);
    }

    ExactReader& mReader;
    const Mp4Movie& mMovie;
    const int32_t mTrackId;
    CompositionTable* const mTable;
    int64_t mFragmentStart = 0;
    // After the last sample of the previous run of any track; at first the fragment's start.
    Position mRunEnd;
};

}  // namespace

bool readFragments(ExactReader& reader, const Mp4Movie& movie, int32_t trackId,
                   CompositionTable* table) {
    return FragmentWalk(reader, movie, trackId, table).walk();
}

}  // namespace orvel
