#pragma once

#include <stddef.h>
#include <stdint.h>

#include <utils/RefBase.h>

#include "FFmpegCompat.h"

namespace orvel {

class OrvelDataSource;

// Lets libavformat read the framework's data source: owns an AVIOContext whose callbacks turn
// FFmpeg's stream-style reads and seeks into positioned reads.
//
// Used only by the thread that runs the FFmpeg call on the format context at that moment (the
// framework's thread while a container is opened, the reader's looper afterwards); no lock. The
// data source is not owned: the container object keeps it alive.
class FFmpegIO : public android::RefBase {
  public:
    // dataSource: an OrvelDataSource. A context that could not be allocated shows in getContext().
    explicit FFmpegIO(void* dataSource);

    // The context for AVFormatContext::pb, owned by this object; null when out of memory.
    AVIOContext* getContext() const { return mIOContext; }

  protected:
    // Frees the I/O buffer that the context holds by now, the callback record and the context. The
    // format context may still point to it, and is closed without touching it.
    ~FFmpegIO() override;

  private:
    struct IOData* mIOData;
    AVIOContext* mIOContext;
};

// The callbacks' opaque argument.
struct IOData {
    uint8_t* mBuffer;     // handed to the context, which may have replaced it since
    int32_t mBufferSize;  // bytes
    OrvelDataSource* mDataSource;
    int64_t mOffset;  // byte position of the next read
};

static_assert(offsetof(IOData, mBuffer) == 0 && offsetof(IOData, mBufferSize) == 8 &&
              offsetof(IOData, mDataSource) == 16 && offsetof(IOData, mOffset) == 24);

// AVIOContext read callback: bytes read, AVERROR_EOF at the end, or the source's negative status.
// The position moves by what was read.
int readDataSource(void* opaque, uint8_t* buffer, int size);

// AVIOContext seek callback: the new position, the size for AVSEEK_SIZE (negative when unknown), or
// AVERROR(EINVAL) with the position unchanged. A target past the end is accepted.
int64_t seekDataSource(void* opaque, int64_t offset, int whence);

}  // namespace orvel
