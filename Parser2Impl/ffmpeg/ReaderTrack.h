#pragma once

#include "FFmpegReader.h"
#include "OrvelMediaBuffer.h"
#include "PacketQueue.h"

namespace orvel {

// The hand-over point between the looper thread, which appends packets, and the one framework
// thread that reads the track. Owns the packets in it. Open until signalEOS, then ended: the
// packets left are delivered, and then the status, each time. flush opens it again.
class FFmpegReader::Cache : public android::RefBase {
  public:
    // Takes ownership and wakes the consumer; BAD_VALUE for null. append does not wake it: a
    // producer that holds a lock which the consumer will want calls wake when it has released that.
    android::status_t queueBuffer(AVPacket* packet);
    android::status_t append(AVPacket* packet);
    // Whether the consumer was asleep.
    bool wake();

    // Waits, without limit, for a packet or the end. OK hands the oldest packet to the caller;
    // otherwise the status that ended the cache.
    android::status_t dequeueBuffer(AVPacket** packet);

    // As dequeueBuffer, but the packet stays queued and the cache's.
    android::status_t showNextBuffer(AVPacket** packet);

    // The oldest packet, now the caller's; null, without a wait, when there is none.
    AVPacket* takeQueued();

    // These do not lock: who needs the answer to last excludes the producer or the consumer.
    bool empty() const { return getCacheSize() == 0; }
    size_t getCacheSize() const { return mCount.load(std::memory_order_relaxed); }  // packets
    bool hasEnded() const { return mEOSResult.load(std::memory_order_relaxed) != android::OK; }
    void signalEOS(android::status_t status);

    // Frees the packets and opens the cache. Wakes nobody.
    void flush();

  protected:
    ~Cache() override;

  private:
    void waitForPacketOrEnd() ORVEL_REQUIRES(mLock);
    AVPacket* pop() ORVEL_REQUIRES(mLock);

    alignas(kCacheLine) Mutex mLock;  // the innermost lock: nothing is locked under it
    // Written under mLock, read with or without it.
    std::atomic<android::status_t> mEOSResult{android::OK};
    std::atomic<size_t> mCount{0};  // the length of mPackets
    alignas(kCacheLine) PacketQueue mPackets ORVEL_GUARDED_BY(mLock);
    Condition mCondition;  // a packet was queued, or the end signalled
    bool mConsumerSleeps ORVEL_GUARDED_BY(mLock) = false;
    Spin mSpin;  // the consumer's
};

// A started track. Made and reset on the looper thread under the reader's lock, which also guards
// every field that is not const.
class FFmpegReader::Track : public android::RefBase {
  public:
    // How a packet becomes a sample.
    enum class Conversion { Copy, RawAudio, NalUnits };

    // Makes the cache and the buffer group over bufferGroup (a MediaBufferGroupHelper*, not owned)
    // and switches the stream on in the demuxer.
    Track(int32_t trackIndex, AVFormatContext* context,
          android::Vector<FFmpegObject::TrackInfo>& infos, void* bufferGroup);

    // Drops everything and switches the stream off. Before the track itself is dropped.
    void reset();

    // Packets, as the full rule counts them.
    bool isFull() const;

    android::sp<Cache> mCache;            // set by the constructor, cleared by reset
    FFmpegObject::TrackInfo* mTrackInfo;  // the container object's
    OrvelMediaBufferGroup* mBufferGroup;  // owned
    AVStream* mStream;                    // the format context's
    int32_t mSubtitleIndex = 0;    // subtitle tracks: the next entry of the stream's index to read
    bool mSubtitleSeeked = false;  // the flush after a seek of mSubtitleIndex has not run

    // A read has looked into the cache and not come back with a packet yet: it may be waiting, and
    // what it was to get may have been flushed, or its request dropped.
    bool mAwaited = false;
    // Video: what the last seek knew of the index's presentation times; null for nothing.
    std::shared_ptr<const PresentationTimes> mPresentationTimes;

    const AVMediaType mMediaType;
    // What the track format says, looked up by the constructor.
    Conversion mConversion;
    size_t mNalLengthSize;  // bytes, for NalUnits
    bool mIsAiff;           // for RawAudio
    bool mIsVideo;          // "mime" begins with "video/"

    // Being filled; null between reads. Written for each sample, which nothing above is.
    alignas(kCacheLine) IOrvelMediaBuffer* mBuffer = nullptr;

  protected:
    ~Track() override;
};

}  // namespace orvel
