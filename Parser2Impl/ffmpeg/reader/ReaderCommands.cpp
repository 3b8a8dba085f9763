// The reader's thread, its messages, and the start and stop commands.

#define LOG_TAG "FFmpegReader"

#include <log/log.h>
#include <media/stagefright/foundation/ADebug.h>

#include "ReaderTrack.h"
#include "ffmpeg/FFmpegObject.h"

namespace orvel {

using namespace android;

FFmpegReader::FFmpegReader(const wp<FFmpegObject>& object) : mFFmpegObject(object) {}

FFmpegReader::~FFmpegReader() {
    // May run on the looper thread itself, which stop() then does not join.
    if (mLooper == nullptr) return;
    mLooper->unregisterHandler(id());
    mLooper->stop();
}

void FFmpegReader::init() {
    mLooper = new ALooper;
    mLooper->setName("FFmpegReader Looper");
    mLooper->start();
    mLooper->registerHandler(this);
    mAnyStreamRequest = newMessage(kWhatQueueBuffer, "stream_index", kAnyStream);
}

void FFmpegReader::setUseBigBufferMode(bool use) {
    ScopedLock<ReaderMutex> lock(mLock);
    mBigBufferMode = use;
}

sp<AMessage> FFmpegReader::newMessage(uint32_t what, const char* field, int32_t value) {
    sp<AMessage> msg = new AMessage(what, this);
    msg->setInt32(field, value);
    return msg;
}

status_t FFmpegReader::start(int32_t trackIndex, const sp<OrvelMetaData>& params) {
    const sp<AMessage> msg = newMessage(kWhatStart, "track_index", trackIndex);
    void* bufferGroup = nullptr;
    if (params != nullptr && params->findPointer(kKeyBufferGroup, &bufferGroup) &&
        bufferGroup != nullptr) {
        msg->setPointer("buffer-group", bufferGroup);
    }
    sp<AMessage> response;
    msg->postAndAwaitResponse(&response);
    return OK;
}

status_t FFmpegReader::stop(int32_t trackIndex) {
    sp<AMessage> response;
    newMessage(kWhatStop, "track_index", trackIndex)->postAndAwaitResponse(&response);
    return OK;
}

status_t FFmpegReader::flush(int32_t trackIndex) {
    sp<AMessage> response;
    newMessage(kWhatFlush, "track_index", trackIndex)->postAndAwaitResponse(&response);
    return OK;
}

void FFmpegReader::onMessageReceived(const sp<AMessage>& msg) {
    mOnLooper.assertHere();
    if (msg->what() != kWhatQueueBuffer) {
        // A command may empty caches; and no read whose packet is there waits for a command too.
        mLock.cancelReadFirst();
        wakeReads();
    }
    switch (msg->what()) {
        case kWhatStart:
            onStart(msg);
            break;
        case kWhatStop:
            onStop(msg);
            break;
        case kWhatSeek:
            onSeek(msg);
            break;
        case kWhatFlush:
            onFlush(msg);
            break;
        case kWhatQueueBuffer:
            onQueueBuffer(msg);
            break;
        default:
            TRESPASS();
    }
}

void FFmpegReader::postReply(const sp<AMessage>& msg, status_t err) {
    const sp<AMessage> response = new AMessage;
    response->setInt32("err", err);
    sp<AReplyToken> replyID;
    CHECK(msg->senderAwaitsResponse(&replyID));
    response->postReply(replyID);
}

void FFmpegReader::onStart(const sp<AMessage>& msg) {
    int32_t trackIndex;
    CHECK(msg->findInt32("track_index", &trackIndex));
    void* bufferGroup = nullptr;
    msg->findPointer("buffer-group", &bufferGroup);
    ALOGI("start track: %d", trackIndex);
    status_t err = OK;
    {
        sp<FFmpegObject> object;  // both outlive the lock
        sp<Track> replaced;
        ScopedLock<ReaderMutex> lock(mLock);
        object = mFFmpegObject.promote();
        if (object == nullptr) {
            err = NO_INIT;
        } else {
            const OpenContainer container = object->openContainer();
            const int32_t streamIndex =
                    container.tracks[static_cast<size_t>(trackIndex)].streamIndex;
            replaced = startedTrack(mTracks, streamIndex);
            if (replaced != nullptr) replaced->reset();
            sp<Track> track;
            if (bufferGroup != nullptr) {
                track = new Track(trackIndex, container.context, container.tracks, bufferGroup);
            } else {
                ALOGE("start track: %d, no buffer group", trackIndex);
                err = BAD_VALUE;
            }
            mTracks.add(streamIndex, track);
            // Between a seek of another track and its flush the read-ahead stays off: the flush
            // would throw away what is read now. The flush resumes it.
            if (!mSeeked) resumeReading();
        }
    }
    postReply(msg, err);
}

void FFmpegReader::onStop(const sp<AMessage>& msg) {
    int32_t trackIndex;
    CHECK(msg->findInt32("track_index", &trackIndex));
    ALOGI("stop track: %d", trackIndex);
    status_t err = OK;
    {
        sp<FFmpegObject> object;  // both outlive the lock
        sp<Track> track;
        ScopedLock<ReaderMutex> lock(mLock);
        object = mFFmpegObject.promote();
        if (object == nullptr) {
            err = NO_INIT;
        } else {
            const int32_t streamIndex =
                    object->openContainer().tracks[static_cast<size_t>(trackIndex)].streamIndex;
            track = mTracks.editValueFor(streamIndex);
            if (track != nullptr) track->reset();
            mTracks.removeItem(streamIndex);
        }
    }
    postReply(msg, err);
}

}  // namespace orvel
