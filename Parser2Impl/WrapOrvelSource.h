#pragma once

#include <media/MediaExtractorPluginHelper.h>
#include <utils/StrongPointer.h>

#include "OrvelSource2.h"

namespace orvel {

// An OrvelSource2 as the framework's helper class expects it. Called on the framework's threads,
// one call at a time; the framework's table owns it. supportsNonBlockingRead() stays the platform's
// default.
//
// Destruction releases the source first and deletes the buffer group's helper, in the base class,
// after it. With the last reference the source stops its track, which drops the reader's
// OrvelMediaBufferGroup: none outlives the helper under it.
class WrapOrvelSource final : public android::MediaTrackHelper {
  public:
    explicit WrapOrvelSource(const android::sp<OrvelSource2>& source);
    ~WrapOrvelSource() override;

    // Starts the source with the group that the framework's start entry has just installed.
    media_status_t start() override;
    media_status_t stop() override;
    // On a status other than AMEDIA_OK format and *buffer are left as they were.
    media_status_t getFormat(AMediaFormat* format) override;
    media_status_t read(android::MediaBufferHelper** buffer, const ReadOptions* options) override;

  private:
    // The group that the framework's start entry has installed in the base class, whose field has
    // one of two names.
    template <typename Self>
    static auto bufferGroupOf(Self* self, int) -> decltype(self->mGroupHelper) {
        return self->mGroupHelper;
    }
    template <typename Self>
    static auto bufferGroupOf(Self* self, long) -> decltype(self->mBufferGroup) {
        return self->mBufferGroup;
    }

    const android::sp<OrvelSource2> mSource;
};

}  // namespace orvel
