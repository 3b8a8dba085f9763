#pragma once

#include <optional>

#include "Report.h"
#include "framework/Buffer.h"
#include "verify/Reference.h"

namespace orvel::probe {

/**
 * Compares what the plug-in delivers with what plain libavformat reads, sample by sample. Fed while
 * the plug-in is read. One thread; what FFmpeg logs for it counts as nobody's.
 */
class Verifier {
  public:
    /** `tracks`: those that will be read; `allTracks`: how many the file has. */
    Verifier(const std::string& path, const Json& tracks, size_t allTracks);

    /** The next sample of the track of this index. */
    void sample(size_t track, const host::Buffer& buffer);
    /** How a track ended: a status, 0 at a limit. */
    void end(size_t track, int32_t status);
    /** Differences so far. */
    size_t count() const { return mCount; }
    /** "verify" of the JSON output. Once. */
    Json take();

  private:
    struct Lane {
        size_t track = 0;  // the plug-in's index, and the place in the reference's streams
        bool compared = false;
        // libavformat marks every packet of text as key, the plug-in goes by the file's index.
        bool comparesKey = true;
        Json format;
        uint64_t next = 0;  // number of the next sample
    };

    void match(const Json& tracks);
    std::vector<uint8_t> wanted(const Lane& lane, const ReferencePacket& packet) const;
    const ReferencePacket* find(const Lane& lane, const host::Buffer& buffer);
    void compare(const Lane& lane, const ReferencePacket& packet, const host::Buffer& buffer);
    void add(const char* what, const std::string& text, const Json& more);
    void addTrack(std::optional<size_t> track, const std::string& text);
    void addSample(const Lane& lane, const char* what, const std::string& text, Json more);
    void missing(const Lane& lane, const ReferencePacket& packet);

    Json mDifferences = Json::array();
    size_t mCount = 0;
    uint64_t mCompared = 0;
    std::unique_ptr<Reference> mReference;  // null when it cannot be opened
    std::vector<Lane> mLanes;               // by the plug-in's track index
};

/**
 * What a packet of libavformat's has to become on its way to a decoder: AVC and HEVC units with
 * start codes, 8 bits as the upper half of 16, big-endian PCM as little-endian. A malformed packet
 * is delivered as an empty sample.
 */
std::vector<uint8_t> delivered(const Json& format, int codedBitsPerSample,
                               const std::vector<uint8_t>& packet);
/** One of "differences" in words: "track 0, sample 3: ...". */
std::string differenceText(const Json& difference);

}  // namespace orvel::probe
