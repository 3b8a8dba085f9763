// What the formats of all tracks have in common.
#include "TrackFormat.h"

#include "CodecMime.h"
#include "Timestamps.h"

namespace orvel {

void initTrackInfo(AVStream* stream, const char* fileMime, int64_t fileDurationUs,
                   TrackInfo* info) {
    info->streamIndex = stream->index;
    info->timeBase = stream->time_base;
    info->stream = stream;
    OrvelMetaData& meta = info->meta;
    meta.setCString(kKeyMIMEType, codecId2MimeType(stream->codecpar->codec_id));
    if (fileMime != nullptr) meta.setCString(kKeyFileFormat, fileMime);
    const AVDictionaryEntry* language = av_dict_get(stream->metadata, "language", nullptr, 0);
    if (language != nullptr) meta.setCString(kKeyLanguage, language->value);

    int64_t durationUs = av_rescale_q(stream->duration, stream->time_base, kMicroseconds);
    if (durationUs <= 1) durationUs = fileDurationUs;
    if (durationUs < 0) return;
    meta.setInt64(kKeyDuration, durationUs);
    info->durationUs = durationUs;
}

}  // namespace orvel
