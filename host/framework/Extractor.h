#pragma once

#include <media/MediaExtractorPluginApi.h>
#include <utils/Errors.h>

#include <optional>
#include <string>

#include "framework/Format.h"
#include "framework/Track.h"

namespace orvel::host {

/**
 * A plug-in's extractor for one source. Move-only. Frees the plug-in's extractor and its table on
 * destruction; tracks taken from it live on. The source must outlive extractor and tracks.
 */
class Extractor {
  public:
    /** Bits of trackFormat's flags. */
    static constexpr uint32_t kIncludeExtensiveMetaData = 1;

    /** Takes over `table`, which may not be null. */
    explicit Extractor(android::CMediaExtractor* table) : mTable(table) {}
    ~Extractor();
    Extractor(Extractor&& other) noexcept;
    Extractor& operator=(Extractor&& other) noexcept;

    size_t countTracks() const;
    /** Track `index`; nothing when the plug-in gives none, as for an index out of range. */
    std::optional<Track> track(size_t index) const;
    /** Fills *format; on failure it stays as it is. */
    android::status_t trackFormat(size_t index, uint32_t flags, Format* format) const;
    android::status_t fileFormat(Format* format) const;
    uint32_t flags() const;
    /** "" when the plug-in gives none. */
    std::string name() const;

    android::CMediaExtractor* table() const { return mTable; }

  private:
    void reset();

    android::CMediaExtractor* mTable;
};

}  // namespace orvel::host
