// What the FILE arguments mean.
#pragma once

#include <string>
#include <vector>

namespace orvel::probe {

struct FileList {
    std::vector<std::string> files;
    std::vector<std::string> errors;  // folders that cannot be read, folders without a file
};

// Files stay as they are given, in that order, also if they do not exist. A folder becomes every
// regular file below it, sorted by path, links to files included, linked folders not entered.
FileList expandFiles(const std::vector<std::string>& arguments);

}  // namespace orvel::probe
