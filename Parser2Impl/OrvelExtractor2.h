#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include "base/OrvelDataSource.h"
#include "base/OrvelMetaData.h"

namespace orvel {

class FFmpegObject;

// The extractor of one opened file: creates the container object and hands it every question.
// Construction opens the file and may block for as long as the source's I/O takes. An extractor
// whose file could not be opened exists all the same, with no tracks.
//
// Called on the framework's threads. No lock and nothing that changes after construction.
// Virtual slots follow those of RefBase in the order written here.
class OrvelExtractor2 : public android::RefBase {
  public:
    // sniffMessage holds the pointer "ff-format", the input format to open with, and may hold the
    // int32s "flags" (added to the buffer mode) and "localMode" (the playback mode). Without a
    // message or its "ff-format" there is no container object.
    OrvelExtractor2(const android::sp<OrvelDataSource>& source,
                    const android::sp<android::AMessage>& sniffMessage);

    android::status_t initCheck() const;  // OK, or NO_INIT when the file could not be opened

    virtual size_t countTracks();  // 0 without an opened file

    // A new track, which the caller owns; null for an index not below countTracks().
    virtual android::MediaTrackHelper* getTrack(size_t index);

    // Adds the track's format entries to meta. Bit 0 of flags asks for "thumbnail-time" (us) as
    // well, which a track without "durationUs" does not have; no other bit means anything.
    // BAD_VALUE for an index not below countTracks().
    virtual android::status_t getTrackMetaData(OrvelMetaData& meta, size_t index, uint32_t flags);

    // Adds the file's entries to meta; OK. BAD_VALUE when there is no container object.
    virtual android::status_t getMetaData(OrvelMetaData& meta);

    virtual const char* name();  // a constant

  protected:
    ~OrvelExtractor2() override;

  private:
    OrvelExtractor2(const OrvelExtractor2&) = delete;
    OrvelExtractor2& operator=(const OrvelExtractor2&) = delete;

    // Opens the file and has its track list built.
    android::status_t open();
    bool isInvalid(size_t index) const;

    // In reverse order of their release.
    android::sp<FFmpegObject> mObject;  // null without an input format
    const android::sp<OrvelDataSource> mDataSource;
    const android::sp<android::AMessage> mSniffMessage;  // may be null
    android::status_t mInitCheck;
};

}  // namespace orvel
