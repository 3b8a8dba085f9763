#include "framework/Extractor.h"

#include <media/NdkMediaErrorPriv.h>

#include <cstdlib>
#include <utility>

namespace orvel::host {

Extractor::~Extractor() {
    reset();
}

Extractor::Extractor(Extractor&& other) noexcept : mTable(std::exchange(other.mTable, nullptr)) {}

Extractor& Extractor::operator=(Extractor&& other) noexcept {
    if (this != &other) {
        reset();
        mTable = std::exchange(other.mTable, nullptr);
    }
    return *this;
}

void Extractor::reset() {
    if (mTable == nullptr) return;
    mTable->free(mTable->data);
    ::free(mTable);  // the plug-in made the table with malloc
    mTable = nullptr;
}

size_t Extractor::countTracks() const {
    return mTable->countTracks(mTable->data);
}

std::optional<Track> Extractor::track(size_t index) const {
    android::CMediaTrack* table = mTable->getTrack(mTable->data, index);
    if (table == nullptr) return std::nullopt;
    return Track(table);
}

android::status_t Extractor::trackFormat(size_t index, uint32_t flags, Format* format) const {
    return reverse_translate_error(
            mTable->getTrackMetaData(mTable->data, format->get(), index, flags));
}

android::status_t Extractor::fileFormat(Format* format) const {
    return reverse_translate_error(mTable->getMetaData(mTable->data, format->get()));
}

uint32_t Extractor::flags() const {
    return mTable->flags(mTable->data);
}

std::string Extractor::name() const {
    const char* name = mTable->name(mTable->data);
    return name != nullptr ? name : "";
}

}  // namespace orvel::host
