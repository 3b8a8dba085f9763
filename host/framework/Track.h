#pragma once

#include <media/MediaExtractorPluginApi.h>
#include <utils/Errors.h>

#include <memory>

#include "framework/Buffer.h"
#include "framework/BufferGroup.h"
#include "framework/Format.h"
#include "framework/ReadOptions.h"

namespace orvel::host {

/** Outcome of one read. */
struct ReadResult {
    /** OK, ERROR_END_OF_STREAM, or an error: the plug-in's status, translated back. */
    android::status_t status = android::NO_INIT;
    /** The sample; empty unless status is OK (and then, too, if the plug-in breaks its contract).
     */
    Buffer buffer;
};

/**
 * A track of an extractor. Move-only. Frees the plug-in's track and its table on destruction, in
 * this order; a started track need not be stopped before. It may outlive its Extractor, not the
 * source. One thread at a time, as the framework does; different tracks may be used at once.
 *
 * Plug-ins abort on a read of a track that is not started, a second start and a stop without a
 * start.
 */
class Track {
  public:
    /** Takes over `table`, which may not be null. */
    explicit Track(android::CMediaTrack* table) : mTable(table) {}
    ~Track();
    Track(Track&& other) noexcept;
    Track& operator=(Track&& other) noexcept;

    /** Starts with buffers from `group`, of which it keeps a share as long as the track lives. */
    android::status_t start(const BufferGroup& group);
    android::status_t stop();
    bool isStarted() const { return mStarted; }

    /** Fills *format; on failure it stays as it is. */
    android::status_t format(Format* format) const;

    /** Reads one sample; blocks, unless the options say otherwise and the plug-in heeds it. */
    ReadResult read(const ReadOptions& options = {});
    bool supportsNonBlockingRead() const;

    android::CMediaTrack* table() const { return mTable; }

  private:
    void reset();

    android::CMediaTrack* mTable;
    std::shared_ptr<BufferGroup::Core> mGroup;
    bool mStarted = false;
};

}  // namespace orvel::host
