#include "FFmpegExtensions.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>

#include "bytes/PresentationTimes.h"
#include "bytes/Saturate.h"

namespace orvel {

using android::sp;

namespace {

bool isIdentity(const int32_t* matrix) {
    static constexpr int32_t kIdentity[9] = {1 << 16, 0, 0, 0, 1 << 16, 0, 0, 0, 1 << 30};
    return std::equal(kIdentity, kIdentity + 9, matrix);
}

}  // namespace

FFmpegExtensions::FFmpegExtensions(const AVFormatContext* context,
                                   const sp<OrvelDataSource>& source)
    : mContext(context),
      mIsMov(av_match_name("mov", context->iformat->name) != 0),
      mDataSource(source),
      mBoxSource(*source),
      mBoxes(mBoxSource) {}

void FFmpegExtensions::nameTimedText(AVStream* stream) {
    AVCodecParameters* parameters = stream->codecpar;
    if (parameters->codec_type == AVMEDIA_TYPE_SUBTITLE &&
        parameters->codec_id == AV_CODEC_ID_NONE &&
        parameters->codec_tag == MKTAG('t', 'x', '3', 'g')) {
        parameters->codec_id = AV_CODEC_ID_MOV_TEXT;
    }
}

std::optional<int32_t> FFmpegExtensions::rotationDegrees(const AVStream* stream) const {
    const AVDictionaryEntry* rotate = av_dict_get(stream->metadata, "rotate", nullptr, 0);
    if (rotate != nullptr) return atoi(rotate->value);
    // Newer libraries attach the display matrix and leave the rest to their callers. Only the MP4
    // demuxer ever published the entry.
    const int32_t* matrix = mIsMov ? compat::displayMatrix(stream) : nullptr;
    if (matrix == nullptr || isIdentity(matrix)) return std::nullopt;
    double degrees = -av_display_rotation_get(matrix);
    if (isnan(degrees)) return std::nullopt;
    if (degrees < 0) degrees += 360;
    // Through text with its six significant digits, as the entry has it: 89.9999999 is 90.
    char text[32];
    snprintf(text, sizeof(text), "%g", degrees);
    return atoi(text);
}

Mp4TrackRef FFmpegExtensions::trackRef(const AVStream* stream) const {
    Mp4TrackRef ref = {stream->id, 0};
    for (unsigned i = 0; i < mContext->nb_streams && mContext->streams[i] != stream; ++i) {
        const AVStream* earlier = mContext->streams[i];
        const bool isPicture = (earlier->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        if (earlier->id == stream->id && !isPicture) ++ref.nth;
    }
    return ref;
}

std::vector<ByteRange> FFmpegExtensions::timedTextDescriptions(const AVStream* stream) {
    if (!mIsMov) return {};
    return mBoxes.timedTextDescriptions(trackRef(stream)).value_or(std::vector<ByteRange>());
}

bool FFmpegExtensions::readTimedText(const std::vector<ByteRange>& descriptions, uint8_t* out) {
    return mBoxes.readRanges(descriptions, out);
}

std::shared_ptr<const PresentationTimes> FFmpegExtensions::presentationTimes(
        const AVStream* stream) {
    if (!mIsMov) return nullptr;
    Snapshot& snapshot = mSnapshots[stream->index];
    const auto entryCount = static_cast<size_t>(compat::indexEntryCount(stream));
    if (snapshot.times != nullptr && snapshot.times->count() == entryCount) return snapshot.times;
    // The index holds all samples of the movie box from the start; only fragments come later.
    if (!snapshot.table) snapshot.table = mBoxes.compositionTable(trackRef(stream), entryCount);
    if (!snapshot.table) return nullptr;
    snapshot.times = std::make_shared<PresentationTimes>(
            entryCount,
            [stream](size_t index) {
                const AVIndexEntry* entry = compat::indexEntry(stream, static_cast<int>(index));
                return IndexEntry{entry->timestamp, entry->pos,
                                  (entry->flags & AVINDEX_KEYFRAME) != 0};
            },
            *snapshot.table, static_cast<uint64_t>(std::max<int64_t>(stream->nb_frames, 0)));
    // A complete index does not grow any more.
    if (snapshot.times->complete()) snapshot.table.reset();
    return snapshot.times;
}

bool FFmpegExtensions::seeksByPresentationOfCra(const AVStream* stream) {
    return compat::kSeeksHevcByCraPresentation && mIsMov &&
           stream->codecpar->codec_id == AV_CODEC_ID_HEVC && mBoxes.hasSyncGroups(trackRef(stream));
}

int64_t FFmpegExtensions::presentationTime(const AVStream* stream, int index) {
    const auto times = presentationTimes(stream);
    return times != nullptr ? times->pts(static_cast<size_t>(index))
                            : compat::indexEntry(stream, index)->timestamp;
}

}  // namespace orvel
