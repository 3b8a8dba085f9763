#include "e2e/MediaTable.h"

#include <media/stagefright/foundation/MediaDefs.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace orvel::test {

using namespace android;

namespace {

Bytes twoTags(const std::string&) {
    return id3Tag(4096) + id3Tag(100) + mediaBytes("mp3_cbr.mp3");
}
Bytes dsf(const std::string&) {
    return dsfFile();
}
Bytes dff(const std::string&) {
    return dffFile();
}
Bytes ape(const std::string&) {
    return apeFile(5);
}
Bytes apeWithTag(const std::string&) {
    return id3Tag(2000) + apeFile(5);
}

// Built on first use: the MIME constants belong to another library.
std::vector<MediaFile> makeTable() {
    const char* const mp4 = MEDIA_MIMETYPE_CONTAINER_MPEG4;
    const char* const mkv = MEDIA_MIMETYPE_CONTAINER_MATROSKA;
    const char* const avc = MEDIA_MIMETYPE_VIDEO_AVC;
    const char* const hevc = MEDIA_MIMETYPE_VIDEO_HEVC;
    const char* const mpeg4 = MEDIA_MIMETYPE_VIDEO_MPEG4;
    const char* const real = MEDIA_MIMETYPE_VIDEO_REAL;
    const char* const mp3 = MEDIA_MIMETYPE_AUDIO_MPEG;
    const char* const aac = MEDIA_MIMETYPE_AUDIO_AAC;
    const char* const ac3 = MEDIA_MIMETYPE_AUDIO_AC3;
    const char* const eac3 = MEDIA_MIMETYPE_AUDIO_EAC3;
    const char* const dts = MEDIA_MIMETYPE_AUDIO_DTS;
    const char* const raw = MEDIA_MIMETYPE_AUDIO_RAW;
    const char* const flac = MEDIA_MIMETYPE_AUDIO_FLAC;
    const char* const text = MEDIA_MIMETYPE_TEXT_3GPP;
    const char* const wav = MEDIA_MIMETYPE_CONTAINER_WAV;
    const char* const aiff = MEDIA_MIMETYPE_AUDIO_AIFF;
    const char* const monkey = MEDIA_MIMETYPE_AUDIO_APE;
    const char* const rm = MEDIA_MIMETYPE_CONTAINER_RM;
    const char* const asf = MEDIA_MIMETYPE_CONTAINER_ASF;
    const char* const avi = MEDIA_MIMETYPE_CONTAINER_AVI;
    const char* const flv = MEDIA_MIMETYPE_CONTAINER_FLV;
    // clang-format off
    return {
        {"mp4_h264_eac3.mp4",  mediaBytes, "mov", 0x1, mp4, {{0, avc}, {1, eac3}, {2, text}}},
        {"mp4_hevc_eac3.mp4",  mediaBytes, "mov", 0x1, mp4, {{0, hevc}, {1, eac3}}},
        {"mp4_small.mp4",      mediaBytes, "mov", 0x1, mp4, {{0, avc}, {1, eac3}}},
        {"mp4_fragmented.mp4", mediaBytes, "mov", 0x1, mp4, {{0, avc}, {1, eac3}}},
        {"mp4_faststart.mp4",  mediaBytes, "mov", 0x1, mp4, {{0, avc}, {1, eac3}}},
        {"mp4_late_audio.mp4", mediaBytes, "mov", 0x1, mp4, {{0, avc}, {1, eac3}}},
        {"mov_pcm_eac3.mov",   mediaBytes, "mov", 0x1, mp4, {{0, mpeg4}, {1, eac3}, {2, raw}}},
        {"mp3_vbr.mp3",        mediaBytes, "mp3", 0x10, mp3, {{0, mp3}}},
        {"mp3_cbr.mp3",        mediaBytes, "mp3", 0x10, mp3, {{0, mp3}}},
        {"mp3_cover.mp3",      mediaBytes, "mp3", 0x10, mp3, {{0, mp3}}},
        {"mp3_two_tags.mp3",   twoTags,    "mp3", 0x10, mp3, {{0, mp3}}},
        {"wav_s16.wav",        mediaBytes, "wav", 0x4000, wav, {{0, raw}}},
        {"wav_u8.wav",         mediaBytes, "wav", 0x4000, wav, {{0, raw}}},
        {"wav_s24.wav",        mediaBytes, "wav", 0x4000, wav, {{0, raw}}},
        {"aiff_s16.aiff",      mediaBytes, "aiff", 0x100, aiff, {{0, raw}}},
        {"aiff_s8.aiff",       mediaBytes, "aiff", 0x100, aiff, {{0, raw}}},
        {"aiff_s24.aiff",      mediaBytes, "aiff", 0x100, aiff, {{0, raw}}},
        {"rm_rv10_ac3.rm",     mediaBytes, "rm", 0x2, rm, {{0, real}, {1, ac3}}},
        {"rm_rv20_ac3.rm",     mediaBytes, "rm", 0x2, rm, {{0, real}, {1, ac3}}},
        {"mkv_h264_eac3.mkv",  mediaBytes, "matroska", 0x4, mkv, {{0, avc}, {1, eac3}}},
        {"mkv_hevc_dts.mkv",   mediaBytes, "matroska", 0x4, mkv, {{0, hevc}, {1, dts}}},
        {"mkv_vp9_eac3.mkv",   mediaBytes, "matroska", 0x4, mkv,
                                           {{0, MEDIA_MIMETYPE_VIDEO_VP9}, {1, eac3}}},
        {"flac.flac",          mediaBytes, "flac", 0x200, flac, {{0, flac}}},
        {"flac_cover.flac",    mediaBytes, "flac", 0x200, flac, {{0, flac}}},
        {"ape.ape",            ape,        "ape", 0x400, monkey, {{0, monkey}}},
        {"ape_tag.ape",        apeWithTag, "ape", 0x400, monkey, {{0, monkey}}},
        {"asf_wmv2_wma.wmv",   mediaBytes, "asf", 0x800, asf, {}},
        {"asf_divx3_mp3.asf",  mediaBytes, "asf", 0x800, asf,
                                           {{0, MEDIA_MIMETYPE_VIDEO_DIVX3}, {1, mp3}}},
        {"ac3.ac3",            mediaBytes, "ac3", 0x20, ac3, {{0, ac3}}},
        {"eac3.eac3",          mediaBytes, "eac3", 0x20, eac3, {{0, eac3}}},
        {"dsf.dsf",            dsf,        "dsf", 0x1000, MEDIA_MIMETYPE_CONTAINER_DSF, {}},
        {"dff.dff",            dff,        "iff", 0x2000, MEDIA_MIMETYPE_CONTAINER_DFF, {}},
        {"avi_mpeg4_mp3.avi",  mediaBytes, "avi", 0x8, avi, {{0, mpeg4}, {1, mp3}}},
        {"avi_h264_ac3.avi",   mediaBytes, "avi", 0x8, avi, {{0, avc}, {1, ac3}}},
        {"avi_mpeg4_pcm.avi",  mediaBytes, "avi", 0x8, avi, {{0, mpeg4}, {1, raw}}},
        {"dts.dts",            mediaBytes, "dts", 0x80, dts, {{0, dts}}},
        {"flv_h264_aac.flv",   mediaBytes, "flv", 0x40, flv, {{0, avc}, {1, aac}}},
        {"flv_flv1_mp3.flv",   mediaBytes, "flv", 0x40, flv,
                                           {{0, mp3}, {1, MEDIA_MIMETYPE_VIDEO_FLV1}}},
    };
    // clang-format on
}

}  // namespace

void PrintTo(const MediaFile& file, std::ostream* out) {
    *out << file.name;
}

const std::vector<MediaFile>& mediaFiles() {
    static const std::vector<MediaFile> table = makeTable();
    return table;
}

const MediaFile& mediaFile(const char* name) {
    for (const MediaFile& file : mediaFiles()) {
        if (file.name == name) return file;
    }
    throw std::logic_error(std::string("no media file ") + name);
}

std::vector<MediaFile> filesWithTracks() {
    std::vector<MediaFile> files = mediaFiles();
    files.erase(std::remove_if(files.begin(), files.end(),
                               [](const MediaFile& file) { return file.tracks.empty(); }),
                files.end());
    return files;
}

std::string asTestName(std::string name) {
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
}

}  // namespace orvel::test
