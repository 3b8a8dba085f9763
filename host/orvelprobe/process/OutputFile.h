#pragma once

#include <string>
#include <vector>

namespace orvel::probe {

/**
 * A file that the command writes. It lands on its name whole or not at all, and never on a file
 * that is read: written beside under another name, and renamed by commit(). "-" is standard output;
 * what else would go there goes to standard error from then on. Pipes and character devices are
 * written as they are.
 */
class OutputFile {
  public:
    /**
     * Checks the path and makes the file beside it. `option` is for messages. An existing file is
     * refused unless `force`, or `mayReplacePage` and it is a page that an earlier run wrote; one
     * that is among `inputs`, by whatever name or link, always. Throws std::runtime_error.
     */
    OutputFile(const std::string& option, const std::string& path, bool force, bool mayReplacePage,
               const std::vector<std::string>& inputs);
    /** Without commit(): nothing remains. */
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& path() const { return mPath; }
    /** To be written to; children inherit it. */
    int fd() const { return mFd; }
    /** Throws std::runtime_error; then the old file is as it was. */
    void commit();

  private:
    [[noreturn]] void refuse(const std::string& why) const;

    std::string mOption;
    std::string mPath;  // as given, or where a link leads to
    std::string mPart;  // the file beside it; empty: written in place
    int mFd = -1;
};

/** Throws std::system_error. */
void writeAll(int fd, const std::string& bytes);
/** Whether both names lead to one file. */
bool isSameFile(const std::string& one, const std::string& other);
/** Whether the file is a page that this command wrote. */
bool isOwnPage(const std::string& path);

/** In the head of each page. */
constexpr char kPageMark[] = "<meta name=\"generator\" content=\"orvelprobe\">";

}  // namespace orvel::probe
