// Subtitle samples, read one at a time by the stream's index.

#define LOG_TAG "FFmpegReader"
#include "ReaderSubtitle.h"

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>

#include "ReaderTrack.h"
#include "ffmpeg/ErrorText.h"
#include "ffmpeg/FFmpegExtensions.h"

namespace orvel {

using namespace android;

status_t readSubtitleData(const OpenContainer& container, FFmpegReader::Track& track) {
    AVStream* stream = track.stream();
    const int32_t index = track.nextSubtitle();
    if (index >= compat::indexEntryCount(stream)) {
        ALOGW("[%d] subtitle index out of range!", stream->index);
        return ERROR_END_OF_STREAM;
    }
    // A copy: what follows may read further into a fragmented file, and grow the index.
    const AVIndexEntry entry = *compat::indexEntry(stream, index);
    // Before the read: an entry that cannot be read is not tried again.
    track.setNextSubtitle(index + 1);

    AVIOContext* pb = container.context->pb;
    if (avio_seek(pb, entry.pos, SEEK_SET) != entry.pos) {
        ALOGW("stream: %d, offset: %lld, partial file.", stream->index,
              static_cast<long long>(entry.pos));
        return BAD_VALUE;
    }
    AVPacket* packet = av_packet_alloc();
    const int result = packet != nullptr ? av_get_packet(pb, packet, entry.size) : AVERROR(ENOMEM);
    if (result < 0) {
        av_packet_free(&packet);
        // It is reported here: left in place it would end audio and video with the same error.
        pb->error = 0;
        if (result == AVERROR_EOF) {
            ALOGW("[%d] subtitle reach the end of file.", stream->index);
            return ERROR_END_OF_STREAM;
        }
        ALOGE("[%d] subtitle read error:%s", stream->index, ErrorText(result).c_str());
        return ERROR_IO;
    }
    packet->stream_index = stream->index;
    packet->dts = entry.timestamp;
    packet->pts = container.extensions.presentationTime(stream, index);
    if ((entry.flags & AVINDEX_KEYFRAME) != 0) packet->flags |= AV_PKT_FLAG_KEY;
    packet->pos = entry.pos;
    track.cache()->queueBuffer(packet);
    return OK;
}

}  // namespace orvel
