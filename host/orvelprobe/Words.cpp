#include "Words.h"

#include <media/stagefright/MediaErrors.h>
#include <utils/Errors.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <utility>

extern "C" {
#include <libavutil/avstring.h>
}

namespace orvel::probe {
namespace {

using namespace android;

// clang-format off
constexpr std::pair<int32_t, const char*> kStatusNames[] = {
        {OK, "OK"}, {UNKNOWN_ERROR, "UNKNOWN_ERROR"},
        {NO_MEMORY, "NO_MEMORY"}, {INVALID_OPERATION, "INVALID_OPERATION"},
        {BAD_VALUE, "BAD_VALUE"}, {NO_INIT, "NO_INIT"},
        {ERROR_IO, "ERROR_IO"}, {ERROR_MALFORMED, "ERROR_MALFORMED"},
        {ERROR_UNSUPPORTED, "ERROR_UNSUPPORTED"}, {ERROR_END_OF_STREAM, "ERROR_END_OF_STREAM"},
        {WOULD_BLOCK, "WOULD_BLOCK"}};
// clang-format on

// Without overflow, also for the smallest value.
uint64_t magnitude(int64_t value) {
    return value < 0 ? static_cast<uint64_t>(-(value + 1)) + 1 : static_cast<uint64_t>(value);
}

// What a terminal may act on: C0 and C1 controls, DEL, and the marks of bidirectional text.
bool isControl(int32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x200E || code == 0x200F ||
           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

}  // namespace

std::string formatted(const char* format, ...) {
    char text[128];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return text;
}

std::string countText(int64_t count) {
    std::string text = std::to_string(count);
    for (size_t i = text.size(); i > 3; i -= 3)
        text.insert(i - 3, ",");
    return text;
}

std::string countText(int64_t count, const char* noun) {
    return countText(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string sizeText(int64_t bytes) {
    if (bytes < 1000) return std::to_string(bytes) + " B";
    static constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes) / 1000;
    size_t unit = 0;
    for (; value >= 999.95 && unit + 1 < std::size(kUnits); unit++)
        value /= 1000;
    return formatted(value < 10 ? "%.2f %s" : "%.1f %s", value, kUnits[unit]);
}

std::string secondsText(int64_t us) {
    const uint64_t value = magnitude(us);
    std::string text =
            formatted("%s%lu.%06lu", us < 0 ? "-" : "", value / 1000000, value % 1000000);
    if (value % 1000 == 0) text.resize(text.size() - 3);
    return text + " s";
}

std::string offsetText(int64_t us, int64_t fromUs) {
    int64_t offset = 0;
    if (__builtin_sub_overflow(us, fromUs, &offset)) offset = us < fromUs ? INT64_MIN : INT64_MAX;
    return (offset < 0 ? "" : "+") + secondsText(offset);
}

std::string durationText(int64_t us) {
    const char* const sign = us < 0 ? "-" : "";
    const uint64_t ms = magnitude(us) / 1000, minutes = ms / 60000;
    const double seconds = ms % 60000 / 1000.0;
    if (minutes < 60) return formatted("%s%lu:%06.3f", sign, minutes, seconds);
    return formatted("%s%lu:%02lu:%06.3f", sign, minutes / 60, minutes % 60, seconds);
}

std::string bitrateText(int64_t bitsPerSecond) {
    if (bitsPerSecond < 10000) return std::to_string(bitsPerSecond) + " b/s";
    return countText((bitsPerSecond + 500) / 1000) + " kb/s";
}

std::string hexText(const void* data, size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const auto* byte = static_cast<const uint8_t*>(data); size > 0; ++byte, --size)
        text += {kDigits[*byte >> 4], kDigits[*byte & 15]};
    return text;
}

std::string statusText(int32_t status) {
    for (const auto& [known, name] : kStatusNames)
        if (known == status) return formatted("%s (%d)", name, status);
    return "status " + std::to_string(status);
}

std::string printable(std::string_view text, size_t maxCharacters) {
    std::string out;
    const auto* at = reinterpret_cast<const uint8_t*>(text.data());
    const uint8_t* const end = at + text.size();
    for (size_t characters = 0; at < end; characters++) {
        if (maxCharacters != 0 && characters >= maxCharacters) return out + "...";
        const uint8_t* const begin = at;
        int32_t code = 0;
        const bool good = av_utf8_decode(&code, &at, end, AV_UTF8_FLAG_ACCEPT_NON_CHARACTERS) >= 0;
        if (!good) at = begin + 1;
        if (good && !isControl(code)) {
            out.append(begin, at);
            continue;
        }
        for (const uint8_t* byte = begin; byte < at; byte++)
            out += "\\x" + hexText(byte, 1);
    }
    return out;
}

size_t widthOf(std::string_view text) {
    return static_cast<size_t>(std::count_if(text.begin(), text.end(),
                                             [](char byte) { return (byte & 0xC0) != 0x80; }));
}

std::string padded(const std::string& text, size_t columns) {
    const bool fits = widthOf(text) < columns;
    const std::string out = fits ? text : printable(text, columns - 4);
    return out + std::string(columns - widthOf(out), ' ');
}

}  // namespace orvel::probe
