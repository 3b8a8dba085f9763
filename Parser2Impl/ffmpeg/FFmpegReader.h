#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>

#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/Errors.h>
#include <utils/KeyedVector.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include "FFmpegCompat.h"
#include "FFmpegObject.h"
#include "Lock.h"
#include "PacketRecycler.h"

namespace orvel {

class IOrvelMediaBuffer;
class PresentationTimes;

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
// while it waits for a free buffer and copies. A framework thread that waits for mLock gets it
// before the next pass; one that slept until its packet came is given a moment to get there. A read
// that waits for packets holds neither lock. No wait is timed; before a thread sleeps it looks for
// as long as a sleep would cost.
//
// Lifetime. The container object owns the reader; the reader holds it weakly and promotes it for
// each use but a read of a queued packet, whose caller holds it. A promoted reference is dropped
// after mLock is released and before a reply is posted: whoever waits for the reply may let go of
// the container object, and with it of the data source that closing it must not need. The last
// reference to the reader itself may go away on the looper thread, at the end of a delivery.
class FFmpegReader : public android::AHandler {
  public:
    class Cache;
    class Track;

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
    // Returns OK also when nothing had to move; ERROR_END_OF_STREAM behind the track's duration or
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
                                    const android::MediaTrackHelper::ReadOptions* options);

  protected:
    ~FFmpegReader() override;
    void onMessageReceived(const android::sp<android::AMessage>& msg) override;

  private:
    using ReadOptions = android::MediaTrackHelper::ReadOptions;
    struct Read;
    struct SeekTarget;

    enum : uint32_t {
        kWhatStart = 0x66667374,        // 'ffst'
        kWhatStop = 0x66667370,         // 'ffsp'
        kWhatSeek = 0x66667365,         // 'ffse'
        kWhatFlush = 0x66666675,        // 'fffu'
        kWhatQueueBuffer = 0x66667162,  // 'ffqb'
    };

    FFmpegReader(const FFmpegReader&) = delete;
    FFmpegReader& operator=(const FFmpegReader&) = delete;

    // Commands. ReaderCommands.cpp
    android::sp<android::AMessage> newCommand(uint32_t what, int32_t trackIndex);
    android::status_t postAndAwait(const android::sp<android::AMessage>& command,
                                   android::sp<android::AMessage>* response);
    void postReply(const android::sp<android::AMessage>& msg, android::status_t err);
    void onStart(const android::sp<android::AMessage>& msg);
    void onStop(const android::sp<android::AMessage>& msg);
    // After a seek and its flush the next message comes at once: waits a moment for it, awake.
    void lingerForNextMessage();
    // Clears mReadPaused, and asks for packets on behalf of the reads that wait: a request that
    // came while it was set was dropped, and a flush may have taken what a read was about to get.
    void resumeReading() ORVEL_REQUIRES(mLock);

    // Read-ahead. ReaderReadAhead.cpp
    static constexpr int32_t kAnyStream = -1;
    android::sp<android::AMessage> newRequest(int32_t streamIndex);
    void postQueueBuffer(int32_t streamIndex);
    void onQueueBuffer(const android::sp<android::AMessage>& msg);
    // *served: the cache that got the pass's last packet, its consumer not yet woken; or null.
    void runPass(const android::sp<android::AMessage>& msg, android::sp<Cache>* served);
    bool dropsRequest(int32_t streamIndexWanted) ORVEL_REQUIRES(mLock);
    void readPackets(AVFormatContext* context, int32_t streamIndexWanted,
                     android::sp<Cache>* served) ORVEL_REQUIRES(mLock);
    void endReading(AVFormatContext* context, int error, int32_t streamIndexWanted)
            ORVEL_REQUIRES(mLock);
    bool isAllTracksFull() ORVEL_REQUIRES(mLock);
    // Ends every started audio and video track. A subtitle track ends with its own index.
    void signalEOS(android::status_t status) ORVEL_REQUIRES(mLock);
    bool hasTrack(AVMediaType type) ORVEL_REQUIRES(mLock);
    // The started track of a stream; null when there is none.
    Track* startedTrack(int32_t streamIndex) ORVEL_REQUIRES(mLock);

    // Seeking. ReaderSeek.cpp
    bool needToSeek(int32_t trackIndex, int64_t seekTimeUs, int32_t seekMode,
                    android::status_t* status) ORVEL_REQUIRES(mLock);
    void onSeek(const android::sp<android::AMessage>& msg);
    void onFlush(const android::sp<android::AMessage>& msg);
    // Turns the time that target asks for into a timestamp and flags, by the seek mode.
    void correctTimeStampAndSeekFlags(AVStream* stream, int32_t seekMode, SeekTarget* target);
    // av_seek_frame; its result.
    int seekFrame(AVFormatContext* context, AVStream* stream, const SeekTarget& target, int flags);
    android::status_t seekDemuxer(AVFormatContext* context, AVStream* stream,
                                  const SeekTarget& target);
    android::status_t processSubtitleSeek(const FFmpegObject::TrackInfo& info, int64_t timestamp,
                                          int flags);

    // Delivery. ReaderDelivery.cpp
    // Looks the track up; its next packet, if one is queued, becomes *out at once. Else asks for
    // packets, and the read has to wait.
    android::status_t deliverQueued(Read* read, IOrvelMediaBuffer** out);
    void appendPackets(Cache& cache, int32_t streamIndex, IOrvelMediaBuffer& buffer);

    // Conversion, under mLock for its whole length. SampleConversion.cpp
    android::status_t avPacketToMediaBuffer(AVPacket* packet, IOrvelMediaBuffer** out,
                                            int32_t trackIndex, const ReadOptions* options);
    // Takes the packet, whatever it returns.
    android::status_t convertPacket(const FFmpegObject::TrackInfo& trackInfo, Track& track,
                                    AVPacket* packet, IOrvelMediaBuffer** out,
                                    const ReadOptions* options) ORVEL_REQUIRES(mLock);
    int64_t calculateTargetTimeUs(int64_t seekTimeUs, const FFmpegObject::TrackInfo& info,
                                  const Track& track) ORVEL_REQUIRES(mLock);
    void processNALUnitBuffer(Track& track, const AVPacket& packet, size_t nalSizeLength)
            ORVEL_REQUIRES(mLock);
    void processRawAudioBuffer(Track& track, const AVPacket& packet, int32_t bitsPerSample,
                               bool isAiff) ORVEL_REQUIRES(mLock);

    // Subtitle samples. ReaderSubtitle.cpp
    android::status_t readSubtitleData(FFmpegObject& object, Track& track) ORVEL_REQUIRES(mLock);

    // Guarded by mLock, but for what is said to be of the looper thread. The started tracks by
    // FFmpeg's stream index; a null one was started without a buffer group.
    android::KeyedVector<int32_t, android::sp<Track>> mTracks ORVEL_GUARDED_BY(mLock);
    const android::wp<FFmpegObject> mFFmpegObject;
    android::sp<android::ALooper> mLooper;  // set once by init
    // Set once by init and never changed: posted for each packet, often while it is being handled.
    android::sp<android::AMessage> mAnyStreamRequest;
    ReaderMutex mLock;

    // The last video seek asked for a time behind the track's duration and moved nothing.
    bool mVideoSeekOutOfRange ORVEL_GUARDED_BY(mLock) = false;
    // A frame-exact video seek happened while audio was started: the next audio seek is real.
    bool mAudioSeekPending ORVEL_GUARDED_BY(mLock) = false;
    // Looper thread only. A seek moved the demuxer and the flush that must follow has not run. (A
    // subtitle track's own seek is marked in the track: the flushes of two may interleave.)
    bool mSeeked = false;
    // Read-ahead requests are dropped: a seek is under way, or the demuxer has reached its end.
    bool mReadPaused ORVEL_GUARDED_BY(mLock) = false;
    // mReadPaused is for the latter reason. Subtitle tracks go on: they read by the index.
    bool mDemuxerEnded ORVEL_GUARDED_BY(mLock) = false;
    bool mBigBufferMode ORVEL_GUARDED_BY(mLock) = false;

    // What was delivered, for the next pass to free.
    alignas(kCacheLine) PacketRecycler mSpentPackets ORVEL_GUARDED_BY(mLock);
    // Messages posted so far, by any thread, and messages handled.
    alignas(kCacheLine) std::atomic<uint32_t> mPosted{0};
    // Looper thread only.
    uint32_t mHandled = 0;
    Spin mLinger{kWakeUpNs};  // for the message after a seek or a flush
    Spin mWakeUp{kWakeUpNs};  // for a read that was woken
};

}  // namespace orvel
