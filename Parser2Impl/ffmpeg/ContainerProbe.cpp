#define LOG_TAG "FFmpegObject"
#define LOG_NDEBUG 0  // what the probes scored, which "orvelprobe --explain" shows
#include "ContainerProbe.h"

#include <string.h>

#include <memory>
#include <new>

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>

#include "base/OrvelDataSource.h"

namespace orvel {

namespace {

constexpr size_t kPlainProbeSize = 1024;  // also the least that a probe needs
constexpr size_t kID3ProbeSize = 0x20000;
constexpr size_t kProbeBufferSize = kID3ProbeSize + AVPROBE_PADDING_SIZE;
static_assert(kProbeBufferSize == 0x20020);

constexpr int64_t kCorruptID3Size = 3 << 20;
constexpr size_t kID3HeaderSize = 10;

// The bytes that the probes look at. They are read again only when a probe needs more of them, or
// others.
class ProbeBytes {
  public:
    explicit ProbeBytes(OrvelDataSource& source)
        : mSource(source), mBytes(new (std::nothrow) uint8_t[kProbeBufferSize]) {}

    bool isAllocated() const { return mBytes != nullptr; }

    // False, with a warning that names the container, when there are fewer than a probe needs.
    bool cover(int64_t offset, size_t size, const char* mime) {
        const auto wanted = static_cast<ssize_t>(size);
        if (wanted <= mCount && offset == mOffset) return true;
        memset(mBytes.get(), 0, kProbeBufferSize);
        mCount = mSource.readAt(offset, mBytes.get(), size);
        if (mCount > wanted) mCount = android::ERROR_IO;  // a broken source
        if (mCount < static_cast<ssize_t>(kPlainProbeSize)) {
            ALOGW("Wanna read %zd bytes, but got %zd bytes, at least we"
                  "                         need %d bytes. Resource itself issue, give up with "
                  "mime is %s",
                  wanted, mCount, static_cast<int>(kPlainProbeSize), mime);
            return false;
        }
        mOffset = offset;
        return true;
    }

    int score(compat::ProbeFunction probe) const {
        AVProbeData data = {};
        data.buf = mBytes.get();
        data.buf_size = static_cast<int>(mCount);
        return probe(&data);
    }

  private:
    OrvelDataSource& mSource;
    const std::unique_ptr<uint8_t[]> mBytes;
    int64_t mOffset = 0;
    ssize_t mCount = 0;  // bytes read, or the error
};

// The demuxer of a row; null, with a warning, when the library has none or cannot probe with it.
AVInputFormatPtr findProbe(const Container& container) {
    const AVInputFormatPtr format = av_find_input_format(container.demuxer);
    if (format == nullptr) {
        ALOGW("tmpFmt is NULL");
        return nullptr;
    }
    if (compat::probeFunction(format) == nullptr) {
        ALOGW("tmpFmt->read_probe is NULL");
        return nullptr;
    }
    return format;
}

}  // namespace

std::optional<ProbeResult> probeContainers(OrvelDataSource& source, uint32_t mask) {
    ProbeBytes bytes(source);
    if (!bytes.isAllocated()) {
        ALOGE("sniff fail: OOM");
        return std::nullopt;
    }
    ProbeResult best;
    int64_t id3Size = -1;  // not asked for yet
    for (const Container& container : kContainers) {
        if ((container.flag & mask) == 0) continue;
        const AVInputFormatPtr format = findProbe(container);
        if (format == nullptr) continue;

        int64_t offset = 0;
        size_t size = kPlainProbeSize;
        if (isSupportID3(static_cast<int>(container.flag))) {
            if (id3Size < 0) id3Size = getID3Size(source);
            if (id3Size >= kCorruptID3Size) {
                ALOGE("id3 tag size is corrupted");
                break;
            }
            ALOGD("skip id3 tag length %llu", static_cast<unsigned long long>(id3Size));
            offset = id3Size;
            size = kID3ProbeSize;
        }
        if (!bytes.cover(offset, size, *container.mime)) break;

        const int score = bytes.score(compat::probeFunction(format));
        ALOGV("probed %s, score:%d", container.demuxer, score);
        if (score > best.score) best = {&container, format, score};
        if (best.score == AVPROBE_SCORE_MAX) break;
    }
    return best;
}

int64_t getID3Size(OrvelDataSource& source) {
    // After a tag that is smaller than the window, the window is filled: empty tags alone would be
    // walked ten bytes at a time. The walk ends at the size that counts as corrupt.
    uint8_t window[4096];
    int64_t begin = 0;
    int64_t count = 0;
    size_t wanted = kID3HeaderSize;
    int64_t total = 0;
    while (total < kCorruptID3Size) {
        if (total + static_cast<int64_t>(kID3HeaderSize) > begin + count) {
            begin = total;
            count = source.readAt(total, window, wanted);
            if (count < static_cast<int64_t>(kID3HeaderSize) && wanted > kID3HeaderSize)
                count = source.readAt(total, window, kID3HeaderSize);  // the rest may be unreadable
            if (count > static_cast<int64_t>(wanted)) break;           // a broken source
        }
        if (count < static_cast<int64_t>(kID3HeaderSize)) break;
        const uint8_t* header = window + (total - begin);
        if (memcmp(header, "ID3", 3) != 0) break;
        const int64_t size = (header[6] & 0x7F) << 21 | (header[7] & 0x7F) << 14 |
                             (header[8] & 0x7F) << 7 | (header[9] & 0x7F);
        total += size + static_cast<int64_t>(kID3HeaderSize);
        wanted = size < static_cast<int64_t>(sizeof(window)) ? sizeof(window) : kID3HeaderSize;
    }
    return total;
}

}  // namespace orvel
