#pragma once

#include <media/MediaExtractorPluginApi.h>

#include <optional>

#include "framework/Format.h"

namespace orvel::host {

/**
 * One delivered sample in a buffer of a BufferGroup; goes back to the group on destruction, from
 * whatever thread, also when the track and the group's owner are gone. Move-only.
 *
 * An empty Buffer (default-made, or moved from) is false and answers nothing else.
 */
class Buffer {
  public:
    Buffer() = default;
    /** Takes over the reference that acquire_buffer gave; null makes an empty Buffer. */
    explicit Buffer(android::CMediaBuffer* buffer) : mBuffer(buffer) {}
    ~Buffer() { reset(); }
    Buffer(Buffer&& other) noexcept;
    Buffer& operator=(Buffer&& other) noexcept;

    explicit operator bool() const { return mBuffer != nullptr; }

    /** First byte of the valid range. */
    const uint8_t* data() const;
    /** Length of the valid range in bytes. */
    size_t size() const;
    /** The memory behind it, in bytes. */
    size_t capacity() const;

    /** Everything that was set on this sample. Valid as long as the Buffer holds it. */
    FormatView format() const;
    /** "timeUs": presentation time in microseconds. */
    std::optional<int64_t> timeUs() const;
    /** "is-sync-frame". */
    std::optional<bool> isSync() const;
    /** "target-time" in microseconds: after a frame-exact seek, up to where to decode only. */
    std::optional<int64_t> targetTimeUs() const;

    /** Gives the buffer back now. */
    void reset();
    android::CMediaBuffer* get() const { return mBuffer; }

  private:
    android::CMediaBuffer* mBuffer = nullptr;
};

}  // namespace orvel::host
