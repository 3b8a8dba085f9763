// Host-only view of the entries of a media format.
#pragma once

#include <media/NdkMediaFormat.h>
#include <stddef.h>
#include <stdint.h>

namespace standin {

enum class FormatType { Int32, Int64, Float, String, Buffer, Rect };

// Only the member that belongs to the type is set; the others are zero.
struct FormatValue {
    FormatType type;
    int32_t int32;
    int64_t int64;
    float floatValue;
    const char* string;
    const void* data;
    size_t dataSize;
    int32_t rect[4];  // left, top, right, bottom
};

// Visits every entry, ordered by key name. Pointers are valid during the visit only; the visitor
// must not change the format.
__attribute__((visibility("default"))) void forEachEntry(
        const AMediaFormat* format,
        void (*visit)(void* cookie, const char* key, const FormatValue& value), void* cookie);

}  // namespace standin
