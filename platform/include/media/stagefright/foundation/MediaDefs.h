// The texts by which codecs and containers are named. All differ; they are compared by content.
// Containers that may hold video begin with "video/", those that hold only audio with "audio/".
#pragma once

namespace android {

#pragma GCC visibility push(default)

// Video codecs.
extern const char* MEDIA_MIMETYPE_VIDEO_VP8;
extern const char* MEDIA_MIMETYPE_VIDEO_VP9;
extern const char* MEDIA_MIMETYPE_VIDEO_AVC;
extern const char* MEDIA_MIMETYPE_VIDEO_HEVC;
extern const char* MEDIA_MIMETYPE_VIDEO_MPEG4;
extern const char* MEDIA_MIMETYPE_VIDEO_H263;
extern const char* MEDIA_MIMETYPE_VIDEO_MPEG2;
extern const char* MEDIA_MIMETYPE_VIDEO_DIVX3;
extern const char* MEDIA_MIMETYPE_VIDEO_FLV1;
extern const char* MEDIA_MIMETYPE_VIDEO_REAL;

// Audio codecs, some of which name a file of nothing else too.
extern const char* MEDIA_MIMETYPE_AUDIO_AMR_NB;
extern const char* MEDIA_MIMETYPE_AUDIO_AMR_WB;
extern const char* MEDIA_MIMETYPE_AUDIO_MPEG;
extern const char* MEDIA_MIMETYPE_AUDIO_AAC;
extern const char* MEDIA_MIMETYPE_AUDIO_RAW;
extern const char* MEDIA_MIMETYPE_AUDIO_FLAC;
extern const char* MEDIA_MIMETYPE_AUDIO_AC3;
extern const char* MEDIA_MIMETYPE_AUDIO_EAC3;
extern const char* MEDIA_MIMETYPE_AUDIO_ALAC;
extern const char* MEDIA_MIMETYPE_AUDIO_AIFF;
extern const char* MEDIA_MIMETYPE_AUDIO_APE;
extern const char* MEDIA_MIMETYPE_AUDIO_COOK;
extern const char* MEDIA_MIMETYPE_AUDIO_DTS;

// Containers.
extern const char* MEDIA_MIMETYPE_CONTAINER_MPEG4;
extern const char* MEDIA_MIMETYPE_CONTAINER_MOV;
extern const char* MEDIA_MIMETYPE_CONTAINER_3G2;
extern const char* MEDIA_MIMETYPE_CONTAINER_MATROSKA;
extern const char* MEDIA_MIMETYPE_CONTAINER_AVI;
extern const char* MEDIA_MIMETYPE_CONTAINER_ASF;
extern const char* MEDIA_MIMETYPE_CONTAINER_FLV;
extern const char* MEDIA_MIMETYPE_CONTAINER_RM;
extern const char* MEDIA_MIMETYPE_CONTAINER_WAV;
extern const char* MEDIA_MIMETYPE_CONTAINER_DSF;
extern const char* MEDIA_MIMETYPE_CONTAINER_DFF;

// Text.
extern const char* MEDIA_MIMETYPE_TEXT_3GPP;

#pragma GCC visibility pop

}  // namespace android
