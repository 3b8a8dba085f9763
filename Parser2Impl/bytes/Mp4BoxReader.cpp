#include "Mp4BoxReader.h"

#include "Mp4Fragments.h"

namespace orvel {

const Mp4Track* Mp4BoxReader::findTrack(ExactReader& reader, const Mp4TrackRef& ref) {
    if (!mMovie && mMovieAttempts.left()) {
        mMovie = readMovie(reader);
        if (mMovie) {
            mTableAttempts.resize(mMovie->tracks.size());
        } else {
            mMovieAttempts.failed(reader);
        }
    }
    const Mp4Track* track = mMovie ? mMovie->track(ref.id, ref.nth) : nullptr;
    return track != nullptr && !track->ambiguous ? track : nullptr;
}

std::optional<std::vector<ByteRange>> Mp4BoxReader::timedTextDescriptions(const Mp4TrackRef& ref) {
    constexpr int64_t kHeadSize = 8;        // of stsd: version, flags, entry count
    constexpr int64_t kEntryHeadSize = 16;  // size, type, reserved, data-reference index
    constexpr uint32_t kMaxEntries = 1024;  // the demultiplexer refuses more
    ExactReader reader(mSource);
    const Mp4Track* track = findTrack(reader, ref);
    if (track == nullptr || !track->stsd) return std::nullopt;
    ByteRange rest = *track->stsd;
    uint32_t entryCount;
    if (rest.size() < kHeadSize || !reader.read32(rest.begin + 4, &entryCount)) return std::nullopt;
    if (entryCount > kMaxEntries) return std::nullopt;
    rest.begin += kHeadSize;

    std::vector<ByteRange> descriptions;
    for (uint32_t i = 0; i < entryCount; ++i) {
        uint32_t size;
        uint32_t type;
        if (rest.size() < kEntryHeadSize || !reader.read32(rest.begin, &size) ||
            !reader.read32(rest.begin + 4, &type) || size < kEntryHeadSize || size > rest.size()) {
            return std::nullopt;
        }
        const ByteRange entry{rest.begin, rest.begin + size};
        rest.begin = entry.end;
        if (type == fourCharacterCode("tx3g")) descriptions.push_back(entry);
    }
    // The last byte is there, and so are all before it.
    uint8_t last;
    if (!descriptions.empty() && !reader.read(descriptions.back().end - 1, &last, 1)) {
        return std::nullopt;
    }
    return descriptions;
}

bool Mp4BoxReader::readRanges(const std::vector<ByteRange>& ranges, uint8_t* out) {
    ExactReader reader(mSource);
    for (const ByteRange& range : ranges) {
        const auto size = static_cast<size_t>(range.size());
        if (!reader.read(range.begin, out, size)) return false;
        out += size;
    }
    return true;
}

bool Mp4BoxReader::hasSyncGroups(const Mp4TrackRef& ref) {
    ExactReader reader(mSource);
    const Mp4Track* track = findTrack(reader, ref);
    return track != nullptr && track->hasSyncGroups;
}

std::optional<CompositionTable> Mp4BoxReader::compositionTable(const Mp4TrackRef& ref,
                                                               size_t maxSamples) {
    ExactReader reader(mSource);
    const Mp4Track* track = findTrack(reader, ref);
    if (track == nullptr) return std::nullopt;
    Mp4Attempts& attempts = mTableAttempts[static_cast<size_t>(track - mMovie->tracks.data())];
    CompositionTable table;
    if (!attempts.left()) return std::nullopt;
    if (!readCompositionTable(reader, *track, ref, maxSamples, &table)) {
        attempts.failed(reader);
        return std::nullopt;
    }
    return table;
}

bool Mp4BoxReader::readCompositionTable(ExactReader& reader, const Mp4Track& track,
                                        const Mp4TrackRef& ref, size_t maxSamples,
                                        CompositionTable* table) {
    if (mMovie->fragmentsBroken) return false;
    if (track.ctts && !readCompositionOffsets(reader, *track.ctts, maxSamples, table)) return false;
    // Of tracks with one id, the first gets all the runs.
    return mMovie->fragmentDefaults.empty() || ref.nth != 0 ||
           readFragments(reader, *mMovie, ref.id, table);
}

}  // namespace orvel
