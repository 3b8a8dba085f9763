// The first bytes of a fuzzer's input steer the environment, the rest is the data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace orvel::fuzz {

// A claim that the code under test broke. Unlike assert it is there in every build.
inline void require(bool holds) {
    if (!holds) abort();
}

class Input {
  public:
    Input(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    uint8_t byte() {
        if (mSize == 0) return 0;
        --mSize;
        return *mData++;
    }
    uint16_t word() {
        const uint8_t high = byte();
        return static_cast<uint16_t>(high << 8 | byte());
    }
    size_t restSize() const { return mSize; }

    // A copy that ends where the heap block ends, so that the sanitizer sees the first overrun.
    std::unique_ptr<uint8_t[]> rest() const {
        std::unique_ptr<uint8_t[]> copy(new uint8_t[mSize]);
        if (mSize > 0) memcpy(copy.get(), mData, mSize);
        return copy;
    }

  private:
    const uint8_t* mData;
    size_t mSize;
};

}  // namespace orvel::fuzz
