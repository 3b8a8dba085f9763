// The texts that the platform publishes, and for the rest a text of the same kind. No codec's text
// that is compared as a prefix ("video/divx3", "video/flv1", "video/mp4v-es") begins another one.
#include <media/stagefright/foundation/MediaDefs.h>

namespace android {

const char* MEDIA_MIMETYPE_VIDEO_VP8 = "video/x-vnd.on2.vp8";
const char* MEDIA_MIMETYPE_VIDEO_VP9 = "video/x-vnd.on2.vp9";
const char* MEDIA_MIMETYPE_VIDEO_AVC = "video/avc";
const char* MEDIA_MIMETYPE_VIDEO_HEVC = "video/hevc";
const char* MEDIA_MIMETYPE_VIDEO_MPEG4 = "video/mp4v-es";
const char* MEDIA_MIMETYPE_VIDEO_H263 = "video/3gpp";
const char* MEDIA_MIMETYPE_VIDEO_MPEG2 = "video/mpeg2";
const char* MEDIA_MIMETYPE_VIDEO_DIVX3 = "video/divx3";
const char* MEDIA_MIMETYPE_VIDEO_FLV1 = "video/flv1";
const char* MEDIA_MIMETYPE_VIDEO_REAL = "video/vnd.rn-realvideo";

const char* MEDIA_MIMETYPE_AUDIO_AMR_NB = "audio/3gpp";
const char* MEDIA_MIMETYPE_AUDIO_AMR_WB = "audio/amr-wb";
const char* MEDIA_MIMETYPE_AUDIO_MPEG = "audio/mpeg";
const char* MEDIA_MIMETYPE_AUDIO_AAC = "audio/mp4a-latm";
const char* MEDIA_MIMETYPE_AUDIO_RAW = "audio/raw";
const char* MEDIA_MIMETYPE_AUDIO_FLAC = "audio/flac";
const char* MEDIA_MIMETYPE_AUDIO_AC3 = "audio/ac3";
const char* MEDIA_MIMETYPE_AUDIO_EAC3 = "audio/eac3";
const char* MEDIA_MIMETYPE_AUDIO_ALAC = "audio/alac";
const char* MEDIA_MIMETYPE_AUDIO_AIFF = "audio/x-aiff";
const char* MEDIA_MIMETYPE_AUDIO_APE = "audio/x-ape";
const char* MEDIA_MIMETYPE_AUDIO_COOK = "audio/vnd.rn-cook";
const char* MEDIA_MIMETYPE_AUDIO_DTS = "audio/vnd.dts";

const char* MEDIA_MIMETYPE_CONTAINER_MPEG4 = "video/mp4";
const char* MEDIA_MIMETYPE_CONTAINER_MOV = "video/quicktime";
const char* MEDIA_MIMETYPE_CONTAINER_3G2 = "video/3gpp2";
const char* MEDIA_MIMETYPE_CONTAINER_MATROSKA = "video/x-matroska";
const char* MEDIA_MIMETYPE_CONTAINER_AVI = "video/avi";
const char* MEDIA_MIMETYPE_CONTAINER_ASF = "video/x-ms-asf";
const char* MEDIA_MIMETYPE_CONTAINER_FLV = "video/x-flv";
const char* MEDIA_MIMETYPE_CONTAINER_RM = "video/vnd.rn-realmedia";
const char* MEDIA_MIMETYPE_CONTAINER_WAV = "audio/x-wav";
const char* MEDIA_MIMETYPE_CONTAINER_DSF = "audio/x-dsf";
const char* MEDIA_MIMETYPE_CONTAINER_DFF = "audio/x-dff";

const char* MEDIA_MIMETYPE_TEXT_3GPP = "text/3gpp-tt";

}  // namespace android
