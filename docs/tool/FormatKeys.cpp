// Writes docs/format-keys.md from the key tables, on stdout: cmake --build BUILD --target
// format_keys_doc puts it in place. Tests compare the committed file with this output, and the
// keys below with those that the plug-in's sources use.
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "base/MetaKeyTables.h"
#include "base/MetaKeys.h"

namespace {

using namespace orvel;

// A key that the plug-in writes or reads: in which format, and what stands there.
struct Note {
    uint32_t key;
    const char* where;
    const char* meaning;
};

constexpr Note kNotes[] = {
        {kKeyMIMEType, "file, track", "container; codec. An audio-only file goes by its audio"},
        {kKeyFileFormat, "track", "the container's MIME type"},
        {kKeyLanguage, "track", "as the container spells it"},
        {kKeyAlbum, "file", "tag `album`"},
        {kKeyArtist, "file", "tag `artist`"},
        {kKeyAlbumArtist, "file", "tag `album_artist`"},
        {kKeyComposer, "file", "tag `composer`"},
        {kKeyGenre, "file", "tag `genre`"},
        {kKeyTitle, "file", "tag `title`"},
        {kKeyYear, "file", "tag `date`"},
        {kKeyAuthor, "file", "tag `author`"},
        {kKeyCdTrackNum, "file", "tag `track`"},
        {kKeyDiscNum, "file", "tag `disc`"},
        {kKeyCompilation, "file", "tag `compilation`"},
        {kKeyDate, "file", "tag `creation_time`"},
        {kKeyLyricist, "file", "tag `writer`"},
        {kKeyLocation, "file", "ISO 6709, ended by a solidus"},
        {kKeyCaptureRate, "file", "frames per second at recording"},
        {kKeyAlbumArt, "file", "the cover picture of a file without a video track"},
        {kKeyDuration, "track", "us; the file's when the stream has none"},
        {kKeyThumbnailTime, "track",
         "us, when asked for: a quarter of the duration, 0 for RealVideo"},
        {kKeyMaxInputSize, "track", "bytes: what a buffer for one sample should hold"},
        {kKeyWidth, "video", "pixels"},
        {kKeyHeight, "video", "pixels"},
        {kKeyRotationDegrees, "video", "clockwise"},
        {kKeyFrameRate, "video", "frames per second, rounded"},
        {kKeyUseArbitraryMode, "video", "1 for MPEG-4 Part 2"},
        {kKeyCsdAvc, "video", "AVCDecoderConfigurationRecord (ISO/IEC 14496-15, 5.3.3)"},
        {kKeyCsdHevc, "video", "HEVCDecoderConfigurationRecord (ISO/IEC 14496-15, 8.3.3)"},
        {kKeyNalLengthSize, "video", "bytes of a NAL unit's length in the file, 1 to 4"},
        {kKeyOrvelVideoCsd, "video", "codec parameters for the platform's decoders"},
        {kKeyRawCodecSpecificData, "audio, video", "extradata as it is; for ALAC its magic cookie"},
        {kKeySampleRate, "audio", "Hz; for AAC the core's"},
        {kKeyChannelCount, "audio", "channels"},
        {kKeyBitrate, "audio", "bits per second"},
        {kKeyMaxBitrate, "audio", "bits per second, as `bitrate`"},
        {kKeyBitsPerSample, "audio", "bits of a coded sample; 16 for 8-bit PCM, which is widened"},
        {kKeyPcmEncoding, "audio", "PCM: the platform's encoding code"},
        {kKeyEncoderDelay, "audio", "samples to drop at the start"},
        {kKeyEncoderPadding, "audio", "samples to drop at the end"},
        {kKeyAacCodecSpecificData, "audio", "AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1)"},
        {kKeyAacProfile, "audio", "AAC: the audio object type"},
        {kKeyAacFormatAdif, "audio", "AAC: 0, then overwritten by the next"},
        {kKeyAacFormatAdifType, "audio", "AAC: the audio object type, in the same entry"},
        {kKeyMinBlockSize, "audio", "FLAC: samples"},
        {kKeyMaxBlockSize, "audio", "FLAC: samples"},
        {kKeyMinFrameSize, "audio", "FLAC: bytes"},
        {kKeyMaxFrameSize, "audio", "FLAC: bytes"},
        {kKeyOrvelAudioCsd, "audio", "codec parameters for the platform's decoders"},
        {kKeyTextFormatData, "text", "the sample entries of type 'tx3g' (3GPP TS 26.245, 5.16)"},
        {kKeyTime, "sample", "us, presentation time"},
        {kKeyIsSyncFrame, "sample", "1 on key frames, else absent"},
        {kKeyTargetTime, "sample", "us: the frame that a seek to the closest frame means"},
        {kKeyBufferGroup, "start", "read: the buffer group of the track"},
        {kKeyExtraFlags, "start", "read: bit of value 2 asks for several MP3 packets in a buffer"},
        {kKeyBigBufferFlags, "start, audio", "written: 1 when buffers hold several packets"},
        {kKeyAlbumArtMIME, "", "in no table: an attempt to set it is logged and drops it"},
        {kKeyIsDefault, "", "accepted by setInt32 as `is-default`; nothing sets it"},
};

struct Section {
    const char* title;
    std::vector<const MetaKeyTable*> tables;
};

const Note* findNote(uint32_t key) {
    for (const Note& note : kNotes) {
        if (note.key == key) return &note;
    }
    return nullptr;
}

std::string code(uint32_t key) {
    return {static_cast<char>(key >> 24), static_cast<char>(key >> 16), static_cast<char>(key >> 8),
            static_cast<char>(key)};
}

void printRow(const char* name, const Note& note) {
    printf("| `%s` | `%s` | %s | %s |\n", name, code(note.key).c_str(), note.where, note.meaning);
}

void print(const Section& section) {
    printf("\n## %s\n\n", section.title);
    std::set<uint32_t> seen;
    std::string others;
    bool headed = false;
    for (const MetaKeyTable* table : section.tables) {
        for (const MetaKeyRow& row : *table) {
            if (!seen.insert(row.key).second) continue;
            if (const Note* note = findNote(row.key)) {
                if (!headed) printf("| key | code | where | meaning |\n|---|---|---|---|\n");
                headed = true;
                printRow(row.name, *note);
            } else {
                others += (others.empty() ? "" : ", ") + ("`" + std::string(row.name)) + "` (`" +
                          code(row.key) + "`)";
            }
        }
    }
    if (section.tables.front() == &kInt32Keys) {
        printRow("is-sync-frame", *findNote(kKeyIsSyncFrame));
    }
    if (!others.empty()) printf("%sIn the table only: %s.\n", headed ? "\n" : "", others.c_str());
}

}  // namespace

int main() {
    printf("%s",
           "# Format keys\n\n"
           "<!-- Written by docs/tool/FormatKeys.cpp; make it again with the build target\n"
           "     format_keys_doc. -->\n\n"
           "Inside the plug-in every entry of a format is addressed by a four-character code; the\n"
           "framework sees it under the key. *Where*: the **file** format, every **track** format\n"
           "(or that of **audio**, **video** and **text** tracks alone), each **sample**, and the\n"
           "parameters of a track's **start**. Keys that stand in a table only are stored and "
           "found\n"
           "like the others, but nothing in the plug-in sets or reads them.\n");
    const Section sections[] = {
            {"Texts", {&kCStringKeys}},           {"32-bit integers", {&kInt32Keys}},
            {"64-bit integers", {&kInt64Keys}},   {"Floats", {&kFloatKeys}},
            {"Bytes", {&kCsdKeys, &kBufferKeys}}, {"Rectangles", {&kRectKeys}},
            {"Pointers", {&kPointerKeys}},
    };
    for (const Section& section : sections)
        print(section);
    printf("\n## Without a row in any table\n\n");
    for (uint32_t key : {kKeyIsDefault, kKeyAlbumArtMIME}) {
        printf("- `%s`: %s.\n", code(key).c_str(), findNote(key)->meaning);
    }
}
