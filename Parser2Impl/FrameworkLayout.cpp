// The layouts of the records that the framework, a separate binary, and the plug-in hand each
// other. Nothing is compiled into the library: a platform whose records differ fails to build here.
#include <stddef.h>

#include <media/MediaExtractorPluginApi.h>

namespace orvel {
namespace {

using android::CDataSource;
using android::CMediaBuffer;
using android::CMediaBufferGroup;
using android::CMediaExtractor;
using android::CMediaTrack;
using android::ExtractorDef;

constexpr size_t kPointer = 8;
static_assert(sizeof(void*) == kPointer);

static_assert(android::EXTRACTORDEF_VERSION == 3);
static_assert(sizeof(ExtractorDef) == 48);
static_assert(offsetof(ExtractorDef, def_version) == 0);
static_assert(offsetof(ExtractorDef, extractor_uuid) == 4 && sizeof(android::media_uuid_t) == 16);
static_assert(offsetof(ExtractorDef, extractor_version) == 20);
static_assert(offsetof(ExtractorDef, extractor_name) == 24);
static_assert(offsetof(ExtractorDef, u.v3.sniff) == 32);
static_assert(offsetof(ExtractorDef, u.v3.supported_types) == 40);

static_assert(sizeof(CMediaExtractor) == 9 * kPointer);
static_assert(offsetof(CMediaExtractor, data) == 0 * kPointer);
static_assert(offsetof(CMediaExtractor, free) == 1 * kPointer);
static_assert(offsetof(CMediaExtractor, countTracks) == 2 * kPointer);
static_assert(offsetof(CMediaExtractor, getTrack) == 3 * kPointer);
static_assert(offsetof(CMediaExtractor, getTrackMetaData) == 4 * kPointer);
static_assert(offsetof(CMediaExtractor, getMetaData) == 5 * kPointer);
static_assert(offsetof(CMediaExtractor, flags) == 6 * kPointer);
static_assert(offsetof(CMediaExtractor, setMediaCas) == 7 * kPointer);
static_assert(offsetof(CMediaExtractor, name) == 8 * kPointer);

static_assert(sizeof(CMediaTrack) == 7 * kPointer);
static_assert(offsetof(CMediaTrack, data) == 0 * kPointer);
static_assert(offsetof(CMediaTrack, free) == 1 * kPointer);
static_assert(offsetof(CMediaTrack, start) == 2 * kPointer);
static_assert(offsetof(CMediaTrack, stop) == 3 * kPointer);
static_assert(offsetof(CMediaTrack, getFormat) == 4 * kPointer);
static_assert(offsetof(CMediaTrack, read) == 5 * kPointer);
static_assert(offsetof(CMediaTrack, supportsNonBlockingRead) == 6 * kPointer);

static_assert(sizeof(CDataSource) == 5 * kPointer);
static_assert(offsetof(CDataSource, readAt) == 0 * kPointer);
static_assert(offsetof(CDataSource, getSize) == 1 * kPointer);
static_assert(offsetof(CDataSource, flags) == 2 * kPointer);
static_assert(offsetof(CDataSource, getUri) == 3 * kPointer);
static_assert(offsetof(CDataSource, handle) == 4 * kPointer);

static_assert(sizeof(CMediaBufferGroup) == 5 * kPointer);
static_assert(offsetof(CMediaBufferGroup, handle) == 0 * kPointer);
static_assert(offsetof(CMediaBufferGroup, init) == 1 * kPointer);
static_assert(offsetof(CMediaBufferGroup, add_buffer) == 2 * kPointer);
static_assert(offsetof(CMediaBufferGroup, acquire_buffer) == 3 * kPointer);
static_assert(offsetof(CMediaBufferGroup, has_buffers) == 4 * kPointer);

static_assert(sizeof(CMediaBuffer) == 8 * kPointer);
static_assert(offsetof(CMediaBuffer, handle) == 0 * kPointer);
static_assert(offsetof(CMediaBuffer, release) == 1 * kPointer);
static_assert(offsetof(CMediaBuffer, data) == 2 * kPointer);
static_assert(offsetof(CMediaBuffer, size) == 3 * kPointer);
static_assert(offsetof(CMediaBuffer, range_offset) == 4 * kPointer);
static_assert(offsetof(CMediaBuffer, range_length) == 5 * kPointer);
static_assert(offsetof(CMediaBuffer, set_range) == 6 * kPointer);
static_assert(offsetof(CMediaBuffer, meta_data) == 7 * kPointer);

}  // namespace
}  // namespace orvel
