// Lifecycle of a container and the commands that it hands on to its reader.

#define LOG_TAG "FFmpegObject"
#include "FFmpegObject.h"

#include <stdlib.h>
#include <strings.h>

#include <cutils/properties.h>
#include <log/log.h>
#include <media/OrvelMediaLog.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "ErrorText.h"
#include "FFmpegExtensions.h"
#include "FFmpegIO.h"
#include "FFmpegReader.h"
#include "OrvelDataSource.h"

namespace orvel {

using namespace android;

namespace {

constexpr int32_t kBigBufferModeBit = 2;
constexpr int32_t kMaxBigBufferSize = 0x40000;

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
    mFFmpegIO = new FFmpegIO(mDataSource.get());
    if (mFFmpegIO->getContext() == nullptr) {
        ALOGE("ioContext is NULL");
        return NO_MEMORY;
    }
    mFormatCtx->pb = mFFmpegIO->getContext();
    // From here on the context may be closed without ever having been opened, which would set it.
    mFormatCtx->flags |= AVFMT_FLAG_CUSTOM_IO;
    if (mInputFormat == nullptr) return OK;

    // Without the option the samples would have other times.
    if (av_match_name("mov", mInputFormat->name) &&
        av_dict_set_int(&mOptions, "ignore_editlist", 1, 0) < 0) {
        return NO_MEMORY;
    }
    int result = avformat_open_input(&mFormatCtx, nullptr, mInputFormat, &mOptions);
    if (result < 0) {
        ALOGE("avformat open input failed: %s", ErrorText(result).c_str());
        return NO_MEMORY;
    }
    if (!hasPlausibleIndex()) return BAD_VALUE;
    result = avformat_find_stream_info(mFormatCtx, nullptr);
    if (result < 0) {
        ALOGE("find stream info error: %s", ErrorText(result).c_str());
        return BAD_VALUE;
    }
    takeFileFacts();
    mExtensions = std::make_unique<FFmpegExtensions>(mFormatCtx, mDataSource);
    mReader = new FFmpegReader(this);
    mReader->init();
    return OK;
}

bool FFmpegObject::hasPlausibleIndex() const {
    const int64_t size = avio_size(mFormatCtx->pb);
    if (size <= 0) return true;
    int64_t samples = 0;
    for (unsigned i = 0; i < mFormatCtx->nb_streams; ++i)
        samples += compat::indexEntryCount(mFormatCtx->streams[i]);
    if (samples <= size) return true;
    ALOGE("index claims %lld samples in %lld bytes", static_cast<long long>(samples),
          static_cast<long long>(size));
    return false;
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

bool FFmpegObject::bigBuffersAllowed() const {
    const int32_t bufferSize = intProperty("vendor.audio.parser.ip.buffer.size");
    return bufferSize >= 1 && bufferSize <= kMaxBigBufferSize && mPlayBackMode &&
           (mBufferMode & kBigBufferModeBit) != 0;
}

status_t FFmpegObject::start(int trackIndex, const sp<OrvelMetaData>& params) {
    if (mReader == nullptr) return UNKNOWN_ERROR;
    // Finding a key that the store knows succeeds even when the entry is absent; the buffer mode
    // then keeps its value.
    int32_t bufferMode = mBufferMode;
    if (params != nullptr && params->findInt32(kKeyExtraFlags, &bufferMode)) {
        mBufferMode = bufferMode;
        const char* fileMime = getFileMime();
        const bool bigBuffers = fileMime != nullptr &&
                                strcasecmp(fileMime, MEDIA_MIMETYPE_AUDIO_MPEG) == 0 &&
                                bigBuffersAllowed();
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
