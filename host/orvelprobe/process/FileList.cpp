#include "process/FileList.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace orvel::probe {
namespace {

namespace fs = std::filesystem;

// An own walk, because the library's recursive one ends at the first folder that it cannot read.
void walk(const fs::path& folder, FileList* list) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename().string().front() == '.') continue;
        std::error_code ignored;
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
            walk(entry->path(), list);
        } else if (entry->is_regular_file(ignored)) {
            list->files.push_back(entry->path().string());
        }
    }
    if (error) list->errors.push_back(folder.string() + ": " + error.message());
}

}  // namespace

FileList expandFiles(const std::vector<std::string>& arguments) {
    FileList list;
    for (const std::string& argument : arguments) {
        std::error_code error;
        if (!fs::is_directory(argument, error)) {
            list.files.push_back(argument);
            continue;
        }
        list.hasFolder = true;
        const size_t before = list.files.size(), errorsBefore = list.errors.size();
        walk(argument, &list);
        std::sort(list.files.begin() + static_cast<ptrdiff_t>(before), list.files.end());
        if (list.files.size() > before || list.errors.size() > errorsBefore) continue;
        list.errors.push_back(argument + ": no file below this folder");
    }
    return list;
}

}  // namespace orvel::probe
