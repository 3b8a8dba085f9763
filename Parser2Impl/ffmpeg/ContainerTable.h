#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/stagefright/foundation/MediaDefs.h>

namespace orvel {

// What is special about a container, bit by bit.
enum ContainerRule : uint32_t {
    kPlain = 0,
    kAfterID3 = 1,      // its probe looks at 128 KiB after any ID3v2 tags
    kSpecialAudio = 2,  // taken only when the main audio is DTS or E-AC-3
};

// One container that the plug-in offers: everything that is decided by container stands here.
struct Container {
    const char* demuxer;      // FFmpeg's short name
    const char* const* mime;  // the platform's constant
    uint32_t flag;            // its bit in the property "mm.enable.orvel_parser"
    uint32_t rules;           // of ContainerRule
    // The file extensions that the bit claims: lower case, without a dot, ended by a null. Of two
    // rows with one bit the first has them.
    const char* extensions[12];
};

// In probing order; on equal scores the earlier row wins.
inline constexpr Container kContainers[] = {
        {"mov",
         &android::MEDIA_MIMETYPE_CONTAINER_MPEG4,
         0x1,
         kSpecialAudio,
         {"3g2", "3ga", "3gp", "3gpp", "3gpp2", "m4a", "m4r", "m4v", "mov", "mp4", "qt"}},
        {"mp3", &android::MEDIA_MIMETYPE_AUDIO_MPEG, 0x10, kAfterID3, {"mp2", "mp3"}},
        {"wav", &android::MEDIA_MIMETYPE_CONTAINER_WAV, 0x4000, kPlain, {"wav"}},
        {"aiff", &android::MEDIA_MIMETYPE_AUDIO_AIFF, 0x100, kPlain, {"aif", "aiff"}},
        {"rm", &android::MEDIA_MIMETYPE_CONTAINER_RM, 0x2, kPlain, {"rm", "rmvb"}},
        {"matroska", &android::MEDIA_MIMETYPE_CONTAINER_MATROSKA, 0x4, kSpecialAudio, {"mkv"}},
        {"flac", &android::MEDIA_MIMETYPE_AUDIO_FLAC, 0x200, kAfterID3, {"flac"}},
        {"ape", &android::MEDIA_MIMETYPE_AUDIO_APE, 0x400, kAfterID3, {"ape"}},
        {"asf", &android::MEDIA_MIMETYPE_CONTAINER_ASF, 0x800, kPlain, {"asf", "wma", "wmv"}},
        // FFmpeg's second ASF demuxer; its probe scores half of the first one's.
        {"asf_o", &android::MEDIA_MIMETYPE_CONTAINER_ASF, 0x800, kPlain, {}},
        {"ac3", &android::MEDIA_MIMETYPE_AUDIO_AC3, 0x20, kAfterID3, {"ac3", "eac3", "ec3"}},
        {"eac3", &android::MEDIA_MIMETYPE_AUDIO_EAC3, 0x20, kAfterID3, {}},
        {"dsf", &android::MEDIA_MIMETYPE_CONTAINER_DSF, 0x1000, kPlain, {"dsf"}},
        {"iff", &android::MEDIA_MIMETYPE_CONTAINER_DFF, 0x2000, kPlain, {"dff", "dsd"}},
        {"avi", &android::MEDIA_MIMETYPE_CONTAINER_AVI, 0x8, kPlain, {"avi"}},
        {"dts", &android::MEDIA_MIMETYPE_AUDIO_DTS, 0x80, kPlain, {"dts"}},
        {"flv", &android::MEDIA_MIMETYPE_CONTAINER_FLV, 0x40, kPlain, {"flv"}},
};

constexpr uint32_t kLastContainerFlag = 0x4000;
constexpr size_t kExtensionCount = 33;  // of all rows

// The probe of the containers with this bit begins after any ID3v2 tags.
bool isSupportID3(int flag);

// FFmpeg's name of an opened container, which may list several, is that of a container whose main
// audio decides.
bool isSpecialContainer(const char* formatName);

// The row of an opened container by FFmpeg's name of it; null for one outside the table.
const Container* findContainer(const char* formatName);

}  // namespace orvel
