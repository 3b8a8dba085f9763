#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/** Numbers, times and untrusted text as people read them. */
namespace orvel::probe {

// As printf does, up to 127 characters.
std::string formatted(const char* format, ...) __attribute__((format(printf, 1, 2)));
// "1,204".
std::string countText(int64_t count);
// "1 sample", "1,204 samples".
std::string countText(int64_t count, const char* noun);
// Decimal units: "812 B", "61.7 kB", "1.20 GB".
std::string sizeText(int64_t bytes);
// "12.066667 s", with as many decimals as microseconds need: three at least.
std::string secondsText(int64_t us);
// How far `us` lies behind `fromUs`, with a sign always: "+0.488 s", "-1.000 s".
std::string offsetText(int64_t us, int64_t fromUs);
// "0:12.345", "1:02:03.004".
std::string durationText(int64_t us);
// "950 kb/s".
std::string bitrateText(int64_t bitsPerSecond);
std::string hexText(const void* data, size_t size);
// ERROR_END_OF_STREAM (-1011): the platform's name of a status and its number.
std::string statusText(int32_t status);
// For a terminal and a page: control characters, marks that turn the direction of the text and
// malformed UTF-8 become \xNN; longer than `maxCharacters`: cut, ending in "...". 0: not cut.
std::string printable(std::string_view text, size_t maxCharacters = 0);
// Of printable text, in characters.
size_t widthOf(std::string_view text);
// Filled up with blanks to so many characters, or cut to leave one.
std::string padded(const std::string& text, size_t columns);

}  // namespace orvel::probe
