#pragma once

#include <stdexcept>
#include <string>

#include "framework/DataSource.h"

namespace orvel::host {

/** A source that cannot be opened. what() names the file, the step and the system's reason. */
class SourceError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/**
 * A regular file, read at positions (pread), so that threads do not disturb one another. Files over
 * 4 GiB are fine. The size is the one at opening.
 */
class FileSource final : public DataSource {
  public:
    /** Throws SourceError: no such file, no permission, a directory, not a regular file. */
    explicit FileSource(const std::string& path);
    ~FileSource() override;

    /**
     * Fills `size` bytes unless the file ends. A negative offset: BAD_VALUE. A failing read: the
     * negated errno, or the bytes read before it.
     */
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;
    /** kSourceIsLocalFile. */
    uint32_t flags() override;
    /** "file://" and the absolute path as it is (not percent-encoded). */
    bool getUri(char* uri, size_t size) override;

    const std::string& path() const { return mPath; }

  private:
    // Set once in the constructor.
    std::string mPath;
    std::string mUri;
    int mFd = -1;
    off64_t mSize = 0;
};

}  // namespace orvel::host
