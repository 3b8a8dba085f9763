// A started track and its packet cache.

#define LOG_TAG "FFmpegReader"
#include "ReaderTrack.h"

#include <strings.h>

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ADebug.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "OrvelMediaBuffer.h"
#include "PresentationTimes.h"

namespace orvel {

using namespace android;

namespace {

constexpr int32_t kDefaultBufferSize = 0x40000;

// Above the first, and from the second on, a cache counts as full.
constexpr size_t kMaxAudioPackets = 64;
constexpr size_t kFullVideoPackets = 31;

// What a track format says about its samples.
struct SampleForm {
    FFmpegReader::Track::Conversion conversion;
    size_t nalLengthSize;
    bool isAiff;
    bool isVideo;
};

SampleForm sampleFormOf(const FFmpegObject::TrackInfo* trackInfo) {
    using Conversion = FFmpegReader::Track::Conversion;
    const char* mime = nullptr;
    CHECK(trackInfo->meta.findCString(kKeyMIMEType, &mime));
    const char* fileMime = nullptr;  // stays null for a format without it
    CHECK(trackInfo->meta.findCString(kKeyFileFormat, &fileMime));
    int32_t nalLengthSize = 0;
    trackInfo->meta.findInt32(kKeyNalLengthSize, &nalLengthSize);

    SampleForm form = {Conversion::Copy, static_cast<size_t>(nalLengthSize), false, false};
    if (mime == nullptr) return form;
    if (strcasecmp(mime, MEDIA_MIMETYPE_AUDIO_RAW) == 0) {
        form.conversion = Conversion::RawAudio;
    } else if (nalLengthSize != 0 && (strcasecmp(mime, MEDIA_MIMETYPE_VIDEO_AVC) == 0 ||
                                      strcasecmp(mime, MEDIA_MIMETYPE_VIDEO_HEVC) == 0)) {
        form.conversion = Conversion::NalUnits;
    }
    form.isAiff = fileMime != nullptr && strcasecmp(fileMime, MEDIA_MIMETYPE_AUDIO_AIFF) == 0;
    form.isVideo = strncasecmp(mime, "video/", 6) == 0;
    return form;
}

}  // namespace

FFmpegReader::Cache::~Cache() {
    flush();
}

status_t FFmpegReader::Cache::append(AVPacket* packet) {
    if (packet == nullptr) return BAD_VALUE;
    ScopedLock<Mutex> lock(mLock);
    mPackets.push(packet);
    mCount.store(mPackets.size(), std::memory_order_relaxed);
    return OK;
}

status_t FFmpegReader::Cache::queueBuffer(AVPacket* packet) {
    const status_t status = append(packet);
    if (status == OK) wake();
    return status;
}

AVPacket* FFmpegReader::Cache::pop() {
    AVPacket* packet = mPackets.pop();
    mCount.store(mPackets.size(), std::memory_order_relaxed);
    return packet;
}

void FFmpegReader::Cache::waitForPacketOrEnd() {
    while (mEOSResult == OK && mPackets.empty()) {
        mConsumerSleeps = true;
        mCondition.wait(mLock);
    }
    mConsumerSleeps = false;
}

bool FFmpegReader::Cache::wake() {
    bool sleeps;
    {
        ScopedLock<Mutex> lock(mLock);
        sleeps = mConsumerSleeps;
    }
    if (sleeps) mCondition.signal();
    return sleeps;
}

status_t FFmpegReader::Cache::dequeueBuffer(AVPacket** packet) {
    mSpin.until([this] { return !empty() || hasEnded(); });
    ScopedLock<Mutex> lock(mLock);
    waitForPacketOrEnd();
    if (mPackets.empty()) return mEOSResult;
    *packet = pop();
    return OK;
}

status_t FFmpegReader::Cache::showNextBuffer(AVPacket** packet) {
    ScopedLock<Mutex> lock(mLock);
    waitForPacketOrEnd();
    if (mPackets.empty()) return mEOSResult;
    *packet = mPackets.front();
    return OK;
}

AVPacket* FFmpegReader::Cache::takeQueued() {
    if (empty()) return nullptr;
    ScopedLock<Mutex> lock(mLock);
    return mPackets.empty() ? nullptr : pop();
}

void FFmpegReader::Cache::signalEOS(status_t status) {
    ScopedLock<Mutex> lock(mLock);
    mEOSResult = status;
    mCondition.signal();
}

void FFmpegReader::Cache::flush() {
    ScopedLock<Mutex> lock(mLock);
    while (!mPackets.empty()) {
        AVPacket* packet = pop();
        av_packet_free(&packet);
    }
    mEOSResult = OK;
}

FFmpegReader::Track::Track(int32_t trackIndex, AVFormatContext* context,
                           Vector<FFmpegObject::TrackInfo>& infos, void* bufferGroup)
    : mCache(new Cache),
      mTrackInfo(&infos.editItemAt(static_cast<size_t>(trackIndex))),
      mBufferGroup(new OrvelMediaBufferGroup(static_cast<MediaBufferGroupHelper*>(bufferGroup))),
      mStream(context->streams[mTrackInfo->streamIndex]),
      mMediaType(mStream->codecpar->codec_type) {
    const SampleForm form = sampleFormOf(mTrackInfo);
    mConversion = form.conversion;
    mNalLengthSize = form.nalLengthSize;
    mIsAiff = form.isAiff;
    mIsVideo = form.isVideo;
    uint32_t max_size = kDefaultBufferSize;
    // clang-format off: the assertion's text is part of what it promises
    CHECK(mTrackInfo->meta.findInt32(kKeyMaxInputSize, (int32_t*)&max_size));
    // clang-format on
    mBufferGroup->init(1, max_size, 0);
    if (mMediaType != AVMEDIA_TYPE_SUBTITLE) mStream->discard = AVDISCARD_DEFAULT;
    compat::copyParametersToStreamCodec(mStream);
}

FFmpegReader::Track::~Track() = default;

void FFmpegReader::Track::reset() {
    // A read that still waits, which callers rule out, would wait for ever.
    mCache->signalEOS(ERROR_END_OF_STREAM);
    mCache.clear();
    mTrackInfo = nullptr;
    if (mBuffer != nullptr) {
        mBuffer->release();
        mBuffer = nullptr;
    }
    delete mBufferGroup;
    mBufferGroup = nullptr;
    mStream->discard = AVDISCARD_ALL;
    mStream = nullptr;
}

bool FFmpegReader::Track::isFull() const {
    if (mMediaType == AVMEDIA_TYPE_AUDIO) return mCache->getCacheSize() > kMaxAudioPackets;
    if (mMediaType == AVMEDIA_TYPE_VIDEO) return mCache->getCacheSize() >= kFullVideoPackets;
    return false;
}

}  // namespace orvel
