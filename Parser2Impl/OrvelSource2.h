#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/MediaExtractorPluginHelper.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include "base/OrvelMediaBuffer.h"
#include "base/OrvelMetaData.h"

namespace orvel {

class FFmpegObject;

// One track of an opened file. Every operation goes to the container object, which the source
// keeps alive by itself: the extractor may be gone.
//
// Called on the framework's threads. No lock: the calls for one source come one at a time; sources
// of one extractor may be used from different threads, the container object serialises them.
// Virtual slots follow those of RefBase in the order written here.
class OrvelSource2 : public android::RefBase {
  public:
    OrvelSource2(const android::sp<FFmpegObject>& object, size_t index);

    // Starts the track with "buffer-group" from params. OK whatever the container object made of
    // it: a track that could not be started reports that at its reads. A second start without a
    // stop is a contract violation and aborts, as a stop or a read without a start is.
    virtual android::status_t start(android::sp<OrvelMetaData> params);
    virtual android::status_t stop();  // OK

    virtual android::status_t getFormat(OrvelMetaData& meta);  // adds the track's entries; OK

    // Delivers the next sample in *out, after moving to the seek position when options (may be
    // null) ask for one. *out stays with its buffer group; it is null on every status but OK.
    // Returns the status of a refused seek, or what the container object's dequeueBuffer returns.
    // Blocks until there is a sample, an end or an error, unless the options say otherwise.
    virtual android::status_t read(IOrvelMediaBuffer** out,
                                   const android::MediaTrackHelper::ReadOptions* options);

  protected:
    ~OrvelSource2() override;  // stops the track if it is started

  private:
    OrvelSource2(const OrvelSource2&) = delete;
    OrvelSource2& operator=(const OrvelSource2&) = delete;

    const android::sp<FFmpegObject> mObject;
    const size_t mIndex;  // into the container object's track list
    bool mStarted = false;
};

}  // namespace orvel
