// The plain C interface between the framework and an extractor plug-in: tables of functions, each
// with a handle that is passed back as the first argument of its functions.
#pragma once

#include <media/NdkMediaError.h>
#include <media/NdkMediaFormat.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>
#include <utils/Errors.h>

namespace android {

extern "C" {

// The framework's data source. Its functions may be called from any thread.
struct CDataSource {
    // Bytes read, fewer than asked for only at the end, 0 there; or a negative status.
    ssize_t (*readAt)(void* handle, off64_t offset, void* data, size_t size);
    status_t (*getSize)(void* handle, off64_t* size);
    uint32_t (*flags)(void* handle);
    bool (*getUri)(void* handle, char* uriString, size_t bufferSize);
    void* handle;
};

// The option word of a read: a seek mode in the low three bits, and flags.
enum CMediaTrackReadOptions : uint32_t {
    SEEK_PREVIOUS_SYNC = 0,
    SEEK_NEXT_SYNC = 1,
    SEEK_CLOSEST_SYNC = 2,
    SEEK_CLOSEST = 3,
    SEEK_FRAME_INDEX = 4,
    SEEK = 8,
    NONBLOCKING = 16,
};

// A buffer of the framework: memory, the range of it that is valid, and a format of its own.
struct CMediaBuffer {
    void* handle;
    void (*release)(void* handle);
    void* (*data)(void* handle);
    size_t (*size)(void* handle);
    size_t (*range_offset)(void* handle);
    size_t (*range_length)(void* handle);
    void (*set_range)(void* handle, size_t offset, size_t length);
    AMediaFormat* (*meta_data)(void* handle);
};

// The buffers that the framework lends to one track.
struct CMediaBufferGroup {
    void* handle;
    bool (*init)(void* handle, size_t buffers, size_t buffer_size, size_t growthLimit);
    void (*add_buffer)(void* handle, size_t size);
    media_status_t (*acquire_buffer)(void* handle, CMediaBuffer** buffer, bool nonBlocking,
                                     size_t requestedSize);
    bool (*has_buffers)(void* handle);
};

struct CMediaTrack {
    void* data;
    void (*free)(void* data);
    media_status_t (*start)(void* data, CMediaBufferGroup* bufferGroup);
    media_status_t (*stop)(void* data);
    media_status_t (*getFormat)(void* data, AMediaFormat* format);
    media_status_t (*read)(void* data, CMediaBuffer** buffer, uint32_t options, int64_t seekPosUs);
    bool (*supportsNonBlockingRead)(void* data);
};

struct CMediaExtractor {
    void* data;
    void (*free)(void* data);
    size_t (*countTracks)(void* data);
    CMediaTrack* (*getTrack)(void* data, size_t index);
    media_status_t (*getTrackMetaData)(void* data, AMediaFormat* meta, size_t index,
                                       uint32_t flags);
    media_status_t (*getMetaData)(void* data, AMediaFormat* meta);
    uint32_t (*flags)(void* data);
    media_status_t (*setMediaCas)(void* data, const uint8_t* casToken, size_t size);
    const char* (*name)(void* data);
};

// Makes the extractor for a source, with what the sniff function left in `meta`.
typedef CMediaExtractor* (*CreatorFunc)(CDataSource* source, void* meta);
typedef void (*FreeMetaFunc)(void* meta);

// Null when the plug-in does not take the source; else also a confidence from 0 to 1.
typedef CreatorFunc (*SnifferFunc)(CDataSource* source, float* confidence, void** meta,
                                   FreeMetaFunc* freeMeta);

typedef struct {
    uint8_t b[16];
} media_uuid_t;

typedef struct {
    // Which of the records below is meant.
    const uint32_t def_version;
    // Identifies the plug-in. Of two with the same one the later version is loaded.
    media_uuid_t extractor_uuid;
    const uint32_t extractor_version;
    const char* extractor_name;

    union {
        struct {
            SnifferFunc sniff;
        } v2;
        struct {
            SnifferFunc sniff;
            // File name extensions without the dot, ended by a null pointer.
            const char** supported_types;
        } v3;
    } u;
} ExtractorDef;

const uint32_t EXTRACTORDEF_VERSION_LEGACY = 1;
const uint32_t EXTRACTORDEF_VERSION_NDK_V1 = 2;
const uint32_t EXTRACTORDEF_VERSION_NDK_V2 = 3;
const uint32_t EXTRACTORDEF_VERSION = EXTRACTORDEF_VERSION_NDK_V2;

// The function that a plug-in exports under the name GETEXTRACTORDEF.
typedef ExtractorDef (*GetExtractorDef)();

}  // extern "C"

}  // namespace android
