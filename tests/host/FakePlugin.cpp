// A plug-in library for the loader's tests. A source whose first byte is 'S' is taken; its
// extractor has no tracks. What happens to the message shows as a read of the source at one of
// these offsets.
#include <media/MediaExtractorPluginApi.h>

#include <cstdlib>

#include "FakePlugin.h"

namespace {

using namespace android;

[[maybe_unused]] void touch(CDataSource* source, off64_t offset) {
    char byte;
    source->readAt(source->handle, offset, &byte, 1);
}

[[maybe_unused]] CMediaExtractor* create(CDataSource* source, void* message) {
    touch(static_cast<CDataSource*>(message), kCreatedWithMessage);
    char byte = 0;
    source->readAt(source->handle, 1, &byte, 1);
    if (byte == 'N') return nullptr;
    auto* table = static_cast<CMediaExtractor*>(calloc(1, sizeof(CMediaExtractor)));
    table->data = source;
    table->free = [](void* data) { touch(static_cast<CDataSource*>(data), kExtractorFreed); };
    table->countTracks = [](void*) { return size_t{0}; };
    table->name = [](void*) -> const char* { return "Fake"; };
    return table;
}

[[maybe_unused]] CreatorFunc sniff(CDataSource* source, float* confidence, void** message,
                                   FreeMetaFunc* freeMessage) {
    char byte = 0;
    source->readAt(source->handle, 0, &byte, 1);
    if (byte != 'S') return nullptr;
    *confidence = 0.5f;
    *message = source;
    *freeMessage = [](void* message) { touch(static_cast<CDataSource*>(message), kMessageFreed); };
    return create;
}

}  // namespace

#ifndef FAKE_NO_ENTRY
extern "C" __attribute__((visibility("default"))) ExtractorDef GETEXTRACTORDEF() {
    static const char* extensions[] = {"one", "two", nullptr};
#ifdef FAKE_WRONG_VERSION
    constexpr uint32_t kVersion = 2;
#else
    constexpr uint32_t kVersion = 3;
#endif
#ifdef FAKE_NO_NAME
    constexpr const char* kName = nullptr;
#else
    constexpr const char* kName = "Fake Extractor";
#endif
#ifdef FAKE_NO_SNIFF
    constexpr SnifferFunc kSniff = nullptr;
#else
    constexpr SnifferFunc kSniff = sniff;
#endif
    return {kVersion,
            {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 255}},
            7,
            kName,
            {.v3 = {kSniff, extensions}}};
}
#endif
