#define LOG_TAG "OrvelExtractor2"
#include "OrvelSource2.h"

#include <media/stagefright/foundation/ADebug.h>

#include "ffmpeg/FFmpegObject.h"

namespace orvel {

using android::MediaTrackHelper;
using android::OK;
using android::sp;
using android::status_t;

OrvelSource2::OrvelSource2(const sp<FFmpegObject>& object, size_t index)
    : mObject(object), mIndex(index) {}

OrvelSource2::~OrvelSource2() {
    if (mStarted) {
        mObject->stop(static_cast<int>(mIndex));
        mStarted = false;
    }
}

status_t OrvelSource2::start(sp<OrvelMetaData> params) {
    CHECK(!mStarted);
    mObject->start(static_cast<int>(mIndex), params);
    mStarted = true;
    return OK;
}

status_t OrvelSource2::stop() {
    CHECK(mStarted);
    mObject->stop(static_cast<int>(mIndex));
    mStarted = false;
    return OK;
}

status_t OrvelSource2::getFormat(OrvelMetaData& meta) {
    meta.copyEntriesFrom(*mObject->getTrackMeta(mIndex));
    return OK;
}

status_t OrvelSource2::read(IOrvelMediaBuffer** out, const MediaTrackHelper::ReadOptions* options) {
    CHECK(mStarted);
    *out = nullptr;
    const int index = static_cast<int>(mIndex);
    int64_t seekTimeUs;
    MediaTrackHelper::ReadOptions::SeekMode seekMode;
    if (options != nullptr && options->getSeekTo(&seekTimeUs, &seekMode)) {
        const status_t status = mObject->seek(index, seekTimeUs, seekMode);
        if (status != OK) return status;
        mObject->flush(index);
    }
    return mObject->dequeueBuffer(index, out, options);
}

}  // namespace orvel
