#define LOG_TAG "FFmpegIO"
#include "FFmpegIO.h"

#include <limits.h>
#include <stdio.h>

#include <new>

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <utils/StrongPointer.h>

#include "base/OrvelDataSource.h"

namespace orvel {

using android::sp;

namespace {

constexpr int32_t kIOBufferSize = 32768;

}  // namespace

FFmpegIO::FFmpegIO(void* dataSource) : mIOData(new (std::nothrow) IOData()), mIOContext(nullptr) {
    if (mIOData == nullptr) return;
    mIOData->mDataSource = static_cast<OrvelDataSource*>(dataSource);
    mIOData->mBufferSize = kIOBufferSize;
    // From FFmpeg's allocator, since the library may free it and put a larger one in its place.
    mIOData->mBuffer = static_cast<uint8_t*>(av_malloc(kIOBufferSize));
    mIOData->mOffset = 0;
    if (mIOData->mBuffer == nullptr) return;

    mIOContext = avio_alloc_context(mIOData->mBuffer, kIOBufferSize, 0 /* read only */, mIOData,
                                    readDataSource, nullptr, seekDataSource);
    if (mIOContext == nullptr) {
        av_freep(&mIOData->mBuffer);
        return;
    }
    // Every seek reaches seekDataSource, and large reads bypass the buffer.
    mIOContext->direct = 1;
}

FFmpegIO::~FFmpegIO() {
    if (mIOContext != nullptr) av_freep(&mIOContext->buffer);
    delete mIOData;
    av_free(mIOContext);
}

int readDataSource(void* opaque, uint8_t* buffer, int size) {
    IOData* data = static_cast<IOData*>(opaque);
    const sp<OrvelDataSource> source(data->mDataSource);
    if (buffer == nullptr) {
        ALOGE("error: bufis NULL");
        return AVERROR(EINVAL);
    }
    ssize_t n = source->readAt(data->mOffset, buffer, static_cast<size_t>(size));
    // Not as the source has it: more than there is room for, a status that an int cannot hold, and
    // the number of the library's "again", at which some demuxers would ask for ever.
    if (n > size || n < INT_MIN || n == AVERROR(EAGAIN)) n = android::ERROR_IO;
    if (n == 0 || n == android::ERROR_END_OF_STREAM) {
        ALOGE("in readDataSource, end of stream, ret:%zd, mOffset:%lld", n,
              static_cast<long long>(data->mOffset));
        return AVERROR_EOF;
    }
    if (n < 0) {
        ALOGE("source readAt error, ret:%zd, mOffset:%lld", n,
              static_cast<long long>(data->mOffset));
        return static_cast<int>(n);
    }
    data->mOffset += n;
    return static_cast<int>(n);
}

int64_t seekDataSource(void* opaque, int64_t offset, int whence) {
    IOData* data = static_cast<IOData*>(opaque);
    const sp<OrvelDataSource> source(data->mDataSource);
    off64_t size = 0;
    int64_t target = 0;
    bool overflow = false;
    switch (whence) {
        case SEEK_SET:
            target = offset;
            break;
        case SEEK_CUR:
            overflow = __builtin_add_overflow(data->mOffset, offset, &target);
            break;
        case SEEK_END:
            source->getSize(&size);
            if (size < 0) return AVERROR(EINVAL);
            overflow = __builtin_add_overflow(static_cast<int64_t>(size), offset, &target);
            break;
        case AVSEEK_SIZE:
            source->getSize(&size);
            return size;
        default:
            ALOGE("Unknown seek mode:%d", whence);
            return AVERROR(EINVAL);
    }
    if (overflow || target < 0) return AVERROR(EINVAL);
    data->mOffset = target;
    return target;
}

}  // namespace orvel
