#pragma once

#include <string.h>

#include <deque>
#include <vector>

#include <media/MediaExtractorPluginApi.h>
#include <media/NdkMediaFormat.h>

#include "framework/MemorySource.h"

namespace orvel::test {

// A framework buffer over memory of its own, which counts its releases.
struct FakeBuffer {
    explicit FakeBuffer(size_t size) : memory(size) {}
    ~FakeBuffer() { AMediaFormat_delete(format); }

    static FakeBuffer& of(void* handle) { return *static_cast<FakeBuffer*>(handle); }

    std::vector<char> memory;
    AMediaFormat* const format = AMediaFormat_new();
    size_t offset = 0, length = 0;
    int releases = 0;
    android::CMediaBuffer table = {this,
                                   [](void* self) { ++of(self).releases; },
                                   [](void* self) -> void* { return of(self).memory.data(); },
                                   [](void* self) { return of(self).memory.size(); },
                                   [](void* self) { return of(self).offset; },
                                   [](void* self) { return of(self).length; },
                                   [](void* self, size_t offset, size_t length) {
                                       of(self).offset = offset;
                                       of(self).length = length;
                                   },
                                   [](void* self) { return of(self).format; }};
};

// A framework buffer group that answers each acquisition as the test says next, and keeps the
// arguments of the last call.
struct FakeGroup {
    struct Answer {
        FakeBuffer* buffer;
        media_status_t status;
    };

    static FakeGroup& of(void* handle) { return *static_cast<FakeGroup*>(handle); }

    std::deque<Answer> answers;
    std::vector<size_t> call;
    android::CMediaBufferGroup table = {
            this,
            [](void* self, size_t buffers, size_t size, size_t limit) {
                of(self).call = {buffers, size, limit};
                return true;
            },
            [](void* self, size_t size) { of(self).call = {size}; },
            [](void* self, android::CMediaBuffer** buffer, bool nonBlocking, size_t size) {
                const Answer answer = of(self).answers.front();
                of(self).answers.pop_front();
                of(self).call = {nonBlocking, size};
                *buffer = answer.buffer == nullptr ? nullptr : &answer.buffer->table;
                return answer.status;
            },
            [](void* self) { return !of(self).answers.empty(); }};
};

// A WAV file (RIFF, "fmt " and "data" chunks) of 16-bit mono silence at 8000 Hz.
struct WavSource : host::DataSource {
    explicit WavSource(uint32_t samples, uint32_t flagBits = 0) : flagBits(flagBits) {
        const uint32_t header[] = {0x46464952, 36 + samples * 2, 0x45564157, 0x20746D66,
                                   16,         0x00010001,       8000,       16000,
                                   0x00100002, 0x61746164,       samples * 2};
        bytes.resize(sizeof(header) + samples * 2);
        memcpy(bytes.data(), header, sizeof(header));
    }
    ssize_t readAt(off64_t offset, void* data, size_t size) override {
        ++reads;
        return host::MemorySource(bytes.data(), bytes.size()).readAt(offset, data, size);
    }
    android::status_t getSize(off64_t* size) override {
        return host::MemorySource(bytes.data(), bytes.size()).getSize(size);
    }
    uint32_t flags() override { return flagBits; }

    std::vector<uint8_t> bytes;
    const uint32_t flagBits;
    int reads = 0;
};

}  // namespace orvel::test
