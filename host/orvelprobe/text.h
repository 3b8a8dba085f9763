// Numbers, times and untrusted text as people read them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvel::probe {

// "1,204".
std::string countText(uint64_t count);
// "1 sample", "1,204 samples".
std::string countText(uint64_t count, const char* noun);
// Decimal units: "812 B", "61.7 kB", "1.20 GB".
std::string sizeText(uint64_t bytes);
// "12.066667 s", with as many decimals as microseconds need: three at least.
std::string secondsText(int64_t us);
// How far `us` lies behind `fromUs`, with a sign always: "+0.488 s", "-1.000 s".
std::string offsetText(int64_t us, int64_t fromUs);
// "0:12.345", "1:02:03.004".
std::string durationText(int64_t us);
std::string hexText(const void* data, size_t size);
// ERROR_END_OF_STREAM (-1011): the platform's name of a status and its number.
std::string statusText(int32_t status);
// For a terminal: control characters and malformed UTF-8 become \xNN, so that a tag can neither
// move the cursor nor break the page; longer than `maxCharacters`: cut, ending in "...". 0: not
// cut.
std::string printable(std::string_view text, size_t maxCharacters = 0);

}  // namespace orvel::probe
