#include "Mp4Box.h"

#include <algorithm>
#include <cstring>

#include "ByteOrder.h"

namespace orvel {

namespace {

constexpr size_t kSmallWindow = 4096;
constexpr size_t kLargeWindow = 65536;

int64_t endOf(ByteSource& source) {
    const int64_t size = source.size();
    return size < 0 ? INT64_MAX : size;
}

}  // namespace

ExactReader::ExactReader(ByteSource& source) : mSource(source), mEnd(endOf(source)) {}

bool ExactReader::fillWindow(int64_t offset) {
    const bool readingOn = mWindowSize > 0 && offset - mWindowBegin == windowBytes();
    const size_t wanted = readingOn ? std::min(2 * mWindow.size(), kLargeWindow) : kSmallWindow;
    mWindow.resize(
            static_cast<size_t>(std::min<int64_t>(static_cast<int64_t>(wanted), mEnd - offset)));
    mWindowBegin = offset;
    mWindowSize = 0;
    const ssize_t got = mSource.readAt(offset, mWindow.data(), mWindow.size());
    if (got < 0 || static_cast<size_t>(got) > mWindow.size()) {
        mFailed = true;
        return false;
    }
    mWindowSize = static_cast<size_t>(got);
    return got > 0;
}

bool ExactReader::read(int64_t offset, void* data, size_t size) {
    if (mFailed || offset < 0 || offset > mEnd) return false;
    if (size > static_cast<uint64_t>(mEnd - offset)) return false;
    auto* out = static_cast<uint8_t*>(data);
    while (size > 0) {
        const bool inside = offset >= mWindowBegin && offset - mWindowBegin < windowBytes();
        if (!inside && !fillWindow(offset)) return false;
        const auto skipped = static_cast<size_t>(offset - mWindowBegin);
        const size_t part = std::min(size, mWindowSize - skipped);
        memcpy(out, mWindow.data() + skipped, part);
        out += part;
        offset += static_cast<int64_t>(part);
        size -= part;
    }
    return true;
}

bool ExactReader::read32(int64_t offset, uint32_t* value) {
    uint8_t bytes[4];
    if (!read(offset, bytes, sizeof(bytes))) return false;
    *value = loadBe32(bytes);
    return true;
}

bool ExactReader::read64(int64_t offset, uint64_t* value) {
    uint8_t bytes[8];
    if (!read(offset, bytes, sizeof(bytes))) return false;
    *value = loadBe64(bytes);
    return true;
}

bool BoxWalk::next() {
    constexpr int64_t kHeaderSize = 8;
    constexpr int64_t kLargeHeaderSize = 16;
    const int64_t begin = mNext < 0 ? mRange.begin : mNext;
    const int64_t room = mRange.end - begin;
    uint8_t header[kHeaderSize];
    if (room < kHeaderSize || !mReader.read(begin, header, sizeof(header))) return false;
    mType = loadBe32(header + 4);
    int64_t headerSize = kHeaderSize;
    uint64_t size = loadBe32(header);
    if (size == 1 && room >= kLargeHeaderSize) {
        if (!mReader.read64(begin + kHeaderSize, &size)) return false;
        headerSize = kLargeHeaderSize;
    } else if (size == 0) {
        size = static_cast<uint64_t>(room);
    }
    // The demultiplexer, too, gives up on the rest of the parent here.
    if (size < static_cast<uint64_t>(headerSize) || size > INT64_MAX) return false;
    mPayload.begin = begin + headerSize;
    mPayload.end = begin + std::min(static_cast<int64_t>(size), room);
    mNext = mPayload.end;
    return true;
}

}  // namespace orvel
