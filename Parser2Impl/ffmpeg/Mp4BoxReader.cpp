#include "ffmpeg/Mp4BoxReader.h"

#include <utility>

#include "ffmpeg/Mp4Fragments.h"

namespace orvel {

const Mp4Track* Mp4BoxReader::findTrack(ExactReader& reader, const Mp4TrackRef& ref) {
    if (!mMovie) mMovie = readMovie(reader);
    const Mp4Track* track = mMovie ? mMovie->track(ref.id, ref.nth) : nullptr;
    return track != nullptr && !track->ambiguous ? track : nullptr;
}

std::optional<std::vector<std::vector<uint8_t>>> Mp4BoxReader::timedTextDescriptions(
        const Mp4TrackRef& ref) {
    constexpr int64_t kHeadSize = 8;        // of stsd: version, flags, entry count
    constexpr int64_t kEntryHeadSize = 16;  // size, type, reserved, data-reference index
    ExactReader reader(mSource);
    const Mp4Track* track = findTrack(reader, ref);
    if (track == nullptr || !track->stsd) return std::nullopt;
    ByteRange rest = *track->stsd;
    uint32_t entryCount;
    if (rest.size() < kHeadSize || !reader.read32(rest.begin + 4, &entryCount)) return std::nullopt;
    rest.begin += kHeadSize;

    std::vector<std::vector<uint8_t>> descriptions;
    for (uint32_t i = 0; i < entryCount; ++i) {
        uint32_t size;
        uint32_t type;
        if (rest.size() < kEntryHeadSize || !reader.read32(rest.begin, &size) ||
            !reader.read32(rest.begin + 4, &type) || size < kEntryHeadSize || size > rest.size()) {
            return std::nullopt;
        }
        const ByteRange entry{rest.begin, rest.begin + size};
        rest.begin = entry.end;
        if (type != boxType("tx3g")) continue;
        std::vector<uint8_t> description;
        if (!reader.append(entry, &description)) return std::nullopt;
        descriptions.push_back(std::move(description));
    }
    return descriptions;
}

std::optional<CompositionTable> Mp4BoxReader::compositionTable(const Mp4TrackRef& ref,
                                                               size_t maxSamples) {
    ExactReader reader(mSource);
    const Mp4Track* track = findTrack(reader, ref);
    if (track == nullptr) return std::nullopt;
    CompositionTable table;
    if (track->ctts && !readCompositionOffsets(reader, *track->ctts, maxSamples, &table)) {
        return std::nullopt;
    }
    // Of tracks with one id, the first gets all the runs.
    if (!mMovie->fragmentDefaults.empty() && ref.nth == 0 &&
        !readFragments(reader, *mMovie, ref.id, &table)) {
        return std::nullopt;
    }
    return table;
}

}  // namespace orvel
