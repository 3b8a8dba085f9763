// A started track and its packet cache.

#define LOG_TAG "FFmpegReader"
#include "ReaderTrack.h"

#include <strings.h>

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ADebug.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "base/OrvelMediaBuffer.h"
#include "bytes/PresentationTimes.h"

namespace orvel {

using namespace android;

namespace {

constexpr int32_t kDefaultBufferSize = 0x40000;

// Above the first, and from the second on, a cache counts as full.
constexpr size_t kMaxAudioPackets = 64;
constexpr size_t kFullVideoPackets = 31;

FFmpegReader::Track::SampleForm sampleFormOf(const TrackInfo* trackInfo) {
    using Conversion = FFmpegReader::Track::Conversion;
    const char* mime = nullptr;
    CHECK(trackInfo->meta.findCString(kKeyMIMEType, &mime));
    const char* fileMime = nullptr;  // stays null for a format without it
    CHECK(trackInfo->meta.findCString(kKeyFileFormat, &fileMime));
    int32_t nalLengthSize = 0;
    trackInfo->meta.findInt32(kKeyNalLengthSize, &nalLengthSize);

    FFmpegReader::Track::SampleForm form;
    form.nalLengthSize = static_cast<size_t>(nalLengthSize);
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
    return OK;
}

status_t FFmpegReader::Cache::queueBuffer(AVPacket* packet) {
    const status_t status = append(packet);
    if (status == OK) wake();
    return status;
}

void FFmpegReader::Cache::waitForPacketOrEnd() {
    while (mEOSResult == OK && mPackets.empty()) {
        mConsumerSleeps = true;
        mCondition.wait(mLock);
    }
    mConsumerSleeps = false;
}

void FFmpegReader::Cache::wake() {
    bool wakes;
    {
        ScopedLock<Mutex> lock(mLock);
        wakes = mConsumerSleeps && !mPackets.empty();
    }
    if (wakes) mCondition.signal();
}

status_t FFmpegReader::Cache::dequeueBuffer(AVPacket** packet) {
    ScopedLock<Mutex> lock(mLock);
    waitForPacketOrEnd();
    if (mPackets.empty()) return mEOSResult;
    *packet = mPackets.pop();
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
    ScopedLock<Mutex> lock(mLock);
    return mPackets.empty() ? nullptr : mPackets.pop();
}

size_t FFmpegReader::Cache::getCacheSize() {
    ScopedLock<Mutex> lock(mLock);
    return mPackets.size();
}

bool FFmpegReader::Cache::hasEnded() {
    ScopedLock<Mutex> lock(mLock);
    return mEOSResult != OK;
}

void FFmpegReader::Cache::signalEOS(status_t status) {
    ScopedLock<Mutex> lock(mLock);
    mEOSResult = status;
    mCondition.signal();
}

void FFmpegReader::Cache::flush() {
    ScopedLock<Mutex> lock(mLock);
    while (!mPackets.empty()) {
        AVPacket* packet = mPackets.pop();
        av_packet_free(&packet);
    }
    mEOSResult = OK;
}

FFmpegReader::Track::Track(int32_t trackIndex, AVFormatContext* context, Vector<TrackInfo>& infos,
                           void* bufferGroup)
    : mCache(new Cache),
      mTrackInfo(&infos.editItemAt(static_cast<size_t>(trackIndex))),
      mBufferGroup(std::make_unique<OrvelMediaBufferGroup>(
              static_cast<MediaBufferGroupHelper*>(bufferGroup))),
      mStream(context->streams[mTrackInfo->streamIndex]),
      mMediaType(mStream->codecpar->codec_type),
      mForm(sampleFormOf(mTrackInfo)) {
    uint32_t max_size = kDefaultBufferSize;
    // The assertion's text is part of what it promises, to the blank.
    // clang-format off
    CHECK(mTrackInfo->meta.findInt32(kKeyMaxInputSize, (int32_t *)&max_size));  // NOLINT
    // clang-format on
    mBufferGroup->init(1, max_size, 0);
    if (!isSubtitle()) mStream->discard = AVDISCARD_DEFAULT;
    compat::copyParametersToStreamCodec(mStream);
}

FFmpegReader::Track::~Track() = default;

void FFmpegReader::Track::reset() {
    // A read that still waits, which callers rule out, would never end.
    mCache->signalEOS(ERROR_END_OF_STREAM);
    mCache.clear();
    mTrackInfo = nullptr;
    releaseBuffer();
    mBufferGroup.reset();
    mStream->discard = AVDISCARD_ALL;
    mStream = nullptr;
}

bool FFmpegReader::Track::isFull() const {
    if (mMediaType == AVMEDIA_TYPE_AUDIO) return mCache->getCacheSize() > kMaxAudioPackets;
    if (mMediaType == AVMEDIA_TYPE_VIDEO) return mCache->getCacheSize() >= kFullVideoPackets;
    return false;
}

status_t FFmpegReader::Track::acquireBuffer(bool nonBlocking, size_t size) {
    if (mBuffer != nullptr) return OK;
    const status_t status = mBufferGroup->acquire_buffer(&mBuffer, nonBlocking, size);
    if (status == OK) return mBuffer != nullptr ? OK : NO_MEMORY;
    const Track* const track = this;  // for the assertion's text
    CHECK(track->mBuffer == nullptr);
    return status;
}

void FFmpegReader::Track::releaseBuffer() {
    if (mBuffer != nullptr) takeBuffer()->release();
}

}  // namespace orvel
