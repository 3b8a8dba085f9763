#pragma once

#include "support/Oracle.h"

namespace orvel::test {

/** Plain libavformat over a source: a format context over an I/O context of its own. */
class Demuxer {
  public:
    /** Opens the container, edit lists ignored, and reads its stream information. */
    Demuxer(host::DataSource& source, const std::string& name);
    ~Demuxer();
    Demuxer(const Demuxer&) = delete;
    Demuxer& operator=(const Demuxer&) = delete;

    bool isOpen() const { return mIsOpen; }
    AVFormatContext* context() const { return mContext; }
    /** A packet as a track delivers it: its time in us, its contents converted. */
    Sample asDelivered(const AVPacket& packet) const;

  private:
    static int read(void* opaque, uint8_t* data, int size);
    static int64_t seek(void* opaque, int64_t offset, int whence);

    host::DataSource& mSource;
    const std::string mName;
    int64_t mPosition = 0;
    AVIOContext* mPb = nullptr;
    AVFormatContext* mContext = nullptr;
    bool mIsOpen = false;
};

}  // namespace orvel::test
