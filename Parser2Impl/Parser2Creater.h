#pragma once

#include <media/MediaExtractorPluginApi.h>

// The library's one entry point: the plug-in's identity, its sniff function and the file extensions
// that the property "mm.enable.orvel_parser" enables. The list of extensions is static and rebuilt
// by every call. The framework may call from any thread, one call after the other; a list of an
// earlier call must not be in use any more.
extern "C" __attribute__((visibility("default"))) android::ExtractorDef GETEXTRACTORDEF();

namespace orvel {

// Whether the plug-in takes the source, and how sure it is. Called on a framework thread; may block
// for as long as the source's I/O takes. Nothing survives the call but what it returns.
//
// Returns the create function, or null when the plug-in declines: then *meta is untouched, and so
// is *confidence when it declines for the process's name. On success *meta is an AMessage with the
// pointer "ff-format" and the int32 "localMode", made without any reference: the strong one that
// CreateExtractor takes is its first, and the message goes with the extractor. *freeMeta is never
// written, so that nobody can free the message under the extractor; a message whose CreateExtractor
// call never comes is not freed.
android::CreatorFunc Sniff(android::CDataSource* source, float* confidence, void** meta,
                           android::FreeMetaFunc* freeMeta);

// The extractor of a source that Sniff took, as the framework's table; meta is Sniff's message,
// which the extractor takes over. A file that cannot be opened (again) gives an extractor without
// tracks. Called on a framework thread; blocks while it opens the file.
android::CMediaExtractor* CreateExtractor(android::CDataSource* source, void* meta);

}  // namespace orvel
