// File-level metadata: container MIME type, tags, location, capture rate and the cover picture.

#define LOG_TAG "FFmpegObject"

#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <new>

#include <log/log.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "FFmpegObject.h"

namespace orvel {

using namespace android;

namespace {

struct Tag {
    const char* name;  // FFmpeg's, compared ignoring case
    uint32_t key;
};

constexpr Tag kTags[] = {
        {"album", kKeyAlbum},
        {"artist", kKeyArtist},
        {"album_artist", kKeyAlbumArtist},
        {"composer", kKeyComposer},
        {"genre", kKeyGenre},
        {"title", kKeyTitle},
        {"date", kKeyYear},
        {"author", kKeyAuthor},
        {"track", kKeyCdTrackNum},
        {"disc", kKeyDiscNum},
        {"compilation", kKeyCompilation},
        {"creation_time", kKeyDate},
        {"writer", kKeyLyricist},
};
static_assert(sizeof(kTags) / sizeof(kTags[0]) == 13);

struct ArtMime {
    AVCodecID id;
    const char* mime;
};

constexpr ArtMime kArtMimes[] = {
        {AV_CODEC_ID_MJPEG, "image/jpeg"}, {AV_CODEC_ID_PNG, "image/png"},
        {AV_CODEC_ID_BMP, "image/bmp"},    {AV_CODEC_ID_TIFF, "image/tiff"},
        {AV_CODEC_ID_GIF, "image/gif"},
};
static_assert(AV_CODEC_ID_MJPEG == 7 && AV_CODEC_ID_PNG == 61 && AV_CODEC_ID_BMP == 78 &&
              AV_CODEC_ID_TIFF == 96 && AV_CODEC_ID_GIF == 97);

bool beginsWith(const char* text, const char* prefix) {
    return strncasecmp(text, prefix, strlen(prefix)) == 0;
}

// An MP4 file's MIME type by its major brand (ISO/IEC 14496-12, 4.3).
const char* mimeOfBrand(const char* brand) {
    if (beginsWith(brand, "qt  ") || beginsWith(brand, "mqt ")) return MEDIA_MIMETYPE_CONTAINER_MOV;
    if (beginsWith(brand, "KDDI") || beginsWith(brand, "3g2")) return MEDIA_MIMETYPE_CONTAINER_3G2;
    return MEDIA_MIMETYPE_CONTAINER_MPEG4;
}

}  // namespace

status_t FFmpegObject::getFileMeta(OrvelMetaData& meta) {
    if (mInitCheck != OK) return BAD_VALUE;
    setFileMime(meta);
    setAlbumArtRelatedMeta(meta);
    if (!mHasVideo) setAlbumArt(meta);
    return OK;
}

void FFmpegObject::takeFileFacts() {
    av_dict_copy(&mFileFacts.tags, mFormatCtx->metadata, 0);
    const int audio = bestStream(AVMEDIA_TYPE_AUDIO);
    if (audio >= 0) {
        mFileFacts.audioMime = codecId2MimeType(mFormatCtx->streams[audio]->codecpar->codec_id);
    }
    const int video = bestStream(AVMEDIA_TYPE_VIDEO);
    if (video < 0) return;
    const AVStream* stream = mFormatCtx->streams[video];
    if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0 ||
        stream->attached_pic.data == nullptr) {
        return;
    }
    mFileFacts.cover = av_packet_clone(&stream->attached_pic);
    mFileFacts.coverCodec = stream->codecpar->codec_id;
}

void FFmpegObject::setFileMime(OrvelMetaData& meta) {
    const char* mime = getFileMime();
    if (mime == nullptr) return;
    if (strcmp(mime, MEDIA_MIMETYPE_CONTAINER_MPEG4) == 0) {
        const AVDictionaryEntry* brand = av_dict_get(mFileFacts.tags, "major_brand", nullptr, 0);
        if (brand != nullptr) {
            ALOGD("setFileMime, major_brand:%s", brand->value);
            mime = mimeOfBrand(brand->value);
        }
    }
    meta.setCString(kKeyMIMEType, mime);
    // Audio-only files in video containers go by their audio.
    if (mHasVideo || !beginsWith(mime, "video/") || mFileFacts.audioMime == nullptr) return;
    meta.setCString(kKeyMIMEType, mFileFacts.audioMime);
}

void FFmpegObject::setAlbumArtRelatedMeta(OrvelMetaData& meta) {
    const AVDictionary* tags = mFileFacts.tags;
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(tags, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        for (const Tag& tag : kTags) {
            if (strcasecmp(entry->key, tag.name) != 0) continue;
            meta.setCString(tag.key, entry->value);
            break;
        }
    }
    entry = av_dict_get(tags, "com.android.capture.fps", nullptr, AV_DICT_MATCH_CASE);
    if (entry != nullptr) meta.setFloat(kKeyCaptureRate, static_cast<float>(atof(entry->value)));

    entry = av_dict_get(tags, "location", nullptr, AV_DICT_MATCH_CASE);
    const size_t length = entry != nullptr ? strlen(entry->value) : 0;
    if (length == 0) return;
    if (entry->value[length - 1] == '/') {
        meta.setCString(kKeyLocation, entry->value);
        return;
    }
    // ISO 6709 ends a location with a solidus.
    char* location = new (std::nothrow) char[length + 2]();
    if (location == nullptr) {
        ALOGI("No memory.");
        return;
    }
    memcpy(location, entry->value, length);
    location[length] = '/';
    meta.setCString(kKeyLocation, location);
    delete[] location;
}

void FFmpegObject::setAlbumArt(OrvelMetaData& meta) {
    const AVPacket* picture = mFileFacts.cover;
    if (picture == nullptr) return;
    const char* artMime = getAlbumArtMime(mFileFacts.coverCodec);
    meta.setData(kKeyAlbumArt, kTypeNone, picture->data, static_cast<size_t>(picture->size));
    // In no key table: the store logs that and keeps nothing.
    meta.setCString(kKeyAlbumArtMIME, artMime);
    ALOGD("AlbumArt's mime is \"%s\"", artMime != nullptr ? artMime : "(null)");
}

const char* FFmpegObject::getAlbumArtMime(AVCodecID codecId) {
    for (const ArtMime& row : kArtMimes) {
        if (row.id == codecId) return row.mime;
    }
    return nullptr;
}

}  // namespace orvel
