#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/Errors.h>
#include <utils/KeyedVector.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include "Lock.h"
#include "ReadBatch.h"
#include "base/OrvelMetaData.h"
#include "bytes/FourCharacterCode.h"
#include "ffmpeg/FFmpegCompat.h"
#include "ffmpeg/OpenContainer.h"

namespace orvel {

class FFmpegObject;
class IOrvelMediaBuffer;

// The packet reader of one opened container. It reads packets ahead into per-track caches on its
// own looper thread and turns them into media buffers on the threads that read the tracks.
//
// Threads. Any number of framework threads call the per-track commands; each track is read by one
// thread at a time, and is not stopped while it is read. The looper thread runs onMessageReceived
// and all that it calls, one message at a time in posting order: everything that touches the
// demuxer happens there, so commands and read-ahead passes never overlap. Commands are posted and
// answered synchronously; read-ahead requests are posted without a reply.
//
// Locks. mLock first, then the mLock of one Cache; nothing else is locked under a Cache's lock. A
// pass holds mLock for its whole length, FFmpeg's blocking reads included; a conversion holds it
// while it waits for a free buffer and copies. Passes go before a thread that waits for mLock for a
// bounded time (Lock.h). A read that waits for packets holds neither lock. No wait is timed.
//
// Lifetime. The container object owns the reader; the reader holds it weakly and promotes it for
// each use but a read of a queued packet, whose caller holds it. A promoted reference is dropped
// after mLock is released and before a reply is posted: the waiting thread may release the
// container object, and with it the data source, as soon as it has its reply. The last reference to
// the reader itself may go away on the looper thread, at the end of a delivery.
//
// Known weakness: in a badly interleaved file a cache grows past the full rule while another track
// waits for its packet.
class FFmpegReader : public android::AHandler {
  public:
    class Cache;
    class Track;
    using ReadOptions = android::MediaTrackHelper::ReadOptions;
    // By FFmpeg's stream index; a null track was started without a buffer group.
    using Tracks = android::KeyedVector<int32_t, android::sp<Track>>;

    explicit FFmpegReader(const android::wp<FFmpegObject>& object);

    // Starts the looper thread. Once, right after construction.
    void init();

    // Whether reads put several packets of a track into one buffer. Any thread, any time.
    void setUseBigBufferMode(bool use);

    // Starts a track with the buffer group that params carries under "buffer-group" (a
    // MediaBufferGroupHelper*, which outlives the track's stop). Without one an error is logged and
    // the track answers reads with UNKNOWN_ERROR until it is stopped. Blocks until the looper has
    // done it. Always OK.
    android::status_t start(int32_t trackIndex, const android::sp<OrvelMetaData>& params);

    // Stops a started track and drops what is cached for it. Blocks. Always OK; aborts for a track
    // that is not started.
    android::status_t stop(int32_t trackIndex);

    // Moves the demuxer, or a subtitle track's position, if this track's seek has to. Blocks.
    // Returns OK also when nothing had to move; ERROR_END_OF_STREAM past the track's duration or
    // when the demuxer cannot seek; BAD_VALUE for a subtitle time that the index cannot serve.
    // After OK the caller flushes, then reads. Aborts for a track that is not started.
    android::status_t seek(int32_t trackIndex, int64_t seekTimeUs, int32_t seekMode);

    // After a seek that moved: empties the caches and resumes reading. Else nothing. Blocks.
    // Always OK.
    android::status_t flush(int32_t trackIndex);

    // The track's next sample, in *out, which the caller owns from then on. Waits for a packet
    // without limit, and for a free buffer unless options say not to. Statuses: ERROR_END_OF_STREAM
    // and ERROR_IO once the packets read before the end are all delivered, until a seek; BAD_VALUE
    // for a subtitle sample outside the file; the buffer group's failure; NO_MEMORY when the group
    // gave no buffer; UNKNOWN_ERROR for a track started without a group. *out is null then. Aborts
    // for a track that is not started. options may be null.
    android::status_t dequeueBuffer(int32_t trackIndex, IOrvelMediaBuffer** out,
                                    const ReadOptions* options);

  protected:
    ~FFmpegReader() override;
    void onMessageReceived(const android::sp<android::AMessage>& msg) override;

  private:
    struct Read;
    enum : uint32_t {
        kWhatStart = fourCharacterCode("ffst"),
        kWhatStop = fourCharacterCode("ffsp"),
        kWhatSeek = fourCharacterCode("ffse"),
        kWhatFlush = fourCharacterCode("fffu"),
        kWhatQueueBuffer = fourCharacterCode("ffqb"),
    };
    static constexpr int32_t kAnyStream = -1;

    // Whether read-ahead requests are dropped, and why.
    enum class Paused {
        No,
        ForSeek,  // a seek is under way: its flush throws away what is read now
        AtEnd,    // of the file or by an error. Subtitle tracks go on: they read by the index
    };

    FFmpegReader(const FFmpegReader&) = delete;
    FFmpegReader& operator=(const FFmpegReader&) = delete;

    // A message to this reader with one field.
    android::sp<android::AMessage> newMessage(uint32_t what, const char* field, int32_t value);
    void postReply(const android::sp<android::AMessage>& msg, android::status_t err);
    void onStart(const android::sp<android::AMessage>& msg) ORVEL_REQUIRES(mOnLooper);
    void onStop(const android::sp<android::AMessage>& msg) ORVEL_REQUIRES(mOnLooper);
    void onSeek(const android::sp<android::AMessage>& msg) ORVEL_REQUIRES(mOnLooper);
    void onFlush(const android::sp<android::AMessage>& msg) ORVEL_REQUIRES(mOnLooper);
    void onQueueBuffer(const android::sp<android::AMessage>& msg) ORVEL_REQUIRES(mOnLooper);

    // Posts a request for a packet unless one for the same stream is in the looper's queue.
    void postQueueBuffer(int32_t streamIndex) ORVEL_REQUIRES(mLock);
    // One pass of the read-ahead, and whether it goes on.
    AfterPass runPass(const android::sp<android::AMessage>& msg) ORVEL_REQUIRES(mOnLooper);
    bool isAllTracksFull() ORVEL_REQUIRES(mLock);
    // Ends every started audio and video track. A subtitle track ends with its own index.
    void signalEOS(android::status_t status) ORVEL_REQUIRES(mLock);
    bool hasTrack(AVMediaType type) ORVEL_REQUIRES(mLock);
    // Ends the pause, and asks for packets on behalf of the reads that wait: a request that came
    // meanwhile was dropped, and a flush may have taken what a read was about to get.
    void resumeReading() ORVEL_REQUIRES(mLock);
    // Wakes each read that sleeps though its cache has a packet. The looper thread alone changes
    // mTracks and so need not lock to read it, which clang's analysis cannot know.
    void wakeReads() ORVEL_NO_THREAD_SAFETY_ANALYSIS;

    bool needToSeek(int32_t trackIndex, int64_t seekTimeUs, int32_t seekMode,
                    android::status_t* status) ORVEL_REQUIRES(mLock);
    android::status_t processSubtitleSeek(const TrackInfo& info, int64_t timestamp, int flags)
            ORVEL_REQUIRES(mOnLooper);

    // The next packet, if one is queued, becomes *out at once. Else asks for packets, and the read
    // has to wait.
    android::status_t deliverQueued(Read* read, IOrvelMediaBuffer** out);
    // Converts a packet that the read waited for. Takes the packet, whatever it returns.
    android::status_t avPacketToMediaBuffer(AVPacket* packet, IOrvelMediaBuffer** out,
                                            int32_t trackIndex, const ReadOptions* options);
    void appendPackets(Cache& cache, int32_t streamIndex, IOrvelMediaBuffer& buffer);
    // Notes that a read waits for packets, or no longer does. True when the caller is to post a
    // request.
    bool setAwaited(int32_t streamIndex, bool awaited);

    // Each field says who may touch it: set once (const, or by init, before any other thread knows
    // the reader), under mLock, or the looper thread alone.
    Tracks mTracks ORVEL_GUARDED_BY(mLock);  // changed by the looper thread alone
    const android::wp<FFmpegObject> mFFmpegObject;
    android::sp<android::ALooper> mLooper;  // set once by init
    ReaderMutex mLock;
    // The last video seek asked for a time past the track's duration and moved nothing.
    bool mVideoSeekOutOfRange ORVEL_GUARDED_BY(mLock) = false;
    // A frame-exact video seek happened while audio was started: the next audio seek is real.
    bool mAudioSeekPending ORVEL_GUARDED_BY(mLock) = false;
    // A seek moved the demuxer and the flush that must follow has not run. (A subtitle track's own
    // seek is marked in the track: the flushes of two may interleave.)
    bool mSeeked ORVEL_GUARDED_BY(mOnLooper) = false;
    Paused mReadPaused ORVEL_GUARDED_BY(mLock) = Paused::No;
    bool mBigBufferMode ORVEL_GUARDED_BY(mLock) = false;

    ThreadRole mOnLooper;
    ReadBatch mBatch ORVEL_GUARDED_BY(mOnLooper);
    // Posted for each packet, often while it is being handled: set once by init, never changed.
    android::sp<android::AMessage> mAnyStreamRequest;
    // It is in the looper's queue.
    bool mAnyStreamRequested ORVEL_GUARDED_BY(mLock) = false;
};

}  // namespace orvel
