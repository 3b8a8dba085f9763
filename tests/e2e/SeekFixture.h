#pragma once

#include <algorithm>

#include "e2e/Opened.h"
#include "e2e/SeekOracle.h"
#include "framework/CountingSource.h"

namespace orvel::test {

inline host::ReadOptions seekTo(int64_t timeUs, host::SeekMode mode) {
    return {host::ReadOptions::Seek{timeUs, mode}};
}

/** The audio and video tracks, video first: the order in which a framework seeks them. */
std::vector<size_t> seekOrder(const host::Extractor& extractor, std::vector<SoughtTrack>* tracks);

/** An extractor with its audio and video tracks started, and the oracle beside it. Tracks go by
 * their place in the order of seeking. */
class SeekFixture {
  public:
    /** `source` gives `bytes`, in its own way. */
    SeekFixture(host::DataSource& source, const Bytes& bytes, const std::string& demuxer,
                bool craKeys = false);

    SeekOracle& oracle() { return mOracle; }
    size_t trackCount() const { return mOrder.size(); }
    host::Track& track(size_t i);

    /** Reads every track to its end; what they give is what the oracle says. */
    void readToTheEnd();
    /** Seeks the tracks as a framework does, and compares the first `compared` of them with the
     * oracle. What the first gave. */
    std::optional<Sample> seek(int64_t timeUs, host::SeekMode mode, size_t compared = SIZE_MAX);

  private:
    host::MemorySource mForOracle;
    host::CountingSource mSource;
    std::optional<host::Extractor> mExtractor;
    std::vector<SoughtTrack> mTracks;
    std::vector<size_t> mOrder;
    host::Player mPlayer;
    SeekOracle mOracle;
    // The demultiplexer then stands anywhere, and how far the read-ahead came before is not known.
    bool mSeekFailed = false;
};

}  // namespace orvel::test
