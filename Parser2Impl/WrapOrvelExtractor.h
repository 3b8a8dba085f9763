#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/MediaExtractorPluginHelper.h>
#include <utils/StrongPointer.h>

#include "OrvelExtractor2.h"

namespace orvel {

// An OrvelExtractor2 as the framework's helper class expects it: formats are copied into the
// framework's, statuses translated. flags() and setMediaCas() stay the platform's defaults. Called
// on the framework's threads; the framework's table owns it.
class WrapOrvelExtractor final : public android::MediaExtractorPluginHelper {
  public:
    explicit WrapOrvelExtractor(const android::sp<OrvelExtractor2>& extractor);
    ~WrapOrvelExtractor() override;

    size_t countTracks() override;
    android::MediaTrackHelper* getTrack(
            size_t index) override;  // the caller's; null: no such track
    // On a status other than AMEDIA_OK meta is left as it was.
    media_status_t getTrackMetaData(AMediaFormat* meta, size_t index, uint32_t flags) override;
    media_status_t getMetaData(AMediaFormat* meta) override;
    const char* name() override;

  private:
    const android::sp<OrvelExtractor2> mExtractor;
};

}  // namespace orvel
