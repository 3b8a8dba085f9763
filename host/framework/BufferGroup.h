#pragma once

#include <media/MediaExtractorPluginApi.h>
#include <media/NdkMediaError.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace orvel::host {

/**
 * The buffers that the framework lends to one track, with the behaviour of the framework's own
 * group, and with scripted misbehaviour for tests.
 *
 * Ownership: the object and every track started with it share an inner core that holds the buffers;
 * buffers that are out keep it alive, too. So the object, the track and the buffers may go in any
 * order, and release works at any time.
 *
 * Identity: a CMediaBuffer and its AMediaFormat stay the same objects as long as the core lives;
 * when a buffer is made larger, only the memory under it changes, while it is free. Memory is
 * aligned to 64 bytes and not cleared.
 *
 * Threads: everything may be called from any thread, except that a buffer between acquire and
 * release belongs to whoever holds it. One lock, innermost, never held while calling out. In steady
 * state an acquire and a release allocate nothing.
 *
 * Contract violations abort with a message: releasing a buffer that is not out, a range outside the
 * buffer.
 */
class BufferGroup {
  public:
    BufferGroup();
    ~BufferGroup();
    BufferGroup(BufferGroup&& other) noexcept;
    BufferGroup& operator=(BufferGroup&& other) noexcept;

    /** The C view, as a track's start takes it; lives as long as the core. */
    android::CMediaBufferGroup* table() const;

    /**
     * Makes `buffers` buffers of `bufferSize` bytes. growthLimit is how many buffers there may ever
     * be; 0, or less than `buffers`, means `buffers`. Called again (a track that is started once
     * more), it begins anew: free buffers are reused, those still out are no longer handed out once
     * they come back. False when there is not enough memory.
     */
    bool init(size_t buffers, size_t bufferSize, size_t growthLimit);

    /** Adds one buffer of `size` bytes, whatever the limit; a waiting acquire may take it. */
    void addBuffer(size_t size);

    /**
     * Hands out a buffer of at least `requestedSize` bytes, its range (0, size) and its format
     * empty. In this order: a free buffer that is large enough; below the growth limit, a new one;
     * a free but too small one, made larger (new memory has half as much again as was asked). With
     * every buffer out, waits until one comes back, without a time limit; non-blocking:
     * AMEDIA_ERROR_WOULD_BLOCK. No memory: what translate_error makes of NO_MEMORY. On
     * failure *out is null.
     */
    media_status_t acquire(android::CMediaBuffer** out, bool nonBlocking, size_t requestedSize);

    /** Whether an acquire of size 0 would succeed at once. */
    bool hasBuffers() const;

    // --- What a caller can check.

    /** Buffers that are out now. */
    size_t outstanding() const;
    /** Buffers that can be handed out, free or out. */
    size_t bufferCount() const;
    /** Bytes of memory under all buffers. */
    size_t totalBytes() const;
    /** acquire calls so far, failed ones included. */
    uint64_t acquires() const;
    /** Waits until `count` acquire calls are blocked; false when that took longer than `timeout`.
     */
    bool waitUntilBlocked(size_t count = 1,
                          std::chrono::milliseconds timeout = std::chrono::seconds(60)) const;

    // --- Scripted misbehaviour.

    /**
     * The acquire call of this number (from 1, since construction) returns `status` and no buffer.
     * AMEDIA_OK makes a success without a buffer. May be called for several numbers.
     */
    void failAcquire(uint64_t call, media_status_t status);
    /**
     * No buffer is ever larger than this: init, addBuffer and growth stop there, and a request for
     * more is handed a buffer that is too small. Holds for memory made from now on.
     */
    void setMaxBufferSize(size_t bytes);

    class Core;
    /** A share of the core, for Track. */
    std::shared_ptr<Core> core() const { return mCore; }

  private:
    std::shared_ptr<Core> mCore;
};

}  // namespace orvel::host
