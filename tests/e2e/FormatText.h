#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "framework/Format.h"

namespace orvel::test {

/** Entries of a format as "key=value". L marks 64-bit numbers; buffers are in hexadecimal, or go by
 * a name. */
using Entries = std::set<std::string>;
using NamedBytes = std::vector<std::pair<std::string, std::vector<uint8_t>>>;
Entries entriesOf(const host::FormatView& format, const NamedBytes& named = {});
/** Those of a text, with blanks between them. */
Entries entriesOf(const std::string& text);

/** libavformat's name for the container that a file of media.txt has by its extension. */
std::string demuxerOf(const std::string& file);

}  // namespace orvel::test
