// The reader's thread, its messages, and the start and stop commands.

#define LOG_TAG "FFmpegReader"

#include <log/log.h>
#include <media/stagefright/foundation/ADebug.h>

#include "OrvelMediaBuffer.h"
#include "ReaderTrack.h"

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
    mAnyStreamRequest = newRequest(kAnyStream);
}

void FFmpegReader::setUseBigBufferMode(bool use) {
    ScopedLock<ReaderMutex> lock(mLock);
    mBigBufferMode = use;
}

sp<AMessage> FFmpegReader::newCommand(uint32_t what, int32_t trackIndex) {
    sp<AMessage> msg = new AMessage(what, this);
    msg->setInt32("track_index", trackIndex);
    return msg;
}

status_t FFmpegReader::postAndAwait(const sp<AMessage>& command, sp<AMessage>* response) {
    mPosted.fetch_add(1, std::memory_order_relaxed);
    return command->postAndAwaitResponse(response);
}

void FFmpegReader::lingerForNextMessage() {
    mLinger.until([this] { return mPosted.load(std::memory_order_relaxed) != mHandled; });
}

status_t FFmpegReader::start(int32_t trackIndex, const sp<OrvelMetaData>& params) {
    const sp<AMessage> msg = newCommand(kWhatStart, trackIndex);
    void* bufferGroup = nullptr;
    if (params != nullptr && params->findPointer(kKeyBufferGroup, &bufferGroup) &&
        bufferGroup != nullptr) {
        msg->setPointer("buffer-group", bufferGroup);
    }
    sp<AMessage> response;
    postAndAwait(msg, &response);
    return OK;
}

status_t FFmpegReader::stop(int32_t trackIndex) {
    sp<AMessage> response;
    postAndAwait(newCommand(kWhatStop, trackIndex), &response);
    return OK;
}

status_t FFmpegReader::flush(int32_t trackIndex) {
    sp<AMessage> response;
    postAndAwait(newCommand(kWhatFlush, trackIndex), &response);
    return OK;
}

void FFmpegReader::onMessageReceived(const sp<AMessage>& msg) {
    ++mHandled;
    switch (msg->what()) {
        case kWhatStart:
            onStart(msg);
            break;
        case kWhatStop:
            onStop(msg);
            break;
        case kWhatSeek:
            onSeek(msg);
            lingerForNextMessage();
            break;
        case kWhatFlush:
            onFlush(msg);
            lingerForNextMessage();
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
            const int32_t streamIndex =
                    object->mTracks[static_cast<size_t>(trackIndex)].streamIndex;
            replaced = startedTrack(streamIndex);
            if (replaced != nullptr) replaced->reset();
            sp<Track> track;
            if (bufferGroup != nullptr) {
                track = new Track(trackIndex, object->mFormatCtx, object->mTracks, bufferGroup);
            } else {
                ALOGE("start track: %d, no buffer group", trackIndex);
                err = BAD_VALUE;
            }
            mTracks.add(streamIndex, track);
            // Between a seek of another track and its flush the read-ahead stays off: what it read
            // now the flush would throw away. The flush resumes it.
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
                    object->mTracks[static_cast<size_t>(trackIndex)].streamIndex;
            track = mTracks.editValueFor(streamIndex);
            if (track != nullptr) track->reset();
            mTracks.removeItem(streamIndex);
        }
    }
    postReply(msg, err);
}

void FFmpegReader::resumeReading() {
    mReadPaused = false;
    mDemuxerEnded = false;
    for (size_t i = 0; i < mTracks.size(); ++i) {
        const sp<Track>& track = mTracks[i];
        if (track == nullptr || !track->mAwaited) continue;
        if (track->mCache->empty() && !track->mCache->hasEnded()) postQueueBuffer(mTracks.keyAt(i));
    }
}

}  // namespace orvel
