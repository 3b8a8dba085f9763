#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace orvel::host {

/**
 * Says which track a player reads next: the one whose last sample is earliest. Tracks that have
 * not given a sample yet come first; among equals the lowest position. Knows positions and times
 * only. One thread.
 */
class TrackScheduler {
  public:
    explicit TrackScheduler(size_t tracks);

    /** Position of the next track; nothing when all have ended. */
    std::optional<size_t> next() const;
    /** The track gave a sample. One without a time leaves the track's last time as it was. */
    void delivered(size_t position, std::optional<int64_t> timeUs);
    /** The track gives no more. */
    void ended(size_t position);
    bool hasEnded(size_t position) const { return mTracks[position].ended; }

  private:
    struct State {
        int64_t lastTimeUs = INT64_MIN;
        bool ended = false;
    };
    std::vector<State> mTracks;
};

}  // namespace orvel::host
