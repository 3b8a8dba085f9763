// The page that --html writes: what all files contribute, with style and script, in one file that
// opens from disk and reaches for nothing else.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "html_section.h"

namespace orvel::probe {

class HtmlPage {
  public:
    // `path`: where it is to stand; `inputs`: the files that are read meanwhile. Nothing is written
    // yet, but a path that could not be written to is refused at once: throws std::runtime_error
    // with a sentence.
    HtmlPage(const std::string& path, const std::vector<std::string>& inputs);

    // In the order of the page.
    void add(const std::string& file, const HtmlSection& section);
    // Something that kept files from being found; untrusted text.
    void addError(const std::string& text);

    // Puts the page in place as a whole: an older one stands until then, and stays if writing
    // fails. Throws std::runtime_error with a sentence.
    void save() const;

  private:
    std::string head() const;

    std::string mPath;
    const size_t mFiles;
    std::string mErrors, mRows, mSections;  // HTML
    std::array<size_t, kResultCount> mCounts{};
    std::string mTitle;  // untrusted text
    size_t mAdded = 0;
};

}  // namespace orvel::probe
