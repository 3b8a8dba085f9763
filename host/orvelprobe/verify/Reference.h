#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct AVFormatContext;

namespace orvel::probe {

class ReferenceError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct ReferencePacket {
    int64_t timeUs = 0;
    bool key = false;
    std::vector<uint8_t> data;  // as libavformat gives it, nothing converted
};

/** A stream that has to be a track, in the order of the tracks. */
struct ReferenceStream {
    int index = 0;  // libavformat's
    std::string mime;
    int bitsPerSample = 0;  // coded
    bool selected = false;  // the packets of others are dropped
    std::deque<ReferencePacket> queue;
};

/**
 * The file as plain libavformat reads it, for comparison; looks at no code of the plug-in. One
 * thread. Opens the file by its path, on its own.
 */
class Reference {
  public:
    /**
     * `containerMime`: names the demuxer; libavformat guesses only where it is empty. Edit lists
     * are ignored, as an extractor that leaves them to nobody does. Throws ReferenceError.
     */
    Reference(const std::string& path, const std::string& containerMime);

    const std::vector<ReferenceStream>& streams() const { return mStreams; }
    /** From now on its packets are kept. Before the first packet is asked for. */
    void select(size_t position);
    /**
     * The packet `ahead` of the next one of the stream at `position`; null after the last. Reads on
     * as far as it has to, keeping what other streams get meanwhile.
     */
    const ReferencePacket* peek(size_t position, size_t ahead = 0);
    void pop(size_t position) { mStreams[position].queue.pop_front(); }
    /** Whether the file ended with an error and not at its end. Once peek() gave null. */
    bool failed() const { return mFailed; }

    static std::string library();

  private:
    bool readOne();

    struct Close {
        void operator()(AVFormatContext* context) const;
    };
    std::unique_ptr<AVFormatContext, Close> mContext;
    std::vector<ReferenceStream> mStreams;
    bool mEnded = false, mFailed = false;
};

}  // namespace orvel::probe
