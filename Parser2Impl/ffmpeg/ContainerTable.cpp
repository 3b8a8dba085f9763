#include "ContainerTable.h"

#include <media/stagefright/foundation/MediaDefs.h>

namespace orvel {

using namespace android;

const Container kContainers[kContainerCount] = {
        {"mov", &MEDIA_MIMETYPE_CONTAINER_MPEG4, 0x1},
        {"mp3", &MEDIA_MIMETYPE_AUDIO_MPEG, 0x10},
        {"wav", &MEDIA_MIMETYPE_CONTAINER_WAV, 0x4000},
        {"aiff", &MEDIA_MIMETYPE_AUDIO_AIFF, 0x100},
        {"rm", &MEDIA_MIMETYPE_CONTAINER_RM, 0x2},
        {"matroska", &MEDIA_MIMETYPE_CONTAINER_MATROSKA, 0x4},
        {"flac", &MEDIA_MIMETYPE_AUDIO_FLAC, 0x200},
        {"ape", &MEDIA_MIMETYPE_AUDIO_APE, 0x400},
        {"asf", &MEDIA_MIMETYPE_CONTAINER_ASF, 0x800},
        // FFmpeg's second ASF demuxer; its probe scores half of the first one's.
        {"asf_o", &MEDIA_MIMETYPE_CONTAINER_ASF, 0x800},
        {"ac3", &MEDIA_MIMETYPE_AUDIO_AC3, 0x20},
        {"eac3", &MEDIA_MIMETYPE_AUDIO_EAC3, 0x20},
        {"dsf", &MEDIA_MIMETYPE_CONTAINER_DSF, 0x1000},
        {"iff", &MEDIA_MIMETYPE_CONTAINER_DFF, 0x2000},
        {"avi", &MEDIA_MIMETYPE_CONTAINER_AVI, 0x8},
        {"dts", &MEDIA_MIMETYPE_AUDIO_DTS, 0x80},
        {"flv", &MEDIA_MIMETYPE_CONTAINER_FLV, 0x40},
};

}  // namespace orvel
