#include "framework/Format.h"

#include <standin/FormatEntries.h>

#include <stdexcept>
#include <type_traits>
#include <utility>

namespace orvel::host {
namespace {

using standin::FormatType;

// FormatValue's alternatives stand in the order of FormatType.
template <FormatType type, typename T>
constexpr bool kStandsAt =
        std::is_same_v<std::variant_alternative_t<static_cast<size_t>(type), FormatValue>, T>;
static_assert(kStandsAt<FormatType::Int32, int32_t> && kStandsAt<FormatType::Int64, int64_t> &&
              kStandsAt<FormatType::Float, float> && kStandsAt<FormatType::String, std::string> &&
              kStandsAt<FormatType::Buffer, FormatBytes> &&
              kStandsAt<FormatType::Rect, FormatRect>);

FormatValue copyOf(const standin::FormatValue& value) {
    switch (value.type) {
        case FormatType::Int32:
            return value.int32;
        case FormatType::Int64:
            return value.int64;
        case FormatType::Float:
            return value.floatValue;
        case FormatType::String:
            return std::string(value.string);
        case FormatType::Buffer: {
            const auto* bytes = static_cast<const uint8_t*>(value.data);
            return FormatBytes(bytes, bytes + value.dataSize);
        }
        case FormatType::Rect:
            return FormatRect{value.rect[0], value.rect[1], value.rect[2], value.rect[3]};
    }
    throw std::logic_error("a format entry of an unknown type");
}

template <typename T>
std::optional<T> fetch(AMediaFormat* format, const char* key,
                       bool (*getter)(AMediaFormat*, const char*, T*)) {
    T value{};
    if (!getter(format, key, &value)) return std::nullopt;
    return value;
}

}  // namespace

std::optional<int32_t> FormatView::int32(const char* key) const {
    return fetch<int32_t>(mFormat, key, AMediaFormat_getInt32);
}

std::optional<int64_t> FormatView::int64(const char* key) const {
    return fetch<int64_t>(mFormat, key, AMediaFormat_getInt64);
}

std::optional<std::string> FormatView::string(const char* key) const {
    const char* text = nullptr;
    if (!AMediaFormat_getString(mFormat, key, &text)) return std::nullopt;
    return text;
}

std::optional<FormatBytes> FormatView::buffer(const char* key) const {
    void* data = nullptr;
    size_t size = 0;
    if (!AMediaFormat_getBuffer(mFormat, key, &data, &size)) return std::nullopt;
    const auto* bytes = static_cast<const uint8_t*>(data);
    return FormatBytes(bytes, bytes + size);
}

std::vector<FormatEntry> FormatView::entries() const {
    struct Result {
        std::vector<FormatEntry> entries;
        std::exception_ptr failure;  // the visit passes through code without exceptions
    } result;
    standin::forEachEntry(
            mFormat,
            [](void* cookie, const char* key, const standin::FormatValue& value) {
                auto& out = *static_cast<Result*>(cookie);
                try {
                    out.entries.push_back({key, copyOf(value)});
                } catch (...) {
                    out.failure = std::current_exception();
                }
            },
            &result);
    if (result.failure) std::rethrow_exception(result.failure);
    return std::move(result.entries);
}

std::string FormatView::toString() const {
    return AMediaFormat_toString(mFormat);
}

Format::Format() : FormatView(AMediaFormat_new()) {}

Format::~Format() {
    if (mFormat != nullptr) AMediaFormat_delete(mFormat);
}

Format::Format(Format&& other) noexcept : FormatView(std::exchange(other.mFormat, nullptr)) {}

Format& Format::operator=(Format&& other) noexcept {
    std::swap(mFormat, other.mFormat);
    return *this;
}

}  // namespace orvel::host
