#include "text.h"

#include <media/stagefright/MediaErrors.h>
#include <utils/Errors.h>

#include <cinttypes>
#include <cstdio>
#include <iterator>

namespace orvel::probe {
namespace {

struct StatusName {
    int32_t status;
    const char* name;
};
#define STATUS(name) \
    { android::name, #name }
constexpr StatusName kStatusNames[] = {
        STATUS(OK),
        STATUS(UNKNOWN_ERROR),
        STATUS(NO_MEMORY),
        STATUS(INVALID_OPERATION),
        STATUS(BAD_VALUE),
        STATUS(NO_INIT),
        STATUS(ERROR_IO),
        STATUS(ERROR_MALFORMED),
        STATUS(ERROR_UNSUPPORTED),
        STATUS(ERROR_END_OF_STREAM),
        STATUS(WOULD_BLOCK),
};
#undef STATUS

template <typename... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
    char text[64];
    const int length = snprintf(text, sizeof(text), format, arguments...);
    return std::string(text, static_cast<size_t>(length));
}

// Without overflow, also for the smallest value.
uint64_t magnitude(int64_t value) {
    return value < 0 ? static_cast<uint64_t>(-(value + 1)) + 1 : static_cast<uint64_t>(value);
}

// Length of the well-formed UTF-8 sequence at `text` (RFC 3629, section 4), 0 when there is none.
size_t sequenceLength(std::string_view text) {
    const auto byte = [text](size_t i) {
        return i < text.size() ? static_cast<uint8_t>(text[i]) : uint8_t{0};
    };
    const auto continues = [&byte](size_t i) { return (byte(i) & 0xC0) == 0x80; };
    const uint8_t lead = byte(0);
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return continues(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = lead == 0xED && byte(1) > 0x9F;
        return !overlong && !surrogate && continues(1) && continues(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool overlong = lead == 0xF0 && byte(1) < 0x90;
        const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
        return !overlong && !beyond && continues(1) && continues(2) && continues(3) ? 4 : 0;
    }
    return 0;
}

// C0 and C1 controls and DEL: what a terminal may act on.
bool isControl(std::string_view sequence) {
    const auto lead = static_cast<uint8_t>(sequence[0]);
    if (sequence.size() == 1) return lead < 0x20 || lead == 0x7F;
    return sequence.size() == 2 && lead == 0xC2 && static_cast<uint8_t>(sequence[1]) < 0xA0;
}

}  // namespace

std::string countText(uint64_t count) {
    std::string text = std::to_string(count);
    for (size_t i = text.size(); i > 3; i -= 3)
        text.insert(i - 3, ",");
    return text;
}

std::string countText(uint64_t count, const char* noun) {
    return countText(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string sizeText(uint64_t bytes) {
    if (bytes < 1000) return std::to_string(bytes) + " B";
    static constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes) / 1000;
    size_t unit = 0;
    for (; value >= 999.95 && unit + 1 < std::size(kUnits); unit++)
        value /= 1000;
    return formatted(value < 10 ? "%.2f %s" : "%.1f %s", value, kUnits[unit]);
}

std::string secondsText(int64_t us) {
    const bool negative = us < 0;
    const uint64_t value = magnitude(us);
    const bool fine = value % 1000 != 0;
    const uint64_t fraction = fine ? value % 1000000 : value % 1000000 / 1000;
    return formatted(fine ? "%s%" PRIu64 ".%06" PRIu64 " s" : "%s%" PRIu64 ".%03" PRIu64 " s",
                     negative ? "-" : "", value / 1000000, fraction);
}

std::string offsetText(int64_t us, int64_t fromUs) {
    int64_t offset = 0;
    if (__builtin_sub_overflow(us, fromUs, &offset)) offset = us < fromUs ? INT64_MIN : INT64_MAX;
    return (offset < 0 ? "" : "+") + secondsText(offset);
}

std::string durationText(int64_t us) {
    const std::string sign = us < 0 ? "-" : "";
    const uint64_t ms = magnitude(us) / 1000;
    const uint64_t minutes = ms / 60000, hours = minutes / 60;
    if (hours == 0) return sign + formatted("%" PRIu64 ":%06.3f", minutes, ms % 60000 / 1000.0);
    return sign +
           formatted("%" PRIu64 ":%02" PRIu64 ":%06.3f", hours, minutes % 60, ms % 60000 / 1000.0);
}

std::string hexText(const void* data, size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text(size * 2, '\0');
    for (size_t i = 0; i < size; i++) {
        const uint8_t byte = static_cast<const uint8_t*>(data)[i];
        text[2 * i] = kDigits[byte >> 4];
        text[2 * i + 1] = kDigits[byte & 15];
    }
    return text;
}

std::string statusText(int32_t status) {
    for (const StatusName& row : kStatusNames) {
        if (row.status == status) return row.name + (" (" + std::to_string(status)) + ")";
    }
    return "status " + std::to_string(status);
}

std::string printable(std::string_view text, size_t maxCharacters) {
    std::string out;
    size_t characters = 0;
    while (!text.empty()) {
        if (maxCharacters != 0 && characters >= maxCharacters) return out + "...";
        const size_t length = sequenceLength(text);
        const std::string_view sequence = text.substr(0, length ? length : 1);
        if (length == 0 || isControl(sequence)) {
            for (const char byte : sequence)
                out += "\\x" + hexText(&byte, 1);
        } else {
            out += sequence;
        }
        characters++;
        text.remove_prefix(sequence.size());
    }
    return out;
}

}  // namespace orvel::probe
