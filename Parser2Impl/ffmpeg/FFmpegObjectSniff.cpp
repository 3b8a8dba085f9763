// Sniffing: whether the plug-in takes a source, and with which demuxer it will be opened.

#define LOG_TAG "FFmpegObject"

#include <string.h>
#include <strings.h>

#include <new>

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "ContainerTable.h"
#include "ErrorText.h"
#include "FFmpegObject.h"
#include "OrvelDataSource.h"

namespace orvel {

using namespace android;

namespace {

constexpr int kProbeScoreMax = AVPROBE_SCORE_MAX;
constexpr int kLowScore = 25;  // this and less is declined
constexpr float kConfidence = 0.9f;

constexpr size_t kPlainProbeSize = 1024;  // also the least that a probe needs
constexpr size_t kID3ProbeSize = 0x20000;
constexpr size_t kProbeBufferSize = kID3ProbeSize + AVPROBE_PADDING_SIZE;
static_assert(kProbeBufferSize == 0x20020);

constexpr int64_t kCorruptID3Size = 3 << 20;
constexpr size_t kID3HeaderSize = 10;

// The bytes at the start of the source, or behind its ID3 tags, that the probes look at.
struct ProbeRange {
    int64_t offset = 0;
    ssize_t count = 0;  // bytes read so far
};

}  // namespace

bool FFmpegObject::sniff(String8* mimeType, float* confidence, void** format) {
    return sniffInternal(mimeType, confidence, format);
}

bool FFmpegObject::sniffInternal(String8* mimeType, float* confidence, void** format) {
    // A sniffing object may never be opened, which would set the flag.
    mFormatCtx->flags |= AVFMT_FLAG_CUSTOM_IO;

    uint8_t* buffer = new (std::nothrow) uint8_t[kProbeBufferSize];
    if (buffer == nullptr) {
        ALOGE("sniff fail: OOM");
        return false;
    }
    const uint32_t enabled = static_cast<uint32_t>(getParserFlags());
    int bestScore = 0;
    const Container* best = nullptr;
    AVInputFormatPtr bestFormat = nullptr;
    ProbeRange cached;
    int64_t id3Size = -1;  // not asked for yet

    for (const Container& container : kContainers) {
        if ((container.flag & enabled) == 0) continue;
        const AVInputFormatPtr candidate = av_find_input_format(container.demuxer);
        if (candidate == nullptr) {
            ALOGW("tmpFmt is NULL");
            continue;
        }
        if (candidate->read_probe == nullptr) {
            ALOGW("tmpFmt->read_probe is NULL");
            continue;
        }

        int64_t offset = 0;
        size_t size = kPlainProbeSize;
        if (isSupportID3(static_cast<int>(container.flag))) {
            if (id3Size < 0) id3Size = getID3Size();
            offset = id3Size;
            if (offset >= kCorruptID3Size) {
                ALOGE("id3 tag size is corrupted");
                break;
            }
            ALOGD("skip id3 tag length %llu", static_cast<unsigned long long>(offset));
            size = kID3ProbeSize;
        }

        if (static_cast<ssize_t>(size) > cached.count || offset != cached.offset) {
            memset(buffer, 0, kProbeBufferSize);
            ssize_t n = mDataSource->readAt(offset, buffer, size);
            if (n > static_cast<ssize_t>(size)) n = ERROR_IO;  // a broken source
            cached.count = n;
            if (n < static_cast<ssize_t>(kPlainProbeSize)) {
                ALOGW("Wanna read %zd bytes, but got %zd bytes, at least we"
                      "                         need %d bytes. Resource itself issue, give up with "
                      "mime is %s",
                      static_cast<ssize_t>(size), n, static_cast<int>(kPlainProbeSize),
                      *container.mime);
                break;
            }
            cached.offset = offset;
        }

        AVProbeData probeData = {};
        probeData.buf = buffer;
        probeData.buf_size = static_cast<int>(cached.count);
        const int score = candidate->read_probe(&probeData);
        ALOGV("probed %s, score:%d", container.demuxer, score);
        if (score > bestScore) {
            bestScore = score;
            best = &container;
            bestFormat = candidate;
        }
        if (bestScore == kProbeScoreMax) break;
    }
    delete[] buffer;

    const char* bestMime = best != nullptr ? *best->mime : nullptr;
    ALOGI("mime:%s, mediaFlag:0x%x, finalScore:%d", bestMime != nullptr ? bestMime : "(null)",
          best != nullptr ? best->flag : 0, bestScore);
    if (bestScore <= kLowScore) {
        ALOGW("finalScore is low, can not handle this file");
        return false;
    }
    mimeType->setTo(bestMime);
    *confidence = kConfidence;
    *format = const_cast<AVInputFormat*>(bestFormat);
    if (isSpecialContainer(bestFormat->name) && !sniffSpecialContainer(bestFormat)) return false;
    ALOGI("sniff successful, mime:%s !!!", bestMime);
    return true;
}

int64_t FFmpegObject::getID3Size() {
    uint8_t header[kID3HeaderSize];
    int64_t total = 0;
    // A source of nothing but empty tags would be walked ten bytes at a time; from the size on that
    // counts as corrupt there is nothing more to learn.
    while (total < kCorruptID3Size &&
           mDataSource->readAt(total, header, sizeof(header)) ==
                   static_cast<ssize_t>(sizeof(header)) &&
           memcmp(header, "ID3", 3) == 0) {
        const int64_t size = (header[6] & 0x7F) << 21 | (header[7] & 0x7F) << 14 |
                             (header[8] & 0x7F) << 7 | (header[9] & 0x7F);
        total += size + static_cast<int64_t>(sizeof(header));
    }
    return total;
}

bool FFmpegObject::isSupportID3(int flag) {
    return flag == 0x10 || flag == 0x20 || flag == 0x200 || flag == 0x400;
}

bool FFmpegObject::isSpecialContainer(const char* formatName) {
    static const String8 kMatroska("matroska");
    static const String8 kMov("mov");
    return strncmp(formatName, kMatroska.string(), kMatroska.length()) == 0 ||
           strncmp(formatName, kMov.string(), kMov.length()) == 0;
}

bool FFmpegObject::sniffSpecialContainer(AVInputFormatPtr format) {
    int result = avformat_open_input(&mFormatCtx, nullptr, format, &mOptions);
    if (result < 0) {
        ALOGE("avformat open input failed: %s", ErrorText(result).c_str());
        return true;
    }
    if (!hasPlausibleIndex()) return false;
    result = avformat_find_stream_info(mFormatCtx, nullptr);
    if (result < 0) {
        ALOGE("sniff: could not find stream information:%s", ErrorText(result).c_str());
        return false;
    }
    return isSupportedSpecialAudio();
}

int FFmpegObject::bestStream(AVMediaType type) const {
    return av_find_best_stream(mFormatCtx, type, -1, -1, nullptr, 0);
}

bool FFmpegObject::isSupportedSpecialAudio() {
    const int index = bestStream(AVMEDIA_TYPE_AUDIO);
    ALOGV("main audio:%s",
          index < 0 ? "none" : avcodec_get_name(mFormatCtx->streams[index]->codecpar->codec_id));
    if (index < 0) return false;
    const char* mime = codecId2MimeType(mFormatCtx->streams[index]->codecpar->codec_id);
    if (mime == nullptr) return false;
    if (strcasecmp(mime, MEDIA_MIMETYPE_AUDIO_DTS) != 0 &&
        strcasecmp(mime, MEDIA_MIMETYPE_AUDIO_EAC3) != 0) {
        return false;
    }
    ALOGI("special audio, mimetype:%s", mime);
    return true;
}

bool FFmpegObject::isSupportedSpecialVideo() {
    const int index = bestStream(AVMEDIA_TYPE_VIDEO);
    if (index < 0) return false;
    const AVCodecParameters* parameters = mFormatCtx->streams[index]->codecpar;
    const char* mime = codecId2MimeType(parameters->codec_id);
    if (mime == nullptr) return false;
    char tag[AV_FOURCC_MAX_STRING_SIZE] = {};
    av_fourcc_make_string(tag, parameters->codec_tag);
    return isSupportedMimeTypeWithCodec(mime, tag);
}

bool FFmpegObject::isGeneratedByDivxTools() {
    static constexpr char kDivxEncoder[] = "libDivXMediaFormat";
    const AVDictionaryEntry* encoder = av_dict_get(mFormatCtx->metadata, "encoder", nullptr, 0);
    return encoder != nullptr &&
           strncasecmp(encoder->value, kDivxEncoder, sizeof(kDivxEncoder) - 1) == 0;
}

const char* FFmpegObject::getFileMime() const {
    if (mFormatCtx == nullptr || mFormatCtx->iformat == nullptr) return nullptr;  // not opened
    const char* names = mFormatCtx->iformat->name;
    for (const Container& container : kContainers) {
        if (av_match_name(container.demuxer, names)) return *container.mime;
    }
    return nullptr;
}

}  // namespace orvel
