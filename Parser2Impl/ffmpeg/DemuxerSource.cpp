#define LOG_TAG "FFmpegIO"
#include "DemuxerSource.h"

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>

namespace orvel {

using namespace android;

ssize_t BoxSource::readAt(int64_t offset, void* data, size_t size) {
    const ssize_t n = mSource.OrvelDataSource::readAt(offset, data, size);
    return n == ERROR_END_OF_STREAM ? 0 : n;
}

int64_t BoxSource::size() {
    off64_t size = -1;
    return mSource.getSize(&size) == OK ? size : -1;
}

ssize_t DemuxerSource::readAt(off64_t offset, void* data, size_t size) {
    if (mHasRefused) return ERROR_MALFORMED;
    const ssize_t n = OrvelDataSource::readAt(offset, data, size);
    if (!mWatches || n <= 0 || static_cast<size_t>(n) > size || offset > INT64_MAX - n) return n;
    // The demuxer reads boxes through its buffer. Samples and tables go straight to their places.
    const AVIOContext* io = mContext->pb;
    const auto place = reinterpret_cast<uintptr_t>(data);
    const auto buffer = reinterpret_cast<uintptr_t>(io->buffer);
    if (place < buffer || place - buffer >= static_cast<size_t>(io->buffer_size)) {
        mClaims.passOver(offset, static_cast<size_t>(n));
        return n;
    }
    const uint64_t claimed =
            mClaims.inBlock(offset, static_cast<const uint8_t*>(data), static_cast<size_t>(n));
    if (claimed == 0 || isJustified(claimed)) return n;
    mHasRefused = true;
    ALOGE("index claims %llu samples, more than the file can hold, from %lld on",
          static_cast<unsigned long long>(claimed), static_cast<long long>(offset));
    return ERROR_MALFORMED;
}

bool DemuxerSource::isJustified(uint64_t claimed) {
    uint64_t entries = claimed;
    for (unsigned i = 0; i < mContext->nb_streams; ++i)
        entries += static_cast<uint64_t>(compat::indexEntryCount(mContext->streams[i]));
    if (entries <= kFreeEntries) return true;
    const uint64_t last = entries - kFreeEntries - 1;
    uint8_t byte;
    return last <= INT64_MAX && mBoxSource.readAt(static_cast<int64_t>(last), &byte, 1) == 1;
}

}  // namespace orvel
