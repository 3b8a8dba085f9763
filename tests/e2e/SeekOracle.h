#pragma once

#include <deque>
#include <optional>

#include "framework/ReadOptions.h"
#include "support/Demuxer.h"

namespace orvel::test {

/** A track as far as seeking goes. */
struct SoughtTrack {
    int stream;          // of libavformat
    bool isVideo;        // else audio
    int64_t durationUs;  // 0 or less: not known
};

/**
 * Where seeks should land, and what they then give. Two answers: one from nothing but a full read
 * of the file, and that of plain libavformat driven by the rules of seeking over the same bytes.
 */
class SeekOracle {
  public:
    /** `craKeys`: the video's open key pictures are marked by sample groups. */
    SeekOracle(host::DataSource& source, const std::string& demuxer,
               std::vector<SoughtTrack> tracks, bool craKeys = false);

    struct Frame {
        int64_t time;  // of presentation; stream time base, as the next
        int64_t decodeTime;
        int64_t position;
        bool key;
    };
    struct Landing {
        const Frame* frame;
        bool forward;  // the key frame behind the time was chosen
    };
    /** By the full read: the key frame at or before the frame that is closest to the time (MP4
     * video) or the time itself, at or after it, or the nearer one; where there is none that way,
     * the other. */
    Landing landing(size_t track, int64_t timeUs, host::SeekMode mode) const;
    int64_t timeUs(size_t track, const Frame& frame) const;
    /** Whether a seek that gave this sample landed there. PCM can be entered at every time. */
    bool isRight(size_t track, int64_t timeUs, host::SeekMode mode, const Sample& sample) const;

    struct Outcome {
        android::status_t status = android::OK;
        bool refused = false;  // behind the duration
        std::optional<Sample> sample;
        std::optional<int64_t> targetUs;
    };
    /** The read of one track that seeks; the caller asks for all tracks, video first. */
    Outcome seek(size_t track, int64_t timeUs, host::SeekMode mode);
    /** The track's samples from there to the end. */
    std::vector<Sample> readOn(size_t track);

    /** Frames by the full read, in decode order. */
    const std::vector<Frame>& frames(size_t track) const { return mFrames[track]; }
    const std::vector<SoughtTrack>& tracks() const { return mTracks; }

  private:
    AVStream* stream(size_t track) const;
    bool isMovVideo(size_t track) const { return mIsMov && mTracks[track].isVideo; }
    bool knowsClosest(size_t track) const;
    const Frame& closest(size_t track, int64_t timestamp) const;
    bool move(size_t track, int64_t timeUs, host::SeekMode mode);
    bool isForwardNearer(size_t track, int64_t timestamp) const;
    std::optional<Sample> next(size_t track);

    const std::vector<SoughtTrack> mTracks;
    const bool mIsMov;
    const bool mCraKeys;
    Demuxer mDemuxer;
    std::vector<std::vector<Frame>> mFrames;  // by track
    std::vector<std::deque<Sample>> mCaches;  // by track
    bool mEnded = false;
    bool mVideoRefused = false;
};

}  // namespace orvel::test
