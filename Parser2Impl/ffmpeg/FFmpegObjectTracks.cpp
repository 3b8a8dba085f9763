// The track list: which streams become tracks, and what all tracks have in common.

#define LOG_TAG "FFmpegObject"

#include <log/log.h>

#include "FFmpegExtensions.h"
#include "FFmpegObject.h"
#include "Timestamps.h"

namespace orvel {

using namespace android;

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
        if (type == AVMEDIA_TYPE_VIDEO) {
            initVideoMeta(stream, info.meta, mime);
        } else if (type == AVMEDIA_TYPE_AUDIO) {
            initAudioMeta(stream, info.meta, mime);
        } else if (type == AVMEDIA_TYPE_SUBTITLE) {
            initSubtitleMeta(stream, info.meta);
        } else {
            continue;
        }
        initTrackInfo(stream, info.meta, &info);
        mTracks.push_back(info);
    }
}

void FFmpegObject::initTrackInfo(AVStream* stream, OrvelMetaData& meta, TrackInfo* info) {
    info->streamIndex = stream->index;
    info->timeBase = stream->time_base;
    if (meta.getHandle() != info->meta.getHandle()) {
        AMediaFormat_copy(info->meta.getHandle(), meta.getHandle());
    }
    info->stream = stream;
    info->bitsPerSample = mBitsPerSample;
    info->meta.setCString(kKeyMIMEType, codecId2MimeType(stream->codecpar->codec_id));
    const char* fileMime = getFileMime();
    if (fileMime != nullptr) info->meta.setCString(kKeyFileFormat, fileMime);
    const AVDictionaryEntry* language = av_dict_get(stream->metadata, "language", nullptr, 0);
    if (language != nullptr) info->meta.setCString(kKeyLanguage, language->value);

    int64_t durationUs = av_rescale_q(stream->duration, stream->time_base, kMicroseconds);
    if (durationUs <= 1) durationUs = mFormatCtx->duration;
    if (durationUs < 0) return;
    info->meta.setInt64(kKeyDuration, durationUs);
    info->durationUs = durationUs;
}

OrvelMetaData* FFmpegObject::getTrackMeta(size_t index) {
    return &mTracks.editItemAt(index).meta;
}

}  // namespace orvel
