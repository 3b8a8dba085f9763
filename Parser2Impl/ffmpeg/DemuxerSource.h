#pragma once

#include "FFmpegCompat.h"
#include "base/OrvelDataSource.h"
#include "bytes/ByteSource.h"
#include "bytes/Mp4IndexClaims.h"

namespace orvel {

// The data source as the box readers want it. Does not own it.
class BoxSource : public ByteSource {
  public:
    explicit BoxSource(OrvelDataSource& source) : mSource(source) {}
    ssize_t readAt(int64_t offset, void* data, size_t size) override;
    int64_t size() override;

  private:
    OrvelDataSource& mSource;
};

// The data source as the demuxer reads it. In an MP4 file it keeps back the bytes of a box that
// claims more samples than the file can justify: the demuxer believes any number, and a few KB
// would cost it gigabytes. The read of such bytes and all later ones answer ERROR_MALFORMED.
//
// Justified are kFreeEntries index entries in all, and one more for each byte of the file. Whether
// the file has so many bytes, a read of one tells; sizes are not believed.
class DemuxerSource : public OrvelDataSource {
  public:
    // Of about 40 bytes each; of E-AC-3, 2.3 hours in a file that is cut or still growing.
    static constexpr uint64_t kFreeEntries = 1 << 18;

    // context: what the index is in, which outlives every read.
    DemuxerSource(const OrvelDataSource& source, const AVFormatContext* context)
        : OrvelDataSource(source), mContext(context) {}

    // From now on the source is read as an MP4 file.
    void watchBoxes() { mWatches = true; }
    bool hasRefused() const { return mHasRefused; }

    ssize_t readAt(off64_t offset, void* data, size_t size) override;

  protected:
    ~DemuxerSource() override = default;

  private:
    bool isJustified(uint64_t claimed);

    const AVFormatContext* const mContext;
    BoxSource mBoxSource{*this};
    Mp4IndexClaims mClaims{mBoxSource};
    bool mWatches = false;
    bool mHasRefused = false;
};

}  // namespace orvel
