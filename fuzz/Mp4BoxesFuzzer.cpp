// Any bytes as an MP4 file behind a source that may read short, fail, or not know its size; then
// the searches over what was read, with index entries made from the same bytes.
#include <algorithm>
#include <vector>

#include "FuzzInput.h"
#include "bytes/Mp4BoxReader.h"
#include "bytes/PresentationTimes.h"

using namespace orvel;

namespace {

class FuzzSource : public ByteSource {
  public:
    FuzzSource(const uint8_t* data, size_t size, uint8_t habits)
        : mData(data), mSize(static_cast<int64_t>(size)), mHabits(habits) {}

    ssize_t readAt(int64_t offset, void* data, size_t size) override {
        fuzz::require(offset >= 0 && size > 0);
        ++mReads;
        if ((mHabits & 1) != 0 && mReads == 1 + (mHabits >> 3)) return -1;
        if (offset >= mSize) return 0;
        size_t part = std::min(size, static_cast<size_t>(mSize - offset));
        if ((mHabits & 2) != 0) part = std::min<size_t>(part, 3);
        memcpy(data, mData + offset, part);
        return static_cast<ssize_t>(part);
    }
    int64_t size() override { return (mHabits & 4) != 0 ? -1 : mSize; }

    int reads() const { return mReads; }

  private:
    const uint8_t* mData;
    const int64_t mSize;
    const uint8_t mHabits;
    int mReads = 0;
};

// Bounds that follow from the file alone.
void checkTable(const CompositionTable& table, size_t fileSize, size_t maxSamples) {
    fuzz::require(table.movieOffsets.size() <= maxSamples);
    fuzz::require(table.movieShift >= 0);
    fuzz::require(table.fragmentOffsets.sampleCount() <= fileSize / 4);
    fuzz::require(table.fragmentOffsets.memoryBytes() <= 4 * fileSize);
    fuzz::require(table.fragmentOffsets.sampleCount() <= table.runSampleCount);
}

// Ascending and within the file, so that the caller's memory for their sum is justified.
void checkTexts(Mp4BoxReader& reader, const std::vector<ByteRange>& texts, size_t fileSize) {
    int64_t end = 0;
    size_t total = 0;
    for (const ByteRange& text : texts) {
        fuzz::require(text.begin >= end && text.end > text.begin);
        end = text.end;
        total += static_cast<size_t>(text.size());
    }
    fuzz::require(end <= static_cast<int64_t>(fileSize));
    const std::unique_ptr<uint8_t[]> out(new uint8_t[total]);
    reader.readRanges(texts, out.get());
}

void search(const CompositionTable& table, size_t count, const uint8_t* data, size_t size) {
    const auto number = [data, size](size_t i) -> int64_t {
        int64_t value = 0;
        memcpy(&value, data + (i * 8) % (size - 7), 8);
        return value;
    };
    const auto entryAt = [&](size_t i) {
        // Hostile times, or small steps with positions inside the file.
        const bool wild = (data[0] & 1) != 0;
        return IndexEntry{wild ? number(i) : static_cast<int64_t>(10 * i),
                          wild ? number(i + 1) : static_cast<int64_t>(10 * i), number(i) % 3 == 0};
    };
    const PresentationTimes times(count, entryAt, table, static_cast<uint64_t>(number(3)));
    fuzz::require(times.memoryBytes() <= 13 * count + 64);
    for (int64_t wanted : {number(1), number(2), int64_t{0}, int64_t{100}, INT64_MIN, INT64_MAX}) {
        const int64_t first = times.firstKeyAtOrAfter(wanted);
        fuzz::require(first == -1 || (first >= 0 && first < static_cast<int64_t>(count) &&
                                      times.isKey(static_cast<size_t>(first))));
        const int64_t closest = times.searchClosest(wanted, ClosestMode::PresentationTime);
        bool found = closest == -1;
        for (size_t i = 0; i < count && !found; ++i)
            found = times.pts(i) == closest;
        fuzz::require(found);
        times.searchClosest(wanted, ClosestMode::SeekTimestamp);
        times.searchClosest(wanted, ClosestMode::SeekTimestamp, BackwardSeek::ByPresentationOfCra);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const uint8_t habits = input.byte();
    const size_t count = input.word() % 1024;
    const auto file = input.rest();
    const size_t fileSize = input.restSize();
    FuzzSource source(file.get(), fileSize, habits);
    Mp4BoxReader reader(source);
    for (int32_t id : {1, 2}) {
        for (uint32_t nth : {0u, 1u}) {
            const auto texts = reader.timedTextDescriptions({id, nth});
            if (texts) checkTexts(reader, *texts, fileSize);
            const auto table = reader.compositionTable({id, nth}, count);
            if (!table) continue;
            checkTable(*table, fileSize, count);
            if (fileSize >= 16) search(*table, count, file.get(), fileSize);
        }
    }
    // Twelve questions, each a walk over the file at most: so many reads and no more, however short
    // each is.
    fuzz::require(static_cast<size_t>(source.reads()) <= 12 * (3 * fileSize + 64));
    return 0;
}
