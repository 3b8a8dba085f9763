// Lifecycle of a container, its track list, and the commands that it hands on to its reader.

#define LOG_TAG "FFmpegObject"
#include "FFmpegObject.h"

#include <stdlib.h>
#include <strings.h>

#include <cutils/properties.h>
#include <log/log.h>
#include <media/OrvelMediaLog.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "CodecMime.h"
#include "ContainerProbe.h"
#include "DemuxerSource.h"
#include "ErrorText.h"
#include "FFmpegExtensions.h"
#include "FFmpegIO.h"
#include "SpecialContainer.h"
#include "TrackFormat.h"
#include "base/OrvelDataSource.h"
#include "ffmpeg/reader/FFmpegReader.h"

namespace orvel {

using namespace android;

namespace {

constexpr int32_t kBigBufferModeBit = 2;
constexpr int32_t kMaxBigBufferSize = 0x40000;

constexpr int kLowScore = 25;  // this and less is declined
constexpr float kConfidence = 0.9f;

int32_t intProperty(const char* name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name, value, "0");
    return atoi(value);
}

}  // namespace

FFmpegObject::FFmpegObject(const sp<OrvelDataSource>& source, AVInputFormatPtr inputFormat)
    : mInitCheck(NO_INIT), mDataSource(source), mInputFormat(inputFormat) {
    mInitCheck = initialize();
}

FFmpegObject::~FFmpegObject() {
    unInitialize();
}

status_t FFmpegObject::initialize() {
    av_log_set_callback(OrvelMediaLog::OrvelMediaLogCallback);
    compat::registerAll();

    mFormatCtx = avformat_alloc_context();
    if (mFormatCtx == nullptr) {
        ALOGE("mFormatCtx is NULL");
        return NO_MEMORY;
    }
    mDemuxerSource = new DemuxerSource(*mDataSource, mFormatCtx);
    mFFmpegIO = new FFmpegIO(mDemuxerSource.get());
    if (mFFmpegIO->getContext() == nullptr) {
        ALOGE("ioContext is NULL");
        return NO_MEMORY;
    }
    mFormatCtx->pb = mFFmpegIO->getContext();
    // Opening sets the flag, but the context may be closed without ever having been opened.
    mFormatCtx->flags |= AVFMT_FLAG_CUSTOM_IO;
    if (mInputFormat == nullptr) return OK;

    if (!openInput(mInputFormat)) return NO_MEMORY;
    if (mDemuxerSource->hasRefused()) return BAD_VALUE;
    const int result = avformat_find_stream_info(mFormatCtx, nullptr);
    if (result < 0) {
        ALOGE("find stream info error: %s", ErrorText(result).c_str());
        return BAD_VALUE;
    }
    if (mDemuxerSource->hasRefused()) return BAD_VALUE;
    mFileFacts = takeFileFacts(mFormatCtx);
    mExtensions = std::make_unique<FFmpegExtensions>(mFormatCtx, mDataSource);
    mReader = new FFmpegReader(this);
    mReader->init();
    return OK;
}

bool FFmpegObject::openInput(AVInputFormatPtr format) {
    if (av_match_name("mov", format->name)) {
        mDemuxerSource->watchBoxes();
        // Without the option the samples would have other times, and a few edits could ask for an
        // index of gigabytes.
        if (av_dict_set_int(&mOptions, "ignore_editlist", 1, 0) < 0) return false;
    }
    const int result = avformat_open_input(&mFormatCtx, nullptr, format, &mOptions);
    if (result < 0) ALOGE("avformat open input failed: %s", ErrorText(result).c_str());
    return result >= 0;
}

void FFmpegObject::unInitialize() {
    mFFmpegIO.clear();
    avformat_close_input(&mFormatCtx);
    avformat_free_context(mFormatCtx);
    if (mOptions != nullptr) av_dict_free(&mOptions);
    av_log_set_callback(nullptr);
}

int32_t FFmpegObject::getParserFlags() {
    return intProperty("mm.enable.orvel_parser");
}

bool FFmpegObject::sniff(String8* mimeType, float* confidence, void** format) {
    return sniffInternal(mimeType, confidence, format);
}

bool FFmpegObject::sniffInternal(String8* mimeType, float* confidence, void** format) {
    const auto best = probeContainers(*mDataSource, static_cast<uint32_t>(getParserFlags()));
    if (!best) return false;
    const char* mime = best->container != nullptr ? *best->container->mime : nullptr;
    ALOGI("mime:%s, mediaFlag:0x%x, finalScore:%d", mime != nullptr ? mime : "(null)",
          best->container != nullptr ? best->container->flag : 0, best->score);
    if (best->score <= kLowScore) {
        ALOGW("finalScore is low, can not handle this file");
        return false;
    }
    mimeType->setTo(mime);
    *confidence = kConfidence;
    *format = const_cast<AVInputFormat*>(best->format);
    if (isSpecialContainer(best->format->name) && !sniffSpecialContainer(best->format)) {
        return false;
    }
    ALOGI("sniff successful, mime:%s !!!", mime);
    return true;
}

bool FFmpegObject::sniffSpecialContainer(AVInputFormatPtr format) {
    const bool isOpen = openInput(format);
    if (mDemuxerSource->hasRefused()) return false;
    if (!isOpen) return true;
    const int result = avformat_find_stream_info(mFormatCtx, nullptr);
    if (result < 0) {
        ALOGE("sniff: could not find stream information:%s", ErrorText(result).c_str());
        return false;
    }
    return !mDemuxerSource->hasRefused() && isSupportedSpecialAudio(mFormatCtx);
}

void FFmpegObject::addTrackInfos() {
    for (unsigned i = 0; i < mFormatCtx->nb_streams; ++i) {
        AVStream* stream = mFormatCtx->streams[i];
        stream->discard = AVDISCARD_ALL;
        const AVMediaType type = stream->codecpar->codec_type;
        if (type == AVMEDIA_TYPE_VIDEO &&
            (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
            ALOGW("This is a attached picture, not a video stream");
            continue;
        }
        FFmpegExtensions::nameTimedText(stream);
        const char* mime = codecId2MimeType(stream->codecpar->codec_id);
        if (mime == nullptr) {
            ALOGW("Unknown codec_id:%d", static_cast<int>(stream->codecpar->codec_id));
            continue;
        }
        TrackInfo info;
        OrvelMetaData& meta = info.meta;
        if (type == AVMEDIA_TYPE_VIDEO) {
            mHasVideo = true;
            initVideoMeta(stream, meta, mime, getFileMime(), mExtensions->rotationDegrees(stream));
        } else if (type == AVMEDIA_TYPE_AUDIO) {
            mBitsPerSample = stream->codecpar->bits_per_coded_sample;
            initAudioMeta(stream, meta, mime);
            if (bigBuffersAllowed()) {
                mReader->setUseBigBufferMode(true);
                meta.setInt32(kKeyBigBufferFlags, 1);
            }
        } else if (type == AVMEDIA_TYPE_SUBTITLE) {
            initSubtitleMeta(stream, meta, *mExtensions);
        } else {
            continue;
        }
        info.bitsPerSample = mBitsPerSample;
        initTrackInfo(stream, getFileMime(), mFormatCtx->duration, &info);
        mTracks.push_back(info);
    }
}

OrvelMetaData* FFmpegObject::getTrackMeta(size_t index) {
    return mTracks.editItemAt(index).meta.get();
}

status_t FFmpegObject::getFileMeta(OrvelMetaData& meta) {
    if (mInitCheck != OK) return BAD_VALUE;
    setFileMime(mFileFacts, mHasVideo, meta);
    setAlbumArtRelatedMeta(mFileFacts.tags.get(), meta);
    if (!mHasVideo) setAlbumArt(mFileFacts, meta);
    return OK;
}

bool FFmpegObject::bigBuffersAllowed() const {
    const int32_t bufferSize = intProperty("vendor.audio.parser.ip.buffer.size");
    const char* fileMime = getFileMime();
    return fileMime != nullptr && strcasecmp(fileMime, MEDIA_MIMETYPE_AUDIO_MPEG) == 0 &&
           bufferSize >= 1 && bufferSize <= kMaxBigBufferSize && mPlayBackMode &&
           (mBufferMode & kBigBufferModeBit) != 0;
}

status_t FFmpegObject::start(int trackIndex, const sp<OrvelMetaData>& params) {
    if (mReader == nullptr) return UNKNOWN_ERROR;
    // Finding a key that the store knows succeeds even when the entry is absent; the buffer mode
    // then keeps its value.
    int32_t bufferMode = mBufferMode;
    if (params != nullptr && params->findInt32(kKeyExtraFlags, &bufferMode)) {
        mBufferMode = bufferMode;
        const bool bigBuffers = bigBuffersAllowed();
        mReader->setUseBigBufferMode(bigBuffers);
        if (!bigBuffers) mBufferMode &= ~kBigBufferModeBit;
        params->setInt32(kKeyBigBufferFlags, (mBufferMode & kBigBufferModeBit) != 0 ? 1 : 0);
    }
    return mReader->start(trackIndex, params);
}

status_t FFmpegObject::stop(int trackIndex) {
    return mReader != nullptr ? mReader->stop(trackIndex) : UNKNOWN_ERROR;
}

status_t FFmpegObject::seek(int trackIndex, int64_t seekTimeUs, int seekMode) {
    return mReader != nullptr ? mReader->seek(trackIndex, seekTimeUs, seekMode) : UNKNOWN_ERROR;
}

status_t FFmpegObject::flush(int trackIndex) {
    return mReader != nullptr ? mReader->flush(trackIndex) : UNKNOWN_ERROR;
}

status_t FFmpegObject::dequeueBuffer(int trackIndex, IOrvelMediaBuffer** buffer,
                                     const MediaTrackHelper::ReadOptions* options) {
    return mReader != nullptr ? mReader->dequeueBuffer(trackIndex, buffer, options) : UNKNOWN_ERROR;
}

}  // namespace orvel
