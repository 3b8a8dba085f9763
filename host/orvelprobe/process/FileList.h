// What the FILE arguments mean.
#pragma once

#include <string>
#include <vector>

namespace orvel::probe {

struct FileList {
    std::vector<std::string> files;
    bool hasFolder = false;
    std::vector<std::string> errors;  // folders that cannot be read, folders without a file
};

// Files stay as they are given, in that order, also if they do not exist. A folder becomes every
// regular file below it, sorted by path, links to files included; linked folders are not entered,
// and what is hidden (a name with a dot in front) is left out.
FileList expandFiles(const std::vector<std::string>& arguments);

}  // namespace orvel::probe
