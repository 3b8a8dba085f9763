#pragma once

#include <memory>

#include "FFmpegCompat.h"
#include "base/OrvelMetaData.h"

namespace orvel {

// What the file's metadata needs of an opened container. Taken when it is opened: from then on the
// demuxer may change its tags and streams, on the looper thread, while the framework asks.
struct FileFacts {
    struct Free {
        void operator()(AVDictionary* tags) const { av_dict_free(&tags); }
        void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    };

    const char* mime = nullptr;  // of the container; null for one outside the table
    std::unique_ptr<AVDictionary, Free> tags;
    const char* audioMime = nullptr;        // of the main audio stream; null without one
    std::unique_ptr<AVPacket, Free> cover;  // the attached picture; null without one
    AVCodecID coverCodec = AV_CODEC_ID_NONE;
};

FileFacts takeFileFacts(AVFormatContext* context);

// Each adds its entries to meta; what the file does not have is left out.

// "mime": the container's, by its major brand; without a video track, that of the main audio.
void setFileMime(const FileFacts& facts, bool hasVideo, OrvelMetaData& meta);
// The descriptive tags, the capture rate and the location.
void setAlbumArtRelatedMeta(const AVDictionary* tags, OrvelMetaData& meta);
// The cover picture.
void setAlbumArt(const FileFacts& facts, OrvelMetaData& meta);

}  // namespace orvel
