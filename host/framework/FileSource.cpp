#include "framework/FileSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace orvel::host {
namespace {

std::string reason(int error) {
    return std::generic_category().message(error);
}

}  // namespace

FileSource::FileSource(const std::string& path) : mPath(path) {
    // Looked at before it is opened: opening a pipe would wait for its other end.
    struct stat64 info;
    if (stat64(path.c_str(), &info) != 0) {
        throw SourceError(path + ": cannot be found: " + reason(errno));
    }
    if (S_ISDIR(info.st_mode)) throw SourceError(path + ": is a folder, not a file");
    if (!S_ISREG(info.st_mode)) throw SourceError(path + ": is not a regular file");
    mFd = open64(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (mFd < 0) throw SourceError(path + ": cannot be opened for reading: " + reason(errno));
    // Asked again of what was really opened; the name may have changed hands in between.
    if (fstat64(mFd, &info) != 0 || !S_ISREG(info.st_mode)) {
        close(mFd);
        throw SourceError(path + ": cannot be examined, or is no longer a regular file");
    }
    mSize = info.st_size;
    std::error_code error;
    const auto absolute = std::filesystem::absolute(path, error);
    mUri = "file://" + (error ? path : absolute.string());
}

FileSource::~FileSource() {
    close(mFd);
}

ssize_t FileSource::readAt(off64_t offset, void* data, size_t size) {
    if (offset < 0) return android::BAD_VALUE;
    if (offset >= mSize) return 0;
    size = static_cast<size_t>(std::min<uint64_t>(size, static_cast<uint64_t>(mSize - offset)));
    size_t done = 0;
    while (done < size) {
        ssize_t count = pread64(mFd, static_cast<char*>(data) + done, size - done,
                                offset + static_cast<off64_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && done == 0) return -errno;
        if (count <= 0) break;
        done += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

android::status_t FileSource::getSize(off64_t* size) {
    *size = mSize;
    return android::OK;
}

uint32_t FileSource::flags() {
    return kSourceIsLocalFile;
}

bool FileSource::getUri(char* uri, size_t size) {
    if (mUri.size() >= size) return false;
    memcpy(uri, mUri.c_str(), mUri.size() + 1);
    return true;
}

}  // namespace orvel::host
