// What is said of streams and files, from their parameters and tags alone.
#include <gtest/gtest.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include <string>

#include "base/MetaDataValue.h"
#include "ffmpeg/CodecMime.h"
#include "ffmpeg/FileMeta.h"
#include "ffmpeg/TrackFormat.h"

namespace orvel {
namespace {

using namespace android;

// A stream that no file has.
struct Stream {
    Stream(AVMediaType type, AVCodecID id, const std::string& extradata) {
        AVCodecParameters& par = *stream->codecpar;
        par.codec_type = type;
        par.codec_id = id;
        par.extradata_size = static_cast<int>(extradata.size());
        par.extradata =
                static_cast<uint8_t*>(av_mallocz(extradata.size() + AV_INPUT_BUFFER_PADDING_SIZE));
        memcpy(par.extradata, extradata.data(), extradata.size());
    }
    ~Stream() { avformat_free_context(context); }

    AVFormatContext* const context = avformat_alloc_context();
    AVStream* const stream = avformat_new_stream(context, nullptr);
};

std::string textOf(const OrvelMetaData& meta) {
    return meta.toString().string();
}

std::string bytes(std::initializer_list<int> values) {
    return std::string(values.begin(), values.end());
}

// clang-format off
const std::string kAlac = std::string(12, 0) + bytes({0, 0, 16, 0, 0, 16, 40, 10, 14, 2, 0, 255}) +
                          bytes({0, 0, 32, 4, 0, 10, 196, 64, 0, 0, 172, 68});
const std::string kFlac = bytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}) + std::string(24, 0);

TEST(AudioFormat, FollowsTheCodecParameters) {
    const struct {
        AVCodecID id;
        std::string extradata;
        AVSampleFormat format;
        int bits;
        int64_t bitRate;
        const char* own;  // besides what all have
    } cases[] = {
        // LC at 22050 Hz with an extension to 44100 Hz: the rate of the core.
        {AV_CODEC_ID_AAC, bytes({0x2B, 0x8A, 8, 0}), AV_SAMPLE_FMT_FLTP, 0, 0,
         "aac-codec-specific-data: data(4 bytes), aac-format-adif: int32(2), aac-profile: "
         "int32(2), channel-count: int32(0), max-input-size: int32(262144), orvel-audioCSD: "
         "data(140 bytes), sample-rate: int32(22050)"},
        {AV_CODEC_ID_ALAC, kAlac, AV_SAMPLE_FMT_S16P, 16, (int64_t{7} << 32) + 5,
         "bitrate: int32(5), bits-per-sample: int32(16), channel-count: int32(0), max-bitrate: "
         "int32(5), max-input-size: int32(262144), orvel-audioCSD: data(172 bytes), "
         "raw-codec-specific-data: data(24 bytes), sample-rate: int32(48000)"},
        {AV_CODEC_ID_FLAC, kFlac, AV_SAMPLE_FMT_S16, 0, 0,
         "channel-count: int32(0), max-block-size: int32(772), max-frame-size: int32(526602), "
         "max-input-size: int32(262144), min-block-size: int32(258), min-frame-size: "
         "int32(329223), orvel-audioCSD: data(170 bytes), sample-rate: int32(48000)"},
        {AV_CODEC_ID_FLAC, kFlac + "8 more..", AV_SAMPLE_FMT_S16, 0, 0,
         "channel-count: int32(0), max-input-size: int32(262144), orvel-audioCSD: data(178 bytes), "
         "sample-rate: int32(48000)"},
    };
    for (const auto& c : cases) {
        Stream audio(AVMEDIA_TYPE_AUDIO, c.id, c.extradata);
        AVCodecParameters& par = *audio.stream->codecpar;
        par.sample_rate = 48000;
        par.format = c.format;
        par.bits_per_coded_sample = c.bits;
        par.bit_rate = c.bitRate;
        MetaDataValue meta;
        initAudioMeta(audio.stream, meta, codecId2MimeType(c.id));
        EXPECT_EQ(textOf(meta), c.own) << c.id;
    }
}

TEST(VideoFormat, FollowsContainerCodecAndConfiguration) {
    const std::string record = std::string(21, '\xFE') + bytes({0xFD, 0});
    const struct {
        AVCodecID id;
        std::string extradata;
        const char* const* fileMime;
        AVRational rate;
        std::optional<int32_t> rotation;
        int width;
        const char* own;
    } cases[] = {
        {AV_CODEC_ID_H264, record, &MEDIA_MIMETYPE_CONTAINER_MPEG4, {24000, 1001}, 90, 1920,
         "csd-avc: data(23 bytes), frame-rate: int32(24), height: int32(1080), max-input-size: "
         "int32(3110400), nal-length-size: int32(3), orvel-videoCSD: data(159 bytes), "
         "rotation-degrees: int32(90), width: int32(1920)"},
        {AV_CODEC_ID_HEVC, record, &MEDIA_MIMETYPE_CONTAINER_MATROSKA, {0, 0}, {}, 0,
         "csd-hevc: data(23 bytes), height: int32(1080), max-input-size: int32(0), "
         "nal-length-size: int32(2), orvel-videoCSD: data(159 bytes), width: int32(0)"},
        {AV_CODEC_ID_H264, record, &MEDIA_MIMETYPE_CONTAINER_AVI, {0, 1}, {}, 1 << 30,
         "height: int32(1080), max-input-size: int32(2147483647), orvel-videoCSD: data(159 bytes), "
         "raw-codec-specific-data: data(23 bytes), width: int32(1073741824)"},
        // Too short: the length is read in the zeros after it.
        {AV_CODEC_ID_HEVC, "abc", &MEDIA_MIMETYPE_CONTAINER_MPEG4, {0, 1}, {}, 2,
         "csd-hevc: data(3 bytes), height: int32(1080), max-input-size: int32(3240), "
         "nal-length-size: int32(1), orvel-videoCSD: data(139 bytes), width: int32(2)"},
    };
    for (const auto& c : cases) {
        Stream video(AVMEDIA_TYPE_VIDEO, c.id, c.extradata);
        video.stream->codecpar->width = c.width;
        video.stream->codecpar->height = 1080;
        video.stream->avg_frame_rate = c.rate;
        MetaDataValue meta;
        initVideoMeta(video.stream, meta, codecId2MimeType(c.id), *c.fileMime, c.rotation);
        EXPECT_EQ(textOf(meta), c.own) << c.id;
    }
}

TEST(FileMeta, FollowsTagsAndMainAudio) {
    using Tags = std::vector<std::pair<const char*, const char*>>;
    const struct {
        const char* const* mime;
        const char* audioMime;
        bool hasVideo;
        Tags tags;
        const char* entries;
    } cases[] = {
        {&MEDIA_MIMETYPE_CONTAINER_MPEG4, nullptr, false, {{"major_brand", "mqt "}},
         "mime: string(video/quicktime)"},
        {&MEDIA_MIMETYPE_CONTAINER_MPEG4, nullptr, false, {{"major_brand", "kDDI"}},
         "mime: string(video/3gpp2)"},
        {&MEDIA_MIMETYPE_AUDIO_AIFF, "audio/raw", false, {{"major_brand", "qt  "}},
         "mime: string(audio/x-aiff)"},
        {&MEDIA_MIMETYPE_AUDIO_MPEG, nullptr, false, {{"ALBUM", "a"}, {"Artist", "b"}, {
         "album_artist", "c"}, {"composer", "d"}, {"genre", "e"}, {"title", "f"}, {"DATE",
         "2011"}, {"author", "g"}, {"track", "3/12"}, {"disc", "h"}, {"compilation", "1"}, {
         "creation_time", "i"}, {"writer", "X"}, {"comment", "no"}, {"location", "+37.5+127.0"},
         {"com.android.capture.fps", "120.000000"}},
         "album: string(a), albumartist: string(c), artist: string(b), author: string(g), "
         "capture-rate: float(120.000000), cdtracknum: string(3/12), compilation: string(1), "
         "composer: string(d), date: string(i), discnum: string(h), genre: string(e), location: "
         "string(+37.5+127.0/), lyricist: string(X), mime: string(audio/mpeg), title: string(f), "
         "year: string(2011)"},
        {&MEDIA_MIMETYPE_AUDIO_MPEG, nullptr, false, {{"location", "+37/"}, {
         "com.android.Capture.fps", "120"}}, "location: string(+37/), mime: string(audio/mpeg)"},
        {&MEDIA_MIMETYPE_AUDIO_MPEG, nullptr, false, {{"Location", "+37/"}},
         "mime: string(audio/mpeg)"},
    };
    for (const auto& c : cases) {
        FileFacts facts;
        facts.mime = *c.mime;
        facts.audioMime = c.audioMime;
        AVDictionary* tags = nullptr;
        for (const auto& [name, text] : c.tags)
            av_dict_set(&tags, name, text, 0);
        facts.tags.reset(tags);
        MetaDataValue meta;
        setFileMime(facts, c.hasVideo, meta);
        setAlbumArtRelatedMeta(tags, meta);
        EXPECT_EQ(textOf(meta), c.entries);
    }
}

// clang-format on

TEST(TrackInfo, DurationIsTheStreamsOrElseTheFiles) {
    const struct {
        int64_t stream, file;  // us
        const char* entry;
        int64_t durationUs;
    } cases[] = {{2, 5, "durationUs: int64(2), mime: string(audio/mpeg)", 2},
                 {1, 5, "durationUs: int64(5), mime: string(audio/mpeg)", 5},
                 {AV_NOPTS_VALUE, 5, "durationUs: int64(5), mime: string(audio/mpeg)", 5},
                 {AV_NOPTS_VALUE, -1, "mime: string(audio/mpeg)", 0}};
    for (const auto& c : cases) {
        Stream audio(AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_MP3, "");
        audio.stream->time_base = {1, 1000000};
        audio.stream->duration = c.stream;
        ::orvel::TrackInfo info;
        initTrackInfo(audio.stream, nullptr, c.file, &info);
        EXPECT_EQ(textOf(info.meta), c.entry);
        EXPECT_EQ(info.durationUs, c.durationUs);
    }
}

TEST(CodecMime, SpecialOnesAndPcm) {
    EXPECT_TRUE(isSupportedMimeTypeWithCodec(MEDIA_MIMETYPE_VIDEO_MPEG4, "xvid"));
    EXPECT_FALSE(isSupportedMimeTypeWithCodec(MEDIA_MIMETYPE_VIDEO_MPEG4, "FMP4"));
    EXPECT_TRUE(isSupportedMimeTypeWithCodec(MEDIA_MIMETYPE_VIDEO_FLV1, "any"));
    const int32_t encodings[] = {2, 3, 2, 100, 4, 2, 3, 2, 100, 4, 2, 2, 2, 2};
    for (int format = -1; format < 13; ++format)
        EXPECT_EQ(getAudioEncoding(static_cast<AVSampleFormat>(format)), encodings[format + 1]);
}

}  // namespace
}  // namespace orvel
