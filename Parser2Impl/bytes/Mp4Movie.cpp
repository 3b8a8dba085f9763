#include "Mp4Movie.h"

#include <algorithm>

namespace orvel {

namespace {

// The demultiplexer refuses files with more streams than this (its option "max_streams").
constexpr size_t kMaxTracks = 1000;

bool readTrackHeader(ExactReader& reader, const ByteRange& payload, Mp4Track* track) {
    // Version 1 has 64-bit creation and modification times before the id (8.3.2).
    uint8_t version;
    if (payload.size() < 16 || !reader.read(payload.begin, &version, 1)) return false;
    const int64_t offset = version == 1 ? 20 : 12;
    uint32_t id;
    if (payload.size() < offset + 4 || !reader.read32(payload.begin + offset, &id)) return false;
    track->id = static_cast<int32_t>(id);
    return true;
}

void keepOnly(std::optional<ByteRange>* slot, const ByteRange& payload, Mp4Track* track) {
    if (slot->has_value()) track->ambiguous = true;
    *slot = payload;
}

// trak > mdia > minf > stbl, a fixed descent: nothing else is entered.
bool readTrack(ExactReader& reader, const ByteRange& range, Mp4Track* track) {
    for (BoxWalk box(reader, range); box.next();) {
        if (box.type() == fourCharacterCode("tkhd") &&
            !readTrackHeader(reader, box.payload(), track)) {
            return false;
        }
        if (box.type() != fourCharacterCode("mdia")) continue;
        for (BoxWalk media(reader, box.payload()); media.next();) {
            if (media.type() != fourCharacterCode("minf")) continue;
            for (BoxWalk info(reader, media.payload()); info.next();) {
                if (info.type() != fourCharacterCode("stbl")) continue;
                for (BoxWalk table(reader, info.payload()); table.next();) {
                    if (table.type() == fourCharacterCode("stsd")) {
                        keepOnly(&track->stsd, table.payload(), track);
                    } else if (table.type() == fourCharacterCode("ctts")) {
                        keepOnly(&track->ctts, table.payload(), track);
                    } else if (table.type() == fourCharacterCode("sbgp")) {
                        uint32_t grouping;
                        if (table.payload().size() >= 8 &&
                            reader.read32(table.payload().begin + 4, &grouping) &&
                            grouping == fourCharacterCode("sync")) {
                            track->hasSyncGroups = true;
                        }
                    }
                }
            }
        }
    }
    return true;
}

void readFragmentDefaults(ExactReader& reader, const ByteRange& range, Mp4Movie* movie) {
    constexpr int64_t kTrexSize = 24;
    for (BoxWalk box(reader, range); box.next();) {
        if (box.type() != fourCharacterCode("trex")) continue;
        uint32_t id;
        uint32_t sampleSize;
        if (box.payload().size() < kTrexSize || !reader.read32(box.payload().begin + 4, &id) ||
            !reader.read32(box.payload().begin + 16, &sampleSize)) {
            movie->fragmentsBroken = true;
            return;
        }
        movie->fragmentDefaults.push_back({static_cast<int32_t>(id), sampleSize, false});
    }
}

// For fragments, which name tracks by the million: one search among the defaults tells all.
void indexFragmentDefaults(Mp4Movie* movie) {
    std::vector<int32_t> ids;
    for (const Mp4Track& track : movie->tracks) {
        if (track.id) ids.push_back(*track.id);
    }
    std::sort(ids.begin(), ids.end());
    for (Mp4FragmentDefaults& defaults : movie->fragmentDefaults) {
        defaults.hasTrack = std::binary_search(ids.begin(), ids.end(), defaults.trackId);
    }
    std::stable_sort(movie->fragmentDefaults.begin(), movie->fragmentDefaults.end(),
                     [](const auto& a, const auto& b) { return a.trackId < b.trackId; });
}

bool readMovieBox(ExactReader& reader, const ByteRange& range, Mp4Movie* movie) {
    for (BoxWalk box(reader, range); box.next();) {
        switch (box.type()) {
            case fourCharacterCode("trak"):
                if (movie->tracks.size() == kMaxTracks) return false;
                movie->tracks.emplace_back();
                if (!readTrack(reader, box.payload(), &movie->tracks.back())) return false;
                break;
            case fourCharacterCode("mvex"):
                readFragmentDefaults(reader, box.payload(), movie);
                break;
            case fourCharacterCode("cmov"):  // the demultiplexer inflates it and sees another movie
                return false;
            default:
                break;
        }
    }
    indexFragmentDefaults(movie);
    movie->end = range.end;
    return !reader.failed();
}

}  // namespace

const Mp4Track* Mp4Movie::track(int32_t id, uint32_t nth) const {
    uint32_t before = 0;
    for (const Mp4Track& candidate : tracks) {
        if (candidate.id != id) continue;
        if (before == nth) return &candidate;
        ++before;
    }
    return nullptr;
}

const Mp4FragmentDefaults* Mp4Movie::defaultsOf(int32_t trackId) const {
    const auto found = std::lower_bound(
            fragmentDefaults.begin(), fragmentDefaults.end(), trackId,
            [](const Mp4FragmentDefaults& defaults, int32_t id) { return defaults.trackId < id; });
    return found != fragmentDefaults.end() && found->trackId == trackId ? &*found : nullptr;
}

std::optional<Mp4Movie> readMovie(ExactReader& reader) {
    for (BoxWalk box(reader, reader.wholeFile()); box.next();) {
        // The demultiplexer takes a 'hoov' (a hidden movie) for the movie in some cases.
        if (box.type() == fourCharacterCode("hoov")) return std::nullopt;
        if (box.type() != fourCharacterCode("moov")) continue;
        Mp4Movie movie;
        if (!readMovieBox(reader, box.payload(), &movie)) return std::nullopt;
        return movie;
    }
    return std::nullopt;
}

}  // namespace orvel
