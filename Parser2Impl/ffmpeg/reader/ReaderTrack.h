#pragma once

#include <memory>
#include <utility>

#include "FFmpegReader.h"
#include "PacketQueue.h"
#include "base/OrvelMediaBuffer.h"

namespace orvel {

class PresentationTimes;

// The hand-over point between the looper thread, which appends packets, and the one framework
// thread that reads the track. Owns the packets in it. Open until signalEOS, then ended: the
// packets left are delivered, and then the status, each time. flush opens it again.
class FFmpegReader::Cache : public android::RefBase {
  public:
    // Takes ownership and wakes the consumer; BAD_VALUE for null. append leaves the consumer
    // asleep: its caller calls wake later.
    android::status_t queueBuffer(AVPacket* packet);
    android::status_t append(AVPacket* packet);
    // Wakes the consumer if it sleeps although there is a packet.
    void wake();

    // Waits, without limit, for a packet or the end. OK hands the oldest packet to the caller;
    // otherwise the status that ended the cache.
    android::status_t dequeueBuffer(AVPacket** packet);

    // As dequeueBuffer, but the packet stays queued and the cache's.
    android::status_t showNextBuffer(AVPacket** packet);

    // The oldest packet, now the caller's; null, without a wait, when there is none.
    AVPacket* takeQueued();

    bool empty() { return getCacheSize() == 0; }
    size_t getCacheSize();  // packets
    bool hasEnded();
    void signalEOS(android::status_t status);

    // Frees the packets and opens the cache. Wakes nobody.
    void flush();

  protected:
    ~Cache() override;

  private:
    void waitForPacketOrEnd() ORVEL_REQUIRES(mLock);

    PacketQueue mPackets ORVEL_GUARDED_BY(mLock);
    Mutex mLock;           // the innermost lock: nothing is locked under it
    Condition mCondition;  // a packet was queued, or the end signalled
    android::status_t mEOSResult ORVEL_GUARDED_BY(mLock) = android::OK;
    bool mConsumerSleeps ORVEL_GUARDED_BY(mLock) = false;
};

// A started track. Made and reset on the looper thread. Everything but the cache is guarded by the
// reader's mLock, which clang's analysis cannot express for another class's fields.
class FFmpegReader::Track : public android::RefBase {
  public:
    // How a packet becomes a sample.
    enum class Conversion { Copy, RawAudio, NalUnits };

    // What the track format says about samples.
    struct SampleForm {
        Conversion conversion = Conversion::Copy;
        size_t nalLengthSize = 0;  // bytes, for NalUnits
        bool isAiff = false;       // for RawAudio
        bool isVideo = false;      // "mime" begins with "video/"
    };

    // Makes the cache and the buffer group over bufferGroup (a MediaBufferGroupHelper*, not owned)
    // and switches the stream on in the demuxer.
    Track(int32_t trackIndex, AVFormatContext* context, android::Vector<TrackInfo>& infos,
          void* bufferGroup);

    // Drops everything and switches the stream off. Before the track itself is dropped, which may
    // be used for nothing else then.
    void reset();

    const android::sp<Cache>& cache() const { return mCache; }
    const TrackInfo& info() const { return *mTrackInfo; }
    AVStream* stream() const { return mStream; }
    AVMediaType mediaType() const { return mMediaType; }
    bool isSubtitle() const { return mMediaType == AVMEDIA_TYPE_SUBTITLE; }
    const SampleForm& form() const { return mForm; }
    // Packets, as the full rule counts them.
    bool isFull() const;

    // The buffer being filled; null between reads. acquireBuffer takes one from the group unless
    // there is one; the group's failure, or NO_MEMORY when it gave none.
    IOrvelMediaBuffer* buffer() const { return mBuffer; }
    android::status_t acquireBuffer(bool nonBlocking, size_t size);
    IOrvelMediaBuffer* takeBuffer() { return std::exchange(mBuffer, nullptr); }
    void releaseBuffer();

    // Subtitle tracks: the next entry of the stream's index to read.
    int32_t nextSubtitle() { return mSubtitleIndex; }
    void setNextSubtitle(int32_t index) { mSubtitleIndex = index; }
    // The flush after a seek of this subtitle track has not run.
    bool isSubtitleSeeked() const { return mSubtitleSeeked; }
    void setSubtitleSeeked(bool seeked) { mSubtitleSeeked = seeked; }

    // A read found the cache empty and may be waiting. After a flush or a dropped request it must
    // be asked for again.
    bool isAwaited() const { return mAwaited; }
    void setAwaited(bool awaited) { mAwaited = awaited; }
    // That read sleeps until a pass brings a packet; it has one and is to be woken for it.
    bool needsPacket() const { return mAwaited && !isSubtitle() && mCache->empty(); }
    bool isServed() const { return mAwaited && !mCache->empty(); }
    // A request for this stream is in the looper's queue. exchange returns the old value.
    bool isRequested() const { return mRequested; }
    bool exchangeRequested(bool requested) { return std::exchange(mRequested, requested); }
    // No sample was delivered since the start or the last flush.
    bool isFresh() const { return mFresh; }
    void setFresh(bool fresh) { mFresh = fresh; }

    // Video: what the last seek knew of the index's presentation times; null for nothing.
    const PresentationTimes* presentationTimes() const { return mPresentationTimes.get(); }
    void setPresentationTimes(const std::shared_ptr<const PresentationTimes>& times) {
        mPresentationTimes = times;
    }

  protected:
    ~Track() override;

  private:
    android::sp<Cache> mCache;  // set by the constructor, cleared by reset
    TrackInfo* mTrackInfo;      // the container object's
    std::unique_ptr<OrvelMediaBufferGroup> mBufferGroup;
    IOrvelMediaBuffer* mBuffer = nullptr;  // the framework's
    AVStream* mStream;                     // the format context's
    int32_t mSubtitleIndex = 0;
    bool mSubtitleSeeked = false;
    bool mAwaited = false;
    bool mRequested = false;
    bool mFresh = true;
    std::shared_ptr<const PresentationTimes> mPresentationTimes;
    const AVMediaType mMediaType;
    const SampleForm mForm;
};

// Whether a started track, null ones left out, is as the predicate says.
template <typename Predicate>
bool anyTrack(const FFmpegReader::Tracks& tracks, Predicate predicate) {
    for (size_t i = 0; i < tracks.size(); ++i) {
        if (tracks[i] != nullptr && predicate(*tracks[i])) return true;
    }
    return false;
}

template <typename Use>
void forEachTrack(const FFmpegReader::Tracks& tracks, Use use) {
    for (size_t i = 0; i < tracks.size(); ++i) {
        if (tracks[i] != nullptr) use(*tracks[i]);
    }
}

// The started track of a stream; null when there is none.
inline FFmpegReader::Track* startedTrack(const FFmpegReader::Tracks& tracks, int32_t streamIndex) {
    const ssize_t index = tracks.indexOfKey(streamIndex);
    return index >= 0 ? tracks[static_cast<size_t>(index)].get() : nullptr;
}

// What a framework's track index stands for: the container object's record, and the started track,
// which is null when it has no buffer group. Aborts for a track that is not started.
struct TrackLookUp {
    TrackLookUp(const FFmpegReader::Tracks& tracks, const OpenContainer& container,
                int32_t trackIndex)
        : info(container.tracks[static_cast<size_t>(trackIndex)]),
          track(tracks.valueFor(info.streamIndex).get()) {}

    const TrackInfo& info;
    FFmpegReader::Track* const track;
};

}  // namespace orvel
