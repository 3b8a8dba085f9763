#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "framework/DataSource.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace orvel::bench {

/**
 * The least that any extractor over FFmpeg must do: open the container, read its stream
 * information, read packets one after the other on the calling thread. Same source, same I/O
 * settings, same demuxer options as the plug-in; no caches, no other thread. One thread; the source
 * must outlive it. Every operation throws std::runtime_error when FFmpeg fails.
 */
class BareDemuxer {
  public:
    /**
     * Opens with the demuxer of this short name, without probing. `asExtractor`: with the options
     * that the plug-in reads a file with; it looks into a file that it sniffs with none.
     */
    BareDemuxer(host::DataSource& source, const char* demuxer, bool asExtractor = true);
    BareDemuxer(const BareDemuxer&) = delete;
    BareDemuxer& operator=(const BareDemuxer&) = delete;

    /** The next packet, valid until the next call; null at the end. */
    const AVPacket* next();
    /** The next packet of this stream. Throws at the end of the file, too. */
    const AVPacket& nextOf(int stream);
    /** To the key frame at or before this time. */
    void seekBackward(int stream, int64_t timeUs);

    /** -1 when there is none. */
    int bestStream(AVMediaType type) const;
    const AVFormatContext* context() const { return mContext.get(); }

  private:
    static int read(void* opaque, uint8_t* buffer, int size);
    static int64_t seek(void* opaque, int64_t offset, int whence);

    struct Free {
        void operator()(AVIOContext* io) const;
        void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
        void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    };
    host::DataSource& mSource;
    int64_t mOffset = 0;
    std::unique_ptr<AVIOContext, Free> mIO;
    std::unique_ptr<AVFormatContext, Free> mContext;
    std::unique_ptr<AVPacket, Free> mPacket;
};

/** Where the bare loop puts its payloads: one buffer, as large as the largest so far. */
class Payload {
  public:
    /** One memcpy; returns the bytes. */
    size_t copy(const AVPacket& packet);
    /** The copy of big-endian 16-bit sound to a little-endian machine; returns the bytes. */
    size_t swap16(const AVPacket& packet);

  private:
    uint8_t* room(size_t size);

    std::vector<uint8_t> mBuffer;
};

}  // namespace orvel::bench
