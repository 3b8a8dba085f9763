// Boxes (atoms) of ISO/IEC 14496-12 clause 4.2 in an untrusted file: exact reads through a small
// window, and a walk over sibling boxes that never leaves its parent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ByteSource.h"
#include "FourCharacterCode.h"

namespace orvel {

// A stretch of the file: [begin, end), 0 <= begin <= end.
struct ByteRange {
    int64_t begin = 0;
    int64_t end = 0;

    int64_t size() const { return end - begin; }
};

// Reads exact amounts through a window: the small reads of a walk over headers share one read of
// the source, and reading on from the window's end doubles it, so that a long table takes few
// reads. Not thread-safe.
class ExactReader {
  public:
    explicit ExactReader(ByteSource& source);

    // Reads all size bytes, or answers false: an error of the source (failed() is then true and
    // stays so), or the end of the file before the last byte.
    bool read(int64_t offset, void* data, size_t size);

    // Reads and interprets one number, big-endian.
    bool read32(int64_t offset, uint32_t* value);
    bool read64(int64_t offset, uint64_t* value);

    bool failed() const { return mFailed; }

    // The whole file; one that does not know its size ends where a read finds nothing.
    ByteRange wholeFile() const { return {0, mEnd}; }

  private:
    bool fillWindow(int64_t offset);
    int64_t windowBytes() const { return static_cast<int64_t>(mWindowSize); }

    ByteSource& mSource;
    const int64_t mEnd;
    bool mFailed = false;
    // The window holds [mWindowBegin, mWindowBegin + mWindowSize), mWindowSize <= mWindow.size().
    int64_t mWindowBegin = 0;
    size_t mWindowSize = 0;
    std::vector<uint8_t> mWindow;
};

// Walks over the boxes of a range in file order:
//     for (BoxWalk box(reader, range); box.next();) ... box.type(), box.payload() ...
// Size 1 is a 64-bit size, 0 means to the end of the range, and a box that claims more than its
// range ends with it. The walk stops at the end of the range, at a size smaller than the header,
// and where no header can be read. Every step advances by at least 8 bytes.
class BoxWalk {
  public:
    BoxWalk(ExactReader& reader, const ByteRange& range) : mReader(reader), mRange(range) {}

    bool next();

    uint32_t type() const { return mType; }
    const ByteRange& payload() const { return mPayload; }

  private:
    ExactReader& mReader;
    const ByteRange mRange;
    // mRange.begin before the first box, then the end of the box last found.
    int64_t mNext = -1;
    uint32_t mType = 0;
    ByteRange mPayload;
};

}  // namespace orvel
