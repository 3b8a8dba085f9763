#include "framework/TrackScheduler.h"

namespace orvel::host {

TrackScheduler::TrackScheduler(size_t tracks) : mTracks(tracks) {}

std::optional<size_t> TrackScheduler::next() const {
    std::optional<size_t> best;
    for (size_t i = 0; i < mTracks.size(); ++i) {
        if (mTracks[i].ended) continue;
        if (!best || mTracks[i].lastTimeUs < mTracks[*best].lastTimeUs) best = i;
    }
    return best;
}

void TrackScheduler::delivered(size_t position, std::optional<int64_t> timeUs) {
    if (timeUs) mTracks[position].lastTimeUs = *timeUs;
}

void TrackScheduler::ended(size_t position) {
    mTracks[position].ended = true;
}

}  // namespace orvel::host
