#include "e2e/FormatText.h"

#include <algorithm>
#include <iomanip>
#include <iterator>
#include <sstream>

namespace orvel::test {

Entries entriesOf(const host::FormatView& format, const NamedBytes& named) {
    Entries entries;
    for (const auto& [key, value] : format.entries()) {
        std::ostringstream text;
        text << key << '=';
        if (const auto* int32 = std::get_if<int32_t>(&value)) text << *int32;
        if (const auto* int64 = std::get_if<int64_t>(&value)) text << *int64 << 'L';
        if (const auto* number = std::get_if<float>(&value)) text << *number << 'f';
        if (const auto* string = std::get_if<std::string>(&value)) text << *string;
        if (const auto* bytes = std::get_if<host::FormatBytes>(&value)) {
            const auto it = std::find_if(named.begin(), named.end(),
                                         [&](const auto& name) { return name.second == *bytes; });
            if (it != named.end()) text << it->first;
            for (size_t i = 0; it == named.end() && i < bytes->size(); ++i)
                text << std::hex << std::setw(2) << std::setfill('0') << int{(*bytes)[i]};
        }
        entries.insert(text.str());
    }
    return entries;
}

Entries entriesOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string demuxerOf(const std::string& file) {
    const std::string extension = file.substr(file.rfind('.') + 1);
    return extension == "mp4"   ? "mov"
           : extension == "mkv" ? "matroska"
           : extension == "wma" ? "asf"
                                : extension;
}

}  // namespace orvel::test
