// Text and numbers as they may stand in an HTML page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvel::probe {

// For text of our own and attribute values: & < > " ' become character references.
std::string escaped(std::string_view text);

// For text that comes from a file, a file's name or the plug-in: made printable as on a terminal,
// cut after `maxCharacters` (0: never), escaped, and kept from turning the direction of the text
// around it.
std::string foreignText(std::string_view text, size_t maxCharacters = 0);

std::string base64(const void* data, size_t size);

// Numbers, packed: base64 over variable-length integers, seven bits a byte, the lowest first, the
// sign in the lowest bit. The page's script has the counterpart, column().
std::string column(const std::vector<int64_t>& values);

}  // namespace orvel::probe
