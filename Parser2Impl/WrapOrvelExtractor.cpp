#include "WrapOrvelExtractor.h"

#include "FormatHandOver.h"

namespace orvel {

using android::MediaTrackHelper;

WrapOrvelExtractor::WrapOrvelExtractor(const android::sp<OrvelExtractor2>& extractor)
    : mExtractor(extractor) {}

WrapOrvelExtractor::~WrapOrvelExtractor() = default;

size_t WrapOrvelExtractor::countTracks() {
    return mExtractor->countTracks();
}

MediaTrackHelper* WrapOrvelExtractor::getTrack(size_t index) {
    return mExtractor->getTrack(index);
}

media_status_t WrapOrvelExtractor::getTrackMetaData(AMediaFormat* meta, size_t index,
                                                    uint32_t flags) {
    return handOverFormat(meta, [&](OrvelMetaData& store) {
        return mExtractor->getTrackMetaData(store, index, flags);
    });
}

media_status_t WrapOrvelExtractor::getMetaData(AMediaFormat* meta) {
    return handOverFormat(meta,
                          [&](OrvelMetaData& store) { return mExtractor->getMetaData(store); });
}

const char* WrapOrvelExtractor::name() {
    return mExtractor->name();
}

}  // namespace orvel
