// C++ classes over both sides of <media/MediaExtractorPluginApi.h>: what a plug-in derives from,
// and views of the buffers that the framework lends. None of them has a lock of its own.
#pragma once

#include <media/MediaExtractorPluginApi.h>
#include <stdlib.h>
#include <utils/Errors.h>

#include <map>

namespace android {

// A view of a framework buffer. Owned by the group helper that made it; deleting it does nothing to
// the framework's buffer.
class MediaBufferHelper {
  public:
    explicit MediaBufferHelper(CMediaBuffer* buffer) : mBuffer(buffer) {}
    virtual ~MediaBufferHelper() = default;

    MediaBufferHelper(const MediaBufferHelper&) = delete;
    MediaBufferHelper& operator=(const MediaBufferHelper&) = delete;

    virtual void release() { mBuffer->release(mBuffer->handle); }
    virtual void* data() { return mBuffer->data(mBuffer->handle); }
    virtual size_t size() { return mBuffer->size(mBuffer->handle); }
    virtual size_t range_offset() { return mBuffer->range_offset(mBuffer->handle); }
    virtual size_t range_length() { return mBuffer->range_length(mBuffer->handle); }
    virtual void set_range(size_t offset, size_t length) {
        mBuffer->set_range(mBuffer->handle, offset, length);
    }
    // The framework buffer's own format.
    virtual AMediaFormat* meta_data() { return mBuffer->meta_data(mBuffer->handle); }

    CMediaBuffer* const mBuffer;
};

// A view of a track's buffer group. Owns one MediaBufferHelper for each buffer that it has seen;
// the group and its buffers stay the framework's.
class MediaBufferGroupHelper {
  public:
    explicit MediaBufferGroupHelper(CMediaBufferGroup* group) : mGroup(group) {}
    ~MediaBufferGroupHelper() {
        for (auto& entry : mBufferHelpers)
            delete entry.second;
    }

    MediaBufferGroupHelper(const MediaBufferGroupHelper&) = delete;
    MediaBufferGroupHelper& operator=(const MediaBufferGroupHelper&) = delete;

    // `growthLimit`: how many buffers the group may grow to; 0 leaves it as it is.
    bool init(size_t buffers, size_t bufferSize, size_t growthLimit = 0) {
        return mGroup->init(mGroup->handle, buffers, bufferSize, growthLimit);
    }
    void add_buffer(size_t size) { mGroup->add_buffer(mGroup->handle, size); }
    bool has_buffers() { return mGroup->has_buffers(mGroup->handle); }

    // Waits for a free buffer unless nonBlocking. On an error, and when the group reports success
    // but gives no buffer, *buffer is null.
    media_status_t acquire_buffer(MediaBufferHelper** buffer, bool nonBlocking = false,
                                  size_t requestedSize = 0) {
        *buffer = nullptr;
        CMediaBuffer* acquired = nullptr;
        media_status_t status =
                mGroup->acquire_buffer(mGroup->handle, &acquired, nonBlocking, requestedSize);
        if (status != AMEDIA_OK || acquired == nullptr) return status;
        MediaBufferHelper*& helper = mBufferHelpers[acquired];
        if (helper == nullptr) helper = new MediaBufferHelper(acquired);
        *buffer = helper;
        return status;
    }

  private:
    CMediaBufferGroup* mGroup;
    std::map<CMediaBuffer*, MediaBufferHelper*> mBufferHelpers;
};

// What a plug-in derives its tracks from.
class MediaTrackHelper {
  public:
    MediaTrackHelper() = default;
    virtual ~MediaTrackHelper() { delete mGroupHelper; }

    MediaTrackHelper(const MediaTrackHelper&) = delete;
    MediaTrackHelper& operator=(const MediaTrackHelper&) = delete;

    // The options of one read.
    class ReadOptions {
      public:
        enum SeekMode : int32_t {
            SEEK_PREVIOUS_SYNC = android::SEEK_PREVIOUS_SYNC,
            SEEK_NEXT_SYNC = android::SEEK_NEXT_SYNC,
            SEEK_CLOSEST_SYNC = android::SEEK_CLOSEST_SYNC,
            SEEK_CLOSEST = android::SEEK_CLOSEST,
            SEEK_FRAME_INDEX = android::SEEK_FRAME_INDEX,
        };

        ReadOptions(uint32_t options, int64_t seekPosUs)
            : mOptions(options), mSeekPosUs(seekPosUs) {}

        bool getNonBlocking() const { return (mOptions & NONBLOCKING) != 0; }
        // False when no seek is asked for; nothing is written then.
        bool getSeekTo(int64_t* timeUs, SeekMode* mode) const {
            if ((mOptions & SEEK) == 0) return false;
            *timeUs = mSeekPosUs;
            *mode = static_cast<SeekMode>(mOptions & 7);
            return true;
        }

      private:
        uint32_t mOptions;
        int64_t mSeekPosUs;
    };

    virtual media_status_t start() = 0;
    virtual media_status_t stop() = 0;
    virtual media_status_t getFormat(AMediaFormat* format) = 0;
    // A buffer on AMEDIA_OK only; the framework releases it.
    virtual media_status_t read(MediaBufferHelper** buffer,
                                const ReadOptions* options = nullptr) = 0;
    virtual bool supportsNonBlockingRead() { return false; }

  protected:
    friend CMediaTrack* wrap(MediaTrackHelper* track);

    // Made by the table's start entry, null before. Owned. Trees differ in its name: the public one
    // calls it mBufferGroup.
    MediaBufferGroupHelper* mGroupHelper = nullptr;
};

// What a plug-in derives its extractor from.
class MediaExtractorPluginHelper {
  public:
    MediaExtractorPluginHelper() = default;
    virtual ~MediaExtractorPluginHelper() = default;

    MediaExtractorPluginHelper(const MediaExtractorPluginHelper&) = delete;
    MediaExtractorPluginHelper& operator=(const MediaExtractorPluginHelper&) = delete;

    enum Flags {
        CAN_SEEK_BACKWARD = 1,
        CAN_SEEK_FORWARD = 2,
        CAN_PAUSE = 4,
        CAN_SEEK = 8,
    };

    virtual size_t countTracks() = 0;
    // A new track, which the caller owns; null for an index that is refused.
    virtual MediaTrackHelper* getTrack(size_t index) = 0;
    virtual media_status_t getTrackMetaData(AMediaFormat* meta, size_t index,
                                            uint32_t flags = 0) = 0;
    virtual media_status_t getMetaData(AMediaFormat* meta) = 0;
    virtual uint32_t flags() const {
        return CAN_SEEK_BACKWARD | CAN_SEEK_FORWARD | CAN_PAUSE | CAN_SEEK;
    }
    virtual media_status_t setMediaCas(const uint8_t* /* casToken */, size_t /* size */) {
        return AMEDIA_ERROR_INVALID_OPERATION;
    }
    virtual const char* name() { return "<unspecified>"; }
};

// The table around a track. The framework owns it: it calls the table's free entry, which deletes
// the track, and then frees the table itself. Null for null, and when there is no memory.
inline CMediaTrack* wrap(MediaTrackHelper* track) {
    if (track == nullptr) return nullptr;
    auto* table = static_cast<CMediaTrack*>(malloc(sizeof(CMediaTrack)));
    if (table == nullptr) return nullptr;
    table->data = track;
    table->free = [](void* data) { delete static_cast<MediaTrackHelper*>(data); };
    table->start = [](void* data, CMediaBufferGroup* bufferGroup) {
        auto* self = static_cast<MediaTrackHelper*>(data);
        delete self->mGroupHelper;
        self->mGroupHelper = new MediaBufferGroupHelper(bufferGroup);
        return self->start();
    };
    table->stop = [](void* data) { return static_cast<MediaTrackHelper*>(data)->stop(); };
    table->getFormat = [](void* data, AMediaFormat* format) {
        return static_cast<MediaTrackHelper*>(data)->getFormat(format);
    };
    table->read = [](void* data, CMediaBuffer** buffer, uint32_t options, int64_t seekPosUs) {
        MediaTrackHelper::ReadOptions readOptions(options, seekPosUs);
        MediaBufferHelper* result = nullptr;
        media_status_t status = static_cast<MediaTrackHelper*>(data)->read(&result, &readOptions);
        if (status == AMEDIA_OK && result != nullptr) *buffer = result->mBuffer;
        return status;
    };
    table->supportsNonBlockingRead = [](void* data) {
        return static_cast<MediaTrackHelper*>(data)->supportsNonBlockingRead();
    };
    return table;
}

// The table around an extractor; owned as that of a track.
inline CMediaExtractor* wrap(MediaExtractorPluginHelper* extractor) {
    using Helper = MediaExtractorPluginHelper;
    if (extractor == nullptr) return nullptr;
    auto* table = static_cast<CMediaExtractor*>(malloc(sizeof(CMediaExtractor)));
    if (table == nullptr) return nullptr;
    table->data = extractor;
    table->free = [](void* data) { delete static_cast<Helper*>(data); };
    table->countTracks = [](void* data) { return static_cast<Helper*>(data)->countTracks(); };
    table->getTrack = [](void* data, size_t index) {
        return wrap(static_cast<Helper*>(data)->getTrack(index));
    };
    table->getTrackMetaData = [](void* data, AMediaFormat* meta, size_t index, uint32_t flags) {
        return static_cast<Helper*>(data)->getTrackMetaData(meta, index, flags);
    };
    table->getMetaData = [](void* data, AMediaFormat* meta) {
        return static_cast<Helper*>(data)->getMetaData(meta);
    };
    table->flags = [](void* data) { return static_cast<Helper*>(data)->flags(); };
    table->setMediaCas = [](void* data, const uint8_t* casToken, size_t size) {
        return static_cast<Helper*>(data)->setMediaCas(casToken, size);
    };
    table->name = [](void* data) { return static_cast<Helper*>(data)->name(); };
    return table;
}

}  // namespace android
