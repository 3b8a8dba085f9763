// Boxes (ISO/IEC 14496-12) for the tests of what reads them, and a source that serves them.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

#include "bytes/ByteSource.h"

namespace orvel::test {

using Bytes = std::vector<uint8_t>;

inline Bytes join(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

inline Bytes words(std::initializer_list<int64_t> values) {
    Bytes out;
    for (int64_t value : values) {
        for (int shift = 24; shift >= 0; shift -= 8)
            out.push_back(static_cast<uint8_t>(value >> shift));
    }
    return out;
}

inline Bytes box(const char* type, const Bytes& payload, int64_t claimed = -1) {
    Bytes out = words({claimed < 0 ? static_cast<int64_t>(payload.size()) + 8 : claimed});
    out.insert(out.end(), type, type + 4);
    return join({out, payload});
}

inline Bytes largeBox(const char* type, const Bytes& payload) {
    const Bytes size = words({0, static_cast<int64_t>(payload.size()) + 16});
    return box(type, join({size, payload}), 1);
}

inline Bytes trak(int64_t id, const Bytes& tables) {
    return box("trak", join({box("tkhd", words({0, 0, 0, id, 0, 0})),
                             box("mdia", box("minf", box("stbl", tables)))}));
}

inline Bytes ctts(std::initializer_list<std::pair<int64_t, int64_t>> runs, int64_t claimed = -1) {
    Bytes payload = words({0, claimed < 0 ? static_cast<int64_t>(runs.size()) : claimed});
    for (const auto& [count, offset] : runs)
        payload = join({payload, words({count, offset})});
    return box("ctts", payload);
}

inline Bytes entry(const char* type, size_t size, uint8_t fill) {
    return box(type, join({words({0, 1}), Bytes(size - 16, fill)}));
}

// Serves bytes with the faults of a real source.
class TestSource : public ByteSource {
  public:
    explicit TestSource(Bytes bytes)
        : claimedSize(static_cast<int64_t>(bytes.size())), mBytes(std::move(bytes)) {}

    ssize_t readAt(int64_t offset, void* data, size_t size) override {
        if (reads++ == failAt) return -5;
        if (offset < 0 || offset >= static_cast<int64_t>(mBytes.size())) return 0;
        if (offset >= failFrom) return -5;
        const auto room = std::min(static_cast<int64_t>(mBytes.size()), failFrom) - offset;
        const size_t part = std::min({size, static_cast<size_t>(room), longest});
        memcpy(data, mBytes.data() + offset, part);
        bytesRead += part;
        return static_cast<ssize_t>(part);
    }
    int64_t size() override { return claimedSize; }

    int reads = 0;
    size_t bytesRead = 0;
    int failAt = -1;
    int64_t failFrom = INT64_MAX;
    size_t longest = SIZE_MAX;
    int64_t claimedSize;

  private:
    const Bytes mBytes;
};

}  // namespace orvel::test
