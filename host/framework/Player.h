#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <vector>

#include "framework/Extractor.h"

namespace orvel::host {

/**
 * Reads tracks of one extractor as a player does: all are started first, in index order, then read
 * by time. Every track has a buffer group of its own. End of stream or an error ends a track; the
 * others go on.
 *
 * One thread. The extractor is needed during construction only; the source must outlive the player.
 */
class Player {
  public:
    struct Options {
        /** Begin with a seek of every track, video first (as the framework does), then index order.
         */
        std::optional<ReadOptions::Seek> seek;
        /** Samples a track at most; a track that has had them is left alone, neither read nor
         * ended. */
        uint64_t limitPerTrack = std::numeric_limits<uint64_t>::max();
    };

    /** What one play() call got from one track. */
    struct TrackResult {
        size_t index = 0;  // the extractor's
        uint64_t samples = 0;
        uint64_t bytes = 0;
        std::optional<int64_t> firstTimeUs;  // of the first sample in reading order
        std::optional<int64_t> lastTimeUs;   // of the last one
        /**
         * Of the last read; of the start when that failed (the track is then never read); OK when
         * no read was made or the last one gave a sample.
         */
        android::status_t status = android::OK;
        /** Of the read that carried the seek request; OK without one. */
        android::status_t seekStatus = android::OK;
    };

    /**
     * Called for each sample, right after it was read. `index` is the extractor's. The buffer may
     * be moved away to keep it; it then counts as taken from the track's group until it goes.
     * False: the track gets no more reads in this play() call.
     */
    using OnSample = std::function<bool(size_t index, Buffer& buffer)>;

    /**
     * Takes the tracks of these indices (in ascending order, without repeats) and starts them. An
     * index that the extractor refuses, or a start that fails, is that track's result.
     */
    Player(const Extractor& extractor, std::vector<size_t> indices);
    /** All tracks. */
    explicit Player(const Extractor& extractor);
    /** Stops the started tracks in index order. */
    ~Player();
    Player(Player&&) = default;
    Player& operator=(Player&&) = delete;

    /**
     * Reads until every track has ended, had its limit, or was given up by the callback. May be
     * called again: with a seek it begins there, also on tracks that had ended; without one it goes
     * on. One result per track, in index order.
     */
    std::vector<TrackResult> play(const Options& options, const OnSample& onSample);

    size_t trackCount() const { return mEntries.size(); }
    /** The extractor's index of the track at `position`. */
    size_t index(size_t position) const { return mEntries[position].index; }
    /** Null when the extractor gave none or its start failed. */
    Track* track(size_t position);
    const BufferGroup& group(size_t position) const { return mEntries[position].group; }

  private:
    struct Entry {
        bool isStarted() const { return track && track->isStarted(); }

        size_t index = 0;
        BufferGroup group;
        std::optional<Track> track;
        bool isVideo = false;
        // Where the last play() call left the track.
        std::optional<int64_t> lastTimeUs;
        android::status_t status = android::OK;
    };
    class Run;

    std::vector<Entry> mEntries;
};

}  // namespace orvel::host
