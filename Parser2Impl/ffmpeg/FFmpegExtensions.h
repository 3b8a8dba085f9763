#pragma once

#include <stddef.h>
#include <stdint.h>

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include <utils/StrongPointer.h>

#include "DemuxerSource.h"
#include "FFmpegCompat.h"
#include "bytes/Mp4BoxReader.h"

namespace orvel {

class PresentationTimes;

// What the device's FFmpeg has beyond the stock library, supplied on the stock one: the "rotate"
// entry, timed-text sample descriptions, and the presentation time of each index entry with the
// search for the closest one. For MP4-family files it reads the boxes that it needs by itself, from
// the data source and not through the bridge, and only when somebody asks: a file without timed
// text that is never sought pays nothing.
//
// Made when the container is open. The framework thread that builds the track list uses the first
// half, the reader's looper thread the second; the two never overlap. Presentation times are
// immutable once made and may be read by any thread.
class FFmpegExtensions {
  public:
    // context: the opened container, which outlives this object.
    FFmpegExtensions(const AVFormatContext* context, const android::sp<OrvelDataSource>& source);

    // The stock library leaves a timed-text stream with several sample descriptions without a codec
    // id; gives it the one that it should have.
    static void nameTimedText(AVStream* stream);

    // The "rotate" entry of a stream as a number of degrees, clockwise.
    std::optional<int32_t> rotationDegrees(const AVStream* stream) const;

    // Where the stream's sample entries of type 'tx3g' (3GPP TS 26.245, 5.16) lie in the file:
    // whole boxes in their order, which the file has room for. Empty without any, and when they
    // cannot be read.
    std::vector<ByteRange> timedTextDescriptions(const AVStream* stream);

    // Reads them one after the other into out, which has room for the sum of their sizes; false
    // when some byte cannot be read.
    bool readTimedText(const std::vector<ByteRange>& descriptions, uint8_t* out);

    // The presentation times of what the stream's index holds by now; null for another container
    // and for boxes that cannot be read.
    std::shared_ptr<const PresentationTimes> presentationTimes(const AVStream* stream);

    // By the library's version: the demuxer seeks this stream by the presentation times of its open
    // key pictures, which needs other arguments going backward and does not work going forward.
    bool seeksByPresentationOfCra(const AVStream* stream);

    // The presentation time of one index entry, in the stream's time base: the entry's own
    // timestamp where nothing better is known.
    int64_t presentationTime(const AVStream* stream, int index);

  private:
    struct Snapshot {
        std::optional<CompositionTable> table;           // while the index can still grow
        std::shared_ptr<const PresentationTimes> times;  // of the entries known when it was made
    };

    Mp4TrackRef trackRef(const AVStream* stream) const;

    const AVFormatContext* const mContext;
    const bool mIsMov;
    const android::sp<OrvelDataSource> mDataSource;
    BoxSource mBoxSource;
    Mp4BoxReader mBoxes;
    std::map<int, Snapshot> mSnapshots;  // by stream index
};

}  // namespace orvel
