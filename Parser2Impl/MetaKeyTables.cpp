// The key tables, in their fixed order.
#include "MetaKeyTables.h"

#include "MetaKeys.h"

namespace orvel {
namespace {

constexpr MetaKeyRow kCStringRows[] = {
        {"album", kKeyAlbum},
        {"albumartist", kKeyAlbumArtist},
        {"artist", kKeyArtist},
        {"author", kKeyAuthor},
        {"cdtracknum", kKeyCdTrackNum},
        {"compilation", kKeyCompilation},
        {"composer", kKeyComposer},
        {"date", kKeyDate},
        {"discnum", kKeyDiscNum},
        {"genre", kKeyGenre},
        {"location", kKeyLocation},
        {"lyricist", kKeyLyricist},
        {"manufacturer", kKeyManufacturer},
        {"title", kKeyTitle},
        {"year", kKeyYear},
        {"mime", kKeyMIMEType},
        {"language", kKeyLanguage},
        {"file-format", kKeyFileFormat},
};

constexpr MetaKeyRow kFloatRows[] = {
        {"capture-rate", kKeyCaptureRate},
};

constexpr MetaKeyRow kInt64Rows[] = {
        {"exif-offset", kKeyExifOffset},
        {"exif-size", kKeyExifSize},
        {"target-time", kKeyTargetTime},
        {"thumbnail-time", kKeyThumbnailTime},
        {"timeUs", kKeyTime},
        {"durationUs", kKeyDuration},
};

constexpr MetaKeyRow kInt32Rows[] = {
        {"loop", kKeyLoop},
        {"time-scale", kKeyTimeScale},
        {"crypto-mode", kKeyCryptoMode},
        {"crypto-default-iv-size", kKeyCryptoDefaultIvSize},
        {"crypto-encrypted-byte-block", kKeyCryptoEncryptedByteBlock},
        {"crypto-skip-byte-block", kKeyCryptoSkipByteBlock},
        {"frame-count", kKeyFrameCount},
        {"max-bitrate", kKeyMaxBitrate},
        {"pcm-big-endian", kKeyPcmBigEndian},
        {"temporal-layer-count", kKeyTemporalLayerCount},
        {"temporal-layer-id", kKeyTemporalLayerId},
        {"thumbnail-width", kKeyThumbnailWidth},
        {"thumbnail-height", kKeyThumbnailHeight},
        {"valid-samples", kKeyValidSamples},
        {"ca-system-id", kKeyCaSystemId},
        {"bitrate", kKeyBitrate},
        {"max-bitrate", kKeyMaxBitrate},
        {"track-id", kKeyTrackId},
        {"width", kKeyWidth},
        {"height", kKeyHeight},
        {"max-width", kKeyMaxWidth},
        {"max-height", kKeyMaxHeight},
        {"display-width", kKeyDisplayWidth},
        {"display-height", kKeyDisplayHeight},
        {"sar-width", kKeySarWidth},
        {"sar-height", kKeySarHeight},
        {"tile-width", kKeyTileWidth},
        {"tile-height", kKeyTileHeight},
        {"grid-rows", kKeyGridRows},
        {"grid-cols", kKeyGridCols},
        {"color-format", kKeyColorFormat},
        {"rotation-degrees", kKeyRotationDegrees},
        {"channel-count", kKeyChannelCount},
        {"sample-rate", kKeySampleRate},
        {"bits-per-sample", kKeyBitsPerSampleBits},
        {"bits-per-sample", kKeyBitsPerSample},
        {"channel-mask", kKeyChannelMask},
        {"encoder-delay", kKeyEncoderDelay},
        {"encoder-padding", kKeyEncoderPadding},
        {"is-adts", kKeyIsAdts},
        {"aac-profile", kKeyAacProfile},
        {"pcm-encoding", kKeyPcmEncoding},
        {"haptic-channel-count", kKeyHapticChannelCount},
        {"max-input-size", kKeyMaxInputSize},
        {"rotation-degrees", kKeyRotationDegrees},
        {"frame-rate", kKeyFrameRate},
        {"use-arbitrary-mode", kKeyUseArbitraryMode},
        {"aac-format-adif", kKeyAacFormatAdif},
        {"aac-format-adif", kKeyAacFormatAdifType},
        {"nal-length-size", kKeyNalLengthSize},
        {"big-buffer-flags", kKeyBigBufferFlags},
        {"extra-flags", kKeyExtraFlags},
        {"min-block-size", kKeyMinBlockSize},
        {"max-block-size", kKeyMaxBlockSize},
        {"min-frame-size", kKeyMinFrameSize},
        {"max-frame-size", kKeyMaxFrameSize},
};

constexpr MetaKeyRow kCsdRows[] = {
        {"csd-0", kKeyCsd0},
        {"csd-1", kKeyCsd1},
        {"csd-2", kKeyCsd2},
        {"csd-avc", kKeyCsdAvc},
        {"csd-hevc", kKeyCsdHevc},
        {"ca-session-id", kKeyCaSessionId},
        {"ca-private-data", kKeyCaPrivateData},
        {"hdr10-plus-info", kKeyHdr10PlusInfo},
        {"orvel-videoCSD", kKeyOrvelVideoCsd},
        {"orvel-audioCSD", kKeyOrvelAudioCsd},
        {"aac-codec-specific-data", kKeyAacCodecSpecificData},
        {"raw-codec-specific-data", kKeyRawCodecSpecificData},
};

constexpr MetaKeyRow kBufferRows[] = {
        {"albumart", kKeyAlbumArt},
        {"audio-presentation-info", kKeyAudioPresentationInfo},
        {"pssh", kKeyPssh},
        {"crypto-iv", kKeyCryptoIv},
        {"crypto-key", kKeyCryptoKey},
        {"crypto-encrypted-sizes", kKeyCryptoEncryptedSizes},
        {"crypto-plain-sizes", kKeyCryptoPlainSizes},
        {"icc-profile", kKeyIccProfile},
        {"sei", kKeySei},
        {"text-format-data", kKeyTextFormatData},
        {"thumbnail-csd-hevc", kKeyThumbnailCsdHevc},
};

constexpr MetaKeyRow kRectRows[] = {
        {"crop", kKeyCrop},
};

constexpr MetaKeyRow kPointerRows[] = {
        {"buffer-group", kKeyBufferGroup},
};

template <size_t kCount>
constexpr bool hasEarlier(const MetaKeyRow (&rows)[kCount], size_t index) {
    for (size_t i = 0; i < index; ++i) {
        if (rows[i].key == rows[index].key) return true;
    }
    return false;
}

// How many rows repeat the key of an earlier one.
template <size_t kCount>
constexpr size_t repeats(const MetaKeyRow (&rows)[kCount]) {
    size_t found = 0;
    for (size_t i = 0; i < kCount; ++i)
        found += hasEarlier(rows, i) ? 1 : 0;
    return found;
}

template <size_t kCount>
constexpr bool wellFormed(const MetaKeyRow (&rows)[kCount]) {
    for (const MetaKeyRow& row : rows) {
        if (row.name == nullptr || row.name[0] == '\0') return false;
        for (int shift = 0; shift < 32; shift += 8) {
            const uint32_t character = (row.key >> shift) & 0xFF;
            if (character < ' ' || character > '~') return false;
        }
    }
    return true;
}

template <size_t kCount, size_t kOther>
constexpr bool disjoint(const MetaKeyRow (&rows)[kCount], const MetaKeyRow (&others)[kOther]) {
    for (const MetaKeyRow& row : rows) {
        for (const MetaKeyRow& other : others) {
            if (row.key == other.key) return false;
        }
    }
    return true;
}

static_assert(sizeof(kCStringRows) / sizeof(MetaKeyRow) == 18 && wellFormed(kCStringRows));
static_assert(sizeof(kFloatRows) / sizeof(MetaKeyRow) == 1 && wellFormed(kFloatRows));
static_assert(sizeof(kInt64Rows) / sizeof(MetaKeyRow) == 6 && wellFormed(kInt64Rows));
static_assert(sizeof(kInt32Rows) / sizeof(MetaKeyRow) == 56 && wellFormed(kInt32Rows));
static_assert(sizeof(kCsdRows) / sizeof(MetaKeyRow) == 12 && wellFormed(kCsdRows));
static_assert(sizeof(kBufferRows) / sizeof(MetaKeyRow) == 11 && wellFormed(kBufferRows));
static_assert(sizeof(kRectRows) / sizeof(MetaKeyRow) == 1 && wellFormed(kRectRows));
static_assert(sizeof(kPointerRows) / sizeof(MetaKeyRow) == 1 && wellFormed(kPointerRows));
// Two pairs of the 32-bit integers stand twice; no other key does.
static_assert(repeats(kInt32Rows) == 2);
static_assert(repeats(kCStringRows) + repeats(kFloatRows) + repeats(kInt64Rows) +
                      repeats(kCsdRows) + repeats(kBufferRows) + repeats(kRectRows) +
                      repeats(kPointerRows) ==
              0);
static_assert(disjoint(kCsdRows, kBufferRows));

// At most half full, so that the search for an unknown key meets an empty slot soon.
template <size_t kCount>
struct SlotsOf {
    static constexpr size_t slotCount() {
        size_t slots = 2;
        while (slots < 2 * kCount)
            slots *= 2;
        return slots;
    }

    constexpr explicit SlotsOf(const MetaKeyRow (&rows)[kCount]) {
        static_assert(kCount < UINT8_MAX);
        for (size_t i = 0; i < kCount; ++i) {
            if (hasEarlier(rows, i)) continue;
            size_t slot = MetaKeyTable::hash(rows[i].key) & (slotCount() - 1);
            while (slots[slot] != 0)
                slot = (slot + 1) & (slotCount() - 1);
            slots[slot] = static_cast<uint8_t>(i + 1);
        }
    }

    constexpr MetaKeyTable table(const MetaKeyRow (&rows)[kCount]) const {
        return MetaKeyTable(rows, kCount, slots, slotCount() - 1);
    }

    uint8_t slots[slotCount()] = {};
};

constexpr SlotsOf kCStringSlots(kCStringRows);
constexpr SlotsOf kFloatSlots(kFloatRows);
constexpr SlotsOf kInt64Slots(kInt64Rows);
constexpr SlotsOf kInt32Slots(kInt32Rows);
constexpr SlotsOf kCsdSlots(kCsdRows);
constexpr SlotsOf kBufferSlots(kBufferRows);
constexpr SlotsOf kRectSlots(kRectRows);
constexpr SlotsOf kPointerSlots(kPointerRows);

}  // namespace

constexpr MetaKeyTable kCStringKeys = kCStringSlots.table(kCStringRows);
constexpr MetaKeyTable kFloatKeys = kFloatSlots.table(kFloatRows);
constexpr MetaKeyTable kInt64Keys = kInt64Slots.table(kInt64Rows);
constexpr MetaKeyTable kInt32Keys = kInt32Slots.table(kInt32Rows);
constexpr MetaKeyTable kCsdKeys = kCsdSlots.table(kCsdRows);
constexpr MetaKeyTable kBufferKeys = kBufferSlots.table(kBufferRows);
constexpr MetaKeyTable kRectKeys = kRectSlots.table(kRectRows);
constexpr MetaKeyTable kPointerKeys = kPointerSlots.table(kPointerRows);

}  // namespace orvel
