#pragma once

#include <media/NdkMediaFormat.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvel::host {

/** Framework key names that the host itself reads. */
inline constexpr const char* kKeyMime = "mime";
inline constexpr const char* kKeyDurationUs = "durationUs";
inline constexpr const char* kKeyTimeUs = "timeUs";
inline constexpr const char* kKeyIsSyncFrame = "is-sync-frame";
inline constexpr const char* kKeyTargetTime = "target-time";

/** left, top, right, bottom. */
using FormatRect = std::array<int32_t, 4>;
using FormatBytes = std::vector<uint8_t>;

/** One value; the alternatives stand in the order of standin::FormatType. */
using FormatValue = std::variant<int32_t, int64_t, float, std::string, FormatBytes, FormatRect>;

struct FormatEntry {
    std::string key;
    FormatValue value;
};

/**
 * Typed look at an AMediaFormat that someone else owns and keeps alive. Getters answer only when
 * the key is there with just that type, as the NDK's do. Not thread-safe, as the NDK's format is
 * not.
 */
class FormatView {
  public:
    /** Borrows `format`, which may not be null. */
    explicit FormatView(AMediaFormat* format) : mFormat(format) {}

    std::optional<int32_t> int32(const char* key) const;
    std::optional<int64_t> int64(const char* key) const;
    std::optional<std::string> string(const char* key) const;
    std::optional<FormatBytes> buffer(const char* key) const;

    /** Every entry, copied, ordered by key name. */
    std::vector<FormatEntry> entries() const;
    /** The platform's own text form. */
    std::string toString() const;

    AMediaFormat* get() const { return mFormat; }

  protected:
    AMediaFormat* mFormat;
};

/** An AMediaFormat of its own. Move-only; a moved-from object may only be destroyed or assigned. */
class Format : public FormatView {
  public:
    /** An empty format. */
    Format();
    ~Format();
    Format(Format&& other) noexcept;
    Format& operator=(Format&& other) noexcept;
};

}  // namespace orvel::host
