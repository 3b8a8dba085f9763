#pragma once

#include <media/MediaExtractorPluginApi.h>
#include <sys/types.h>
#include <utils/Errors.h>

#include <cstddef>
#include <cstdint>

namespace orvel::host {

/**
 * What a source says of itself in flags(); the platform's numbers. A plug-in takes a source with
 * neither kSourceWantsPrefetching nor kSourceIsCaching set for a local one.
 */
enum SourceFlags : uint32_t {
    kSourceWantsPrefetching = 1,
    kSourceStreamedFromLocalHost = 2,
    kSourceIsCaching = 4,
    kSourceIsHttp = 8,
    kSourceIsLocalFile = 16,
};

/**
 * The bytes that a plug-in reads, as the framework lends them: a C table over a C++ object.
 *
 * Threads: a plug-in reads from its own threads as well as from the caller's, so every operation of
 * every class derived from this one may be called from several threads at once, unless the class
 * says otherwise.
 *
 * Lifetime: the object must outlive every extractor and track made over it; it is neither copied
 * nor moved, because the table points into it.
 */
class DataSource {
  public:
    DataSource();
    virtual ~DataSource() = default;
    DataSource(const DataSource&) = delete;
    DataSource& operator=(const DataSource&) = delete;

    /**
     * Reads up to `size` bytes at byte `offset` into `data`. Returns the bytes read (fewer than
     * asked are allowed anywhere, as from a network), 0 at or past the end, or a negative
     * android::status_t. May block.
     */
    virtual ssize_t readAt(off64_t offset, void* data, size_t size) = 0;

    /**
     * Stores the size in bytes and returns android::OK; or stores a negative number and returns a
     * negative status where the size is not known.
     */
    virtual android::status_t getSize(off64_t* size) = 0;

    /** SourceFlags, combined. Default: 0. */
    virtual uint32_t flags();

    /**
     * Writes the source's URI, null-terminated, and returns true; false, with nothing written, when
     * it has none (the default) or when it does not fit into `size` bytes.
     */
    virtual bool getUri(char* uri, size_t size);

    /**
     * The C view of this object; it lives as long as the object. No exception leaves its entries:
     * one that an overridden operation throws becomes ERROR_IO (readAt), UNKNOWN_ERROR with size -1
     * (getSize), 0 (flags) or false (getUri).
     */
    android::CDataSource* table() { return &mTable; }

  private:
    android::CDataSource mTable;
};

}  // namespace orvel::host
