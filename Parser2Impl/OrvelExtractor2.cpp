#define LOG_TAG "OrvelExtractor2"
#include "OrvelExtractor2.h"

#include <string.h>

#include <log/log.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "OrvelSource2.h"
#include "WrapOrvelSource.h"
#include "ffmpeg/FFmpegObject.h"

namespace orvel {

using android::AMessage;
using android::BAD_VALUE;
using android::MediaTrackHelper;
using android::NO_INIT;
using android::OK;
using android::sp;
using android::status_t;

namespace {

constexpr uint32_t kIncludeThumbnailTime = 1;

// Whether a format holds a duration. OrvelMetaData cannot tell: its find reports success for every
// key that its tables know.
bool findDuration(const OrvelMetaData& meta, int64_t* durationUs) {
    return AMediaFormat_getInt64(meta.getHandle(), "durationUs", durationUs);
}

}  // namespace

OrvelExtractor2::OrvelExtractor2(const sp<OrvelDataSource>& source,
                                 const sp<AMessage>& sniffMessage)
    : mDataSource(source), mSniffMessage(sniffMessage), mInitCheck(NO_INIT) {
    mInitCheck = open();
    if (mInitCheck == OK) ALOGI("Construct OrvelExtractor2 success!");
}

OrvelExtractor2::~OrvelExtractor2() = default;

status_t OrvelExtractor2::open() {
    void* format = nullptr;
    if (mSniffMessage == nullptr || !mSniffMessage->findPointer("ff-format", &format) ||
        format == nullptr) {
        return NO_INIT;
    }
    mObject = new FFmpegObject(mDataSource, static_cast<AVInputFormatPtr>(format));
    if (mObject->initCheck() != OK) return NO_INIT;
    int32_t flags;
    if (mSniffMessage->findInt32("flags", &flags)) {
        mObject->setBufferMode(mObject->getBufferMode() | flags);
    }
    int32_t localMode;
    if (mSniffMessage->findInt32("localMode", &localMode)) mObject->setPlayBackMode(localMode);
    mObject->addTrackInfos();
    return OK;
}

status_t OrvelExtractor2::initCheck() const {
    return mInitCheck;
}

bool OrvelExtractor2::isInvalid(size_t index) const {
    return mObject == nullptr || mObject->isInvalid(index);
}

size_t OrvelExtractor2::countTracks() {
    return mObject == nullptr ? 0 : mObject->getTracksCount();
}

MediaTrackHelper* OrvelExtractor2::getTrack(size_t index) {
    if (isInvalid(index)) return nullptr;
    ALOGD("getTrack: %zu", index);
    return new WrapOrvelSource(new OrvelSource2(mObject, index));
}

status_t OrvelExtractor2::getTrackMetaData(OrvelMetaData& meta, size_t index, uint32_t flags) {
    if (isInvalid(index)) return BAD_VALUE;
    const OrvelMetaData& trackMeta = *mObject->getTrackMeta(index);
    meta.copyEntriesFrom(trackMeta);
    if ((flags & kIncludeThumbnailTime) == 0) return OK;
    int64_t durationUs = 0;
    if (!findDuration(trackMeta, &durationUs)) return OK;
    meta.findInt64(kKeyDuration, &durationUs);
    const char* mime = nullptr;
    meta.findCString(kKeyMIMEType, &mime);
    const bool isRealVideo =
            mime != nullptr && strcmp(mime, android::MEDIA_MIMETYPE_VIDEO_REAL) == 0;
    meta.setInt64(kKeyThumbnailTime, isRealVideo ? 0 : durationUs / 4);
    return OK;
}

status_t OrvelExtractor2::getMetaData(OrvelMetaData& meta) {
    if (mObject == nullptr) return BAD_VALUE;
    mObject->getFileMeta(meta);
    return OK;
}

const char* OrvelExtractor2::name() {
    return "OrvelExtractor2";
}

}  // namespace orvel
