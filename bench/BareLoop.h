#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "framework/DataSource.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace orvel::bench {

/** What every case is compared with failed. */
class BareError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/**
 * The least that any extractor over FFmpeg must do: open the container, read its stream
 * information, read packets one after the other on the calling thread. Same source, same I/O
 * settings, same demuxer options as the plug-in; no caches, no other thread. One thread; the source
 * must outlive it.
 */
class BareDemuxer {
  public:
    enum class As {
        Extractor,  // with the options that the plug-in reads a file with
        Sniffer,    // with those that it looks into a file with: none
    };

    /** Opens with the demuxer of this short name, without probing. Throws BareError. */
    BareDemuxer(host::DataSource& source, const char* demuxer, As use = As::Extractor);
    ~BareDemuxer();
    BareDemuxer(const BareDemuxer&) = delete;
    BareDemuxer& operator=(const BareDemuxer&) = delete;

    /** The next packet, valid until the next call; null at the end. Throws BareError. */
    const AVPacket* next();
    /** The next packet of this stream. Throws BareError, at the end of the file, too. */
    const AVPacket& nextOf(int stream);
    /** To the key frame at or before this time. Throws BareError. */
    void seekBackward(int stream, int64_t timeUs);

    /** -1 when there is none. */
    int bestStream(AVMediaType type) const;
    const AVFormatContext* context() const { return mContext; }

  private:
    struct Input {
        host::DataSource* source;
        int64_t offset;
    };
    static int read(void* opaque, uint8_t* buffer, int size);
    static int64_t seek(void* opaque, int64_t offset, int whence);
    void open(const char* demuxer, As use);
    void close();

    Input mInput;
    AVIOContext* mIO = nullptr;
    AVFormatContext* mContext = nullptr;
    AVPacket* mPacket = nullptr;
};

/** Where the bare loop puts its payloads: one buffer, as large as the largest so far. */
class Payload {
  public:
    /** One memcpy. */
    size_t copy(const AVPacket& packet);
    /** The copy of big-endian 16-bit sound to a little-endian machine. */
    size_t swap16(const AVPacket& packet);

  private:
    uint8_t* room(const AVPacket& packet);

    std::vector<uint8_t> mBuffer;
};

}  // namespace orvel::bench
