#pragma once

#include <stdint.h>

#include "bytes/FourCharacterCode.h"

namespace orvel {

// The keys of an OrvelMetaData, by the type of their entries and named after the framework's key
// names, which MetaKeyTables.cpp lists.
enum : uint32_t {
    // Texts.
    kKeyAlbum = fourCharacterCode("albu"),
    kKeyAlbumArtist = fourCharacterCode("aart"),
    kKeyArtist = fourCharacterCode("arti"),
    kKeyAuthor = fourCharacterCode("auth"),
    kKeyCdTrackNum = fourCharacterCode("cdtr"),
    kKeyCompilation = fourCharacterCode("cpil"),
    kKeyComposer = fourCharacterCode("comp"),
    kKeyDate = fourCharacterCode("date"),
    kKeyDiscNum = fourCharacterCode("dnum"),
    kKeyGenre = fourCharacterCode("genr"),
    kKeyLocation = fourCharacterCode("loc "),
    kKeyLyricist = fourCharacterCode("writ"),
    kKeyManufacturer = fourCharacterCode("manu"),
    kKeyTitle = fourCharacterCode("titl"),
    kKeyYear = fourCharacterCode("year"),
    kKeyMIMEType = fourCharacterCode("mime"),
    kKeyLanguage = fourCharacterCode("lang"),
    kKeyFileFormat = fourCharacterCode("ffmt"),
    kKeyAlbumArtMIME = fourCharacterCode("alAM"),  // in no table: setting it fails

    // Floats.
    kKeyCaptureRate = fourCharacterCode("capF"),

    // 64-bit integers.
    kKeyExifOffset = fourCharacterCode("exof"),     // bytes
    kKeyExifSize = fourCharacterCode("exsz"),       // bytes
    kKeyTargetTime = fourCharacterCode("tarT"),     // us
    kKeyThumbnailTime = fourCharacterCode("thbT"),  // us
    kKeyTime = fourCharacterCode("time"),           // us
    kKeyDuration = fourCharacterCode("dura"),       // us

    // 32-bit integers.
    kKeyLoop = fourCharacterCode("autL"),
    kKeyTimeScale = fourCharacterCode("tmsl"),
    kKeyCryptoMode = fourCharacterCode("cryM"),
    kKeyCryptoDefaultIvSize = fourCharacterCode("cryS"),
    kKeyCryptoEncryptedByteBlock = fourCharacterCode("cblk"),
    kKeyCryptoSkipByteBlock = fourCharacterCode("sblk"),
    kKeyFrameCount = fourCharacterCode("nfrm"),
    kKeyMaxBitrate = fourCharacterCode("mxBr"),
    kKeyPcmBigEndian = fourCharacterCode("pcmb"),
    kKeyTemporalLayerCount = fourCharacterCode("cLyr"),
    kKeyTemporalLayerId = fourCharacterCode("iLyr"),
    kKeyThumbnailWidth = fourCharacterCode("thbW"),
    kKeyThumbnailHeight = fourCharacterCode("thbH"),
    kKeyValidSamples = fourCharacterCode("valD"),
    kKeyCaSystemId = fourCharacterCode("caid"),
    kKeyBitrate = fourCharacterCode("brte"),
    kKeyTrackId = fourCharacterCode("trID"),
    kKeyWidth = fourCharacterCode("widt"),
    kKeyHeight = fourCharacterCode("heig"),
    kKeyMaxWidth = fourCharacterCode("maxW"),
    kKeyMaxHeight = fourCharacterCode("maxH"),
    kKeyDisplayWidth = fourCharacterCode("dWid"),
    kKeyDisplayHeight = fourCharacterCode("dHgt"),
    kKeySarWidth = fourCharacterCode("sarW"),
    kKeySarHeight = fourCharacterCode("sarH"),
    kKeyTileWidth = fourCharacterCode("tilW"),
    kKeyTileHeight = fourCharacterCode("tilH"),
    kKeyGridRows = fourCharacterCode("grdR"),
    kKeyGridCols = fourCharacterCode("grdC"),
    kKeyColorFormat = fourCharacterCode("colf"),
    kKeyRotationDegrees = fourCharacterCode("rotA"),
    kKeyChannelCount = fourCharacterCode("#chn"),
    kKeySampleRate = fourCharacterCode("srte"),
    kKeyBitsPerSampleBits = fourCharacterCode("bits"),  // same entry as kKeyBitsPerSample
    kKeyBitsPerSample = fourCharacterCode("sbit"),
    kKeyChannelMask = fourCharacterCode("chnm"),
    kKeyEncoderDelay = fourCharacterCode("encd"),
    kKeyEncoderPadding = fourCharacterCode("encp"),
    kKeyIsAdts = fourCharacterCode("adts"),
    kKeyAacProfile = fourCharacterCode("aaot"),
    kKeyPcmEncoding = fourCharacterCode("PCMe"),
    kKeyHapticChannelCount = fourCharacterCode("hapC"),
    kKeyMaxInputSize = fourCharacterCode("inpS"),  // bytes
    kKeyFrameRate = fourCharacterCode("frmR"),
    kKeyUseArbitraryMode = fourCharacterCode("ArbM"),
    kKeyAacFormatAdif = fourCharacterCode("adif"),
    kKeyAacFormatAdifType = fourCharacterCode("aacp"),  // same entry as kKeyAacFormatAdif
    kKeyNalLengthSize = fourCharacterCode("nals"),      // bytes
    kKeyBigBufferFlags = fourCharacterCode("bytm"),
    kKeyExtraFlags = fourCharacterCode("extf"),
    kKeyMinBlockSize = fourCharacterCode("mibs"),
    kKeyMaxBlockSize = fourCharacterCode("mabs"),
    kKeyMinFrameSize = fourCharacterCode("mifs"),
    kKeyMaxFrameSize = fourCharacterCode("mafs"),
    kKeyIsSyncFrame = fourCharacterCode("sync"),  // setInt32 only
    kKeyIsDefault = fourCharacterCode("dflt"),    // setInt32 only

    // Bytes.
    kKeyAlbumArt = fourCharacterCode("albA"),
    kKeyAudioPresentationInfo = fourCharacterCode("audP"),
    kKeyPssh = fourCharacterCode("pssh"),
    kKeyCryptoIv = fourCharacterCode("cryI"),
    kKeyCryptoKey = fourCharacterCode("cryK"),
    kKeyCryptoEncryptedSizes = fourCharacterCode("encr"),
    kKeyCryptoPlainSizes = fourCharacterCode("plai"),
    kKeyIccProfile = fourCharacterCode("prof"),
    kKeySei = fourCharacterCode("sei "),
    kKeyTextFormatData = fourCharacterCode("text"),
    kKeyThumbnailCsdHevc = fourCharacterCode("thvc"),
    kKeyCsd0 = fourCharacterCode("csd0"),
    kKeyCsd1 = fourCharacterCode("csd1"),
    kKeyCsd2 = fourCharacterCode("csd2"),
    kKeyCsdAvc = fourCharacterCode("avcc"),
    kKeyCsdHevc = fourCharacterCode("hvcc"),
    kKeyCaSessionId = fourCharacterCode("seid"),
    kKeyCaPrivateData = fourCharacterCode("cadc"),
    kKeyHdr10PlusInfo = fourCharacterCode("hdrD"),
    kKeyOrvelVideoCsd = fourCharacterCode("fvsd"),
    kKeyOrvelAudioCsd = fourCharacterCode("fasd"),
    kKeyAacCodecSpecificData = fourCharacterCode("nacc"),
    kKeyRawCodecSpecificData = fourCharacterCode("rcsd"),

    // Rectangles.
    kKeyCrop = fourCharacterCode("crop"),

    // Pointers.
    kKeyBufferGroup = fourCharacterCode("bfgp"),  // MediaBufferGroupHelper*
};

// The type argument of OrvelMetaData::setData where nothing is to be said; it is not stored.
constexpr uint32_t kTypeNone = fourCharacterCode("none");

}  // namespace orvel
