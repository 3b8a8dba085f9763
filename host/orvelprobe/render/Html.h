#pragma once

#include "Options.h"
#include "Report.h"

namespace orvel::probe {

/**
 * The page that --html writes: what all files contribute, with style and script, in one file that
 * opens from disk and reaches for nothing else. The files that failed come first. All text of
 * files, names and plug-in is escaped; the content policy lets this page's own script run and no
 * other.
 */
class HtmlPage {
  public:
    /** `files`: so many share the page, and what it may weigh. */
    HtmlPage(const Options& options, size_t files) : mOptions(options), mFiles(files) {}

    void add(const Report& report);
    /** Something that kept files from being found; untrusted text. */
    void addError(const std::string& text);
    /** Throws std::runtime_error with the system's reason. */
    void write(int fd) const;

  private:
    struct Section {
        std::string row;  // of the list of files
        std::string body;
    };
    std::string headRows() const;

    const Options& mOptions;
    const size_t mFiles;
    size_t mAdded = 0;
    std::string mTitle, mErrors, mPlugin;
    std::array<std::vector<Section>, kResultCount> mSections;
};

}  // namespace orvel::probe
