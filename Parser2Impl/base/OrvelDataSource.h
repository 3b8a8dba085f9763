#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <media/MediaExtractorPluginApi.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace orvel {

// The reference-counted view of the framework's data source through which all of the plug-in reads
// a file. The CDataSource is not owned: the framework keeps it alive for as long as the plug-in may
// use it. There is no state besides the pointer, so any thread may call any operation; whether
// calls may overlap is up to the framework's source. Every call may block for as long as the
// source's I/O takes.
class OrvelDataSource : public android::RefBase {
  public:
    explicit OrvelDataSource(android::CDataSource* source);

    // Reads up to size bytes at the byte position offset into data. Returns the bytes read, which
    // may be fewer, 0 or ERROR_END_OF_STREAM at the end, or another negative status.
    virtual ssize_t readAt(off64_t offset, void* data, size_t size);

    // Sets *size to the source's length in bytes. A source of unknown length answers a status
    // other than OK, leaves *size alone or makes it negative, as the framework's source does.
    virtual android::status_t getSize(off64_t* size);

    // The framework's data-source flag bits.
    virtual uint32_t flags();

    // Writes the source's URI, ended by a zero, into the size bytes at uri. False without one.
    virtual bool getUri(char* uri, size_t size);

  protected:
    // Another view of the same source.
    OrvelDataSource(const OrvelDataSource& other) : RefBase(), mSource(other.mSource) {}
    ~OrvelDataSource() override;

  private:
    OrvelDataSource& operator=(const OrvelDataSource&) = delete;

    android::CDataSource* const mSource;  // the framework's
};

}  // namespace orvel
