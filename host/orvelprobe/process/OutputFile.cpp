#include "process/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "Words.h"

namespace orvel::probe {

namespace fs = std::filesystem;

void writeAll(int fd, const std::string& bytes) {
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t written = write(fd, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "cannot be written");
        }
        if (written > 0) done += static_cast<size_t>(written);
    }
}

bool isSameFile(const std::string& one, const std::string& other) {
    std::error_code ignored;
    return fs::equivalent(one, other, ignored);
}

bool isOwnPage(const std::string& path) {
    char head[512] = {};
    std::ifstream(path, std::ios::binary).read(head, sizeof(head) - 1);
    return strstr(head, kPageMark) != nullptr;
}

OutputFile::OutputFile(const std::string& option, const std::string& path, bool force,
                       bool mayReplacePage, const std::vector<std::string>& inputs)
    : mOption(option), mPath(path) {
    if (path == "-") {
        mFd = dup(STDOUT_FILENO);
        if (mFd < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) refuse(strerror(errno));
        return;
    }
    std::error_code ignored;
    if (fs::is_symlink(path, ignored)) mPath = fs::weakly_canonical(path, ignored).string();
    const fs::file_status status = fs::status(mPath, ignored);
    if (fs::is_directory(status)) refuse("is a folder");
    for (const std::string& input : inputs)
        if (isSameFile(mPath, input)) refuse("is a file to be read");
    if (fs::is_fifo(status) || fs::is_character_file(status)) {
        mFd = open(mPath.c_str(), O_WRONLY | O_CLOEXEC);
        if (mFd < 0) refuse(strerror(errno));
        return;
    }
    if (fs::exists(status)) {
        if (!fs::is_regular_file(status)) refuse("is not a regular file");
        if (!force && !(mayReplacePage && isOwnPage(mPath))) {
            refuse("exists; --force replaces it");
        }
        if (access(mPath.c_str(), W_OK) != 0) refuse(strerror(errno));
    }
    mPart = mPath + ".XXXXXX.part";
    mFd = mkostemps(mPart.data(), 5, O_CLOEXEC);
    const int error = errno;
    if (mFd < 0) {
        mPart.clear();
        refuse(error == ENOENT || error == ENOTDIR ? "there is no such folder" : strerror(error));
    }
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(mFd, 0666 & ~mask);
}

OutputFile::~OutputFile() {
    if (mFd >= 0) close(mFd);
    if (!mPart.empty()) unlink(mPart.c_str());
}

void OutputFile::commit() {
    const int closed = close(std::exchange(mFd, -1));
    if (closed != 0 || (!mPart.empty() && rename(mPart.c_str(), mPath.c_str()) != 0)) {
        refuse(std::string("cannot be written: ") + strerror(errno));
    }
    mPart.clear();
}

void OutputFile::refuse(const std::string& why) const {
    throw std::runtime_error(mOption + " " + printable(mPath) + ": " + why);
}

}  // namespace orvel::probe
