// What one file contributes to the page.
#pragma once

#include <cstddef>
#include <string>

#include "report.h"
#include "result.h"

namespace orvel::probe {

struct HtmlSection {
    Result result = Result::Failed;
    std::string remark;  // why it was declined, what went wrong; untrusted text, printable
    std::string cells;   // HTML: the file's cells in the list of files, behind name and result
    std::string body;    // HTML: everything else

    // On its way from a child to its parent.
    std::string toText() const;
    static HtmlSection fromText(const std::string& text);
};

// `files`: so many share the page, and what it may weigh.
HtmlSection makeHtmlSection(const Report& report, size_t files);

}  // namespace orvel::probe
