// File-level metadata: container MIME type, tags, location, capture rate and the cover picture.

#define LOG_TAG "FFmpegObject"
#include "FileMeta.h"

#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <new>

#include <log/log.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "CodecMime.h"
#include "ContainerTable.h"
#include "SpecialContainer.h"

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

const char* getAlbumArtMime(AVCodecID codecId) {
    for (const ArtMime& row : kArtMimes) {
        if (row.id == codecId) return row.mime;
    }
    return nullptr;
}

// An MP4 file's MIME type by its major brand (ISO/IEC 14496-12, 4.3).
const char* mimeOfBrand(const char* brand) {
    if (beginsWith(brand, "qt  ") || beginsWith(brand, "mqt ")) return MEDIA_MIMETYPE_CONTAINER_MOV;
    if (beginsWith(brand, "KDDI") || beginsWith(brand, "3g2")) return MEDIA_MIMETYPE_CONTAINER_3G2;
    return MEDIA_MIMETYPE_CONTAINER_MPEG4;
}

}  // namespace

FileFacts takeFileFacts(AVFormatContext* context) {
    FileFacts facts;
    const Container* container = findContainer(context->iformat->name);
    if (container != nullptr) facts.mime = *container->mime;
    AVDictionary* tags = nullptr;
    av_dict_copy(&tags, context->metadata, 0);
    facts.tags.reset(tags);
    const int audio = bestStream(context, AVMEDIA_TYPE_AUDIO);
    if (audio >= 0) {
        facts.audioMime = codecId2MimeType(context->streams[audio]->codecpar->codec_id);
    }
    const int video = bestStream(context, AVMEDIA_TYPE_VIDEO);
    if (video < 0) return facts;
    const AVStream* stream = context->streams[video];
    if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0 ||
        stream->attached_pic.data == nullptr) {
        return facts;
    }
    facts.cover.reset(av_packet_clone(&stream->attached_pic));
    facts.coverCodec = stream->codecpar->codec_id;
    return facts;
}

void setFileMime(const FileFacts& facts, bool hasVideo, OrvelMetaData& meta) {
    const char* mime = facts.mime;
    if (mime == nullptr) return;
    if (strcmp(mime, MEDIA_MIMETYPE_CONTAINER_MPEG4) == 0) {
        const AVDictionaryEntry* brand = av_dict_get(facts.tags.get(), "major_brand", nullptr, 0);
        if (brand != nullptr) {
            ALOGD("setFileMime, major_brand:%s", brand->value);
            mime = mimeOfBrand(brand->value);
        }
    }
    meta.setCString(kKeyMIMEType, mime);
    // Audio-only files in video containers go by their audio.
    if (hasVideo || !beginsWith(mime, "video/") || facts.audioMime == nullptr) return;
    meta.setCString(kKeyMIMEType, facts.audioMime);
}

void setAlbumArtRelatedMeta(const AVDictionary* tags, OrvelMetaData& meta) {
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
    const std::unique_ptr<char[]> location(new (std::nothrow) char[length + 2]());
    if (location == nullptr) {
        ALOGI("No memory.");
        return;
    }
    memcpy(location.get(), entry->value, length);
    location[length] = '/';
    meta.setCString(kKeyLocation, location.get());
}

void setAlbumArt(const FileFacts& facts, OrvelMetaData& meta) {
    const AVPacket* picture = facts.cover.get();
    if (picture == nullptr) return;
    const char* artMime = getAlbumArtMime(facts.coverCodec);
    meta.setData(kKeyAlbumArt, kTypeNone, picture->data, static_cast<size_t>(picture->size));
    // In no key table: the store logs that and keeps nothing.
    meta.setCString(kKeyAlbumArtMIME, artMime);
    ALOGD("AlbumArt's mime is \"%s\"", artMime != nullptr ? artMime : "(null)");
}

}  // namespace orvel
