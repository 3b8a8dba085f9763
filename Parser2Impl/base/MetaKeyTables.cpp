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

// The table has the expected number of rows and no empty name.
template <size_t kCount>
constexpr bool isWellFormed(const MetaKeyRow (&rows)[kCount], size_t expected) {
    for (const MetaKeyRow& row : rows) {
        if (row.name == nullptr || row.name[0] == '\0') return false;
    }
    return kCount == expected;
}

static_assert(isWellFormed(kCStringRows, 18) && isWellFormed(kFloatRows, 1) &&
              isWellFormed(kInt64Rows, 6) && isWellFormed(kInt32Rows, 56) &&
              isWellFormed(kCsdRows, 12) && isWellFormed(kBufferRows, 11) &&
              isWellFormed(kRectRows, 1) && isWellFormed(kPointerRows, 1));
// setInt32 knows these two without the table.
static_assert(MetaKeyTable(kInt32Rows).findName(kKeyIsSyncFrame) == nullptr &&
              MetaKeyTable(kInt32Rows).findName(kKeyIsDefault) == nullptr);

}  // namespace

constexpr MetaKeyTable kCStringKeys(kCStringRows);
constexpr MetaKeyTable kFloatKeys(kFloatRows);
constexpr MetaKeyTable kInt64Keys(kInt64Rows);
constexpr MetaKeyTable kInt32Keys(kInt32Rows);
constexpr MetaKeyTable kCsdKeys(kCsdRows);
constexpr MetaKeyTable kBufferKeys(kBufferRows);
constexpr MetaKeyTable kRectKeys(kRectRows);
constexpr MetaKeyTable kPointerKeys(kPointerRows);

}  // namespace orvel
