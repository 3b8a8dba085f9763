// What the decoder is told: every entry of tracks of every kind. Expected values were worked out by
// hand, or are fields that libavformat reads from the same bytes here.

#include <gtest/gtest.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include <algorithm>

#include "e2e/FormatText.h"
#include "e2e/Opened.h"
#include "ffmpeg/FFmpegCompat.h"
#include "support/Demuxer.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

using namespace android;

namespace {

// The record of libavcodec 58 without its pointer to the extradata, which follow instead. Later
// versions keep these runs of fields, with others between them.
Bytes codecParameters(const AVCodecParameters& parameters) {
    Bytes blob;
    const auto run = [&blob](const auto& first, const auto& last) {
        blob.insert(blob.end(), reinterpret_cast<const uint8_t*>(&first),
                    reinterpret_cast<const uint8_t*>(&last + 1));
    };
    const int32_t gap = 0, channels = compat::channelCount(parameters);
    const uint64_t layout = compat::channelLayout(parameters);
    run(parameters.codec_type, parameters.codec_tag);
    run(gap, gap);
    run(parameters.extradata_size, parameters.extradata_size);
    run(parameters.format, parameters.sample_aspect_ratio);
    run(parameters.field_order, parameters.video_delay);
    run(gap, gap);
    run(layout, layout);
    run(channels, channels);
    run(parameters.sample_rate, parameters.seek_preroll);
    run(gap, gap);
    blob.insert(blob.end(), parameters.extradata, parameters.extradata + parameters.extradata_size);
    return blob;
}

Bytes ascii(const std::string& text) {
    return {text.begin(), text.end()};
}

constexpr int64_t kOfContainer = -1;
const char kLarge[] = " width=128 height=96 max-input-size=18432 frame-rate=25";
const char kSmall[] = " width=64 height=48 max-input-size=4608";
const char k8000[] = " sample-rate=8000 channel-count=1";
const char k44100[] = " sample-rate=44100 channel-count=1";
const char kPcm16[] = "mime=audio/raw bits-per-sample=16 pcm-encoding=2";
const char kPcm24[] = "mime=audio/raw bits-per-sample=24 pcm-encoding=100";
const char kMp4[] = " file-format=video/mp4 language=und";
const char kMov[] = " file-format=video/mp4";
const char kMkv[] = " file-format=video/x-matroska";
const char kAvi[] = " file-format=video/avi";
const char kFlv[] = " file-format=video/x-flv";
const char kWav[] = " file-format=audio/x-wav";

struct FormatCase {
    const char* file;
    size_t track;  // and stream
    int64_t durationUs;
    const char* container;
    const char* kind;
    const char* own;  // besides what all audio or all video tracks have
};
// clang-format off
const FormatCase kCases[] = {
    {"mp4_h264_eac3.mp4", 0, 2000000, kMp4, kLarge,
     "mime=video/avc csd-avc=extradata nal-length-size=4"},
    {"mkv_vp9_eac3.mkv", 0, kOfContainer, kMkv, kSmall, "mime=video/x-vnd.on2.vp9 frame-rate=25"},
    {"avi_h264_ac3.avi", 0, 2000000, kAvi, kLarge,
     "mime=video/avc raw-codec-specific-data=extradata"},
    {"mp4_rates.mp4", 0, 1001000, kMp4, kSmall,  // 30000/1001
     "mime=video/mp4v-es frame-rate=30 raw-codec-specific-data=extradata use-arbitrary-mode=1"},
    {"rm_rv20_ac3.rm", 0, 2000000, " file-format=video/vnd.rn-realmedia", kLarge,
     "mime=video/vnd.rn-realvideo raw-codec-specific-data=extradata thumbnail-time=0L"},
    {"mp3_cbr.mp3", 0, kOfContainer, " file-format=audio/mpeg", k44100, "mime=audio/mpeg"},
    {"flv_h264_aac.flv", 1, kOfContainer, kFlv, k44100, "mime=audio/mp4a-latm bits-per-sample=16 "
     "aac-codec-specific-data=120856e500 aac-profile=2 aac-format-adif=2"},
    // 4096 samples; 16 bits, 40, 10, 14, 1 channel; run 0; 8196 bytes; 705600 bit/s; 44100 Hz.
    {"mov_sounds.mov", 2, 1000000, kMov, k44100, "mime=audio/alac bits-per-sample=16 "
     "raw-codec-specific-data=001000000010280a0e0100000420000040c40a0044ac0000"},
    // Signed 16 bits little- and big-endian, 24 bits, unsigned 8 bits.
    {"wav_s16.wav", 0, 10000000, kWav, k8000, kPcm16},
    {"mov_sounds.mov", 3, 1000000, kMov, k44100, kPcm16},
    {"aiff_s24.aiff", 0, 10000000, " file-format=audio/x-aiff", k8000, kPcm24},
    {"wav_u8.wav", 0, 10000000, kWav, k8000, kPcm16},
};
// clang-format on

}  // namespace

TEST(TrackFormat, holdsJustItsEntries) {
    for (const FormatCase& c : kCases) {
        SCOPED_TRACE(std::string(c.file) + " " + c.own);
        host::MemorySource source(mediaBytes(c.file));
        const Demuxer demuxer(source, demuxerOf(c.file));
        ASSERT_TRUE(demuxer.isOpen());
        const AVCodecParameters& parameters = *demuxer.context()->streams[c.track]->codecpar;
        const int64_t duration =
                c.durationUs == kOfContainer ? demuxer.context()->duration : c.durationUs;
        std::string expected = c.own + std::string(c.container) + c.kind +
                               " durationUs=" + std::to_string(duration) + "L";
        if (expected.find("thumbnail-time") == std::string::npos) {
            expected += " thumbnail-time=" + std::to_string(duration / 4) + "L";
        }
        NamedBytes named = {{"codecpar", codecParameters(parameters)}};
        if (parameters.codec_type == AVMEDIA_TYPE_VIDEO) {
            expected += " orvel-videoCSD=codecpar";
            named.push_back({"extradata", {named[0].second.begin() + 136, named[0].second.end()}});
        } else {
            expected += " orvel-audioCSD=codecpar max-input-size=262144";
            if (expected.find("channel-count") == std::string::npos) {
                // The decoder refuses its configuration; libavformat 61 then knows no channels.
                expected += " channel-count=" + std::to_string(compat::channelCount(parameters));
            }
            const std::string rate = std::to_string(parameters.bit_rate);
            if (parameters.bit_rate != 0) expected += " bitrate=" + rate + " max-bitrate=" + rate;
        }
        const auto extractor = open(source);
        ASSERT_TRUE(extractor);
        host::Format format;
        ASSERT_EQ(extractor->trackFormat(c.track, host::Extractor::kIncludeExtensiveMetaData,
                                         &format),
                  OK);
        EXPECT_EQ(entriesOf(format, named), entriesOf(expected));
    }
}

// The rows of the codec table that no file at hand has: another four-character code or format tag
// says another codec.
TEST(CodecRow, givesItsMimeType) {
    const auto code = [](const char* file, const char* from, const char* to) {
        Bytes bytes = mediaBytes(file);
        replace(bytes, ascii(from), ascii(to));
        if (file[0] == 'a') replace(bytes, ascii(from), ascii(to));  // AVI says it twice
        return bytes;
    };
    const auto avi = [&](const char* to) { return code("avi_mpeg4_pcm.avi", "FMP4", to); };
    const auto rm = [&](const char* to) { return code("rm_rv20_ac3.rm", "RV20", to); };
    const auto wav = [](uint8_t tag) {  // WAVEFORMATEX
        Bytes bytes = mediaBytes("wav_s16.wav");
        bytes[20] = tag;
        return bytes;
    };
    Bytes cook = code("rm_rv20_ac3.rm", "dnet", "cook");
    const Bytes header = {'.', 'r', 'a', 0xFD};
    const auto at = std::search(cook.begin(), cook.end(), header.begin(), header.end());
    std::copy(at + 42, at + 44, at + 44);  // needs a size of sub-packets: that of packets
    const struct {
        const char* name;
        size_t track;
        Bytes bytes;
        const char* mime;
    } rows[] = {{"VP8", 0, avi("VP80"), MEDIA_MIMETYPE_VIDEO_VP8},
                {"H.263", 0, avi("H263"), MEDIA_MIMETYPE_VIDEO_H263},
                {"H.263 of Intel", 0, avi("I263"), MEDIA_MIMETYPE_VIDEO_H263},
                {"H.263+", 0, avi("U263"), MEDIA_MIMETYPE_VIDEO_H263},
                {"MPEG-4 of Microsoft, 1", 0, avi("MPG4"), MEDIA_MIMETYPE_VIDEO_DIVX3},
                {"MPEG-4 of Microsoft, 2", 0, avi("MP42"), MEDIA_MIMETYPE_VIDEO_DIVX3},
                {"MPEG-2", 0, avi("mpg2"), MEDIA_MIMETYPE_VIDEO_MPEG2},
                {"RealVideo 3", 0, rm("RV30"), MEDIA_MIMETYPE_VIDEO_REAL},
                {"RealVideo 4", 0, rm("RV40"), MEDIA_MIMETYPE_VIDEO_REAL},
                {"RealAudio", 1, cook, MEDIA_MIMETYPE_AUDIO_COOK},
                {"AMR", 0, wav(0x57), MEDIA_MIMETYPE_AUDIO_AMR_NB},
                {"AMR, wide band", 0, wav(0x58), MEDIA_MIMETYPE_AUDIO_AMR_WB},
                {"VP7", 0, avi("VP70"), MEDIA_MIMETYPE_AUDIO_RAW}};
    for (const auto& row : rows) {
        host::MemorySource source(row.bytes);
        const auto extractor = open(source);
        ASSERT_TRUE(extractor);
        host::Format format;
        extractor->trackFormat(row.track, 0, &format);
        EXPECT_EQ(format.string("mime").value_or(""), row.mime) << row.name;
    }
}

// ISO/IEC 14496-12, 8.3.2: a, b, c, d are the first two of three columns and rows.
TEST(TrackFormat, rotationIsThatOfTheTrackHeader) {
    const struct {
        int a, b, c, d;
        std::optional<int32_t> degrees;
    } cases[] = {{1, 0, 0, 1, std::nullopt}, {0, 1, -1, 0, 90},  {-1, 0, 0, -1, 180},
                 {0, -1, 1, 0, 270},         {-1, 0, 0, 1, 180}, {2, 0, 0, 2, 0}};
    for (const auto& c : cases) {
        Bytes bytes = mediaBytes("mp4_small.mp4");
        const size_t matrix = boxType(bytes, "tkhd") + 44;
        for (auto [at, value] : {std::pair(0, c.a), {4, c.b}, {12, c.c}, {16, c.d}})
            putBe32(bytes, matrix + at, static_cast<uint32_t>(value) << 16);
        host::MemorySource source(bytes);
        const auto extractor = open(source);
        ASSERT_TRUE(extractor);
        host::Format format;
        extractor->trackFormat(0, 0, &format);
        EXPECT_EQ(format.int32("rotation-degrees"), c.degrees) << c.a << c.b << c.c << c.d;
    }
}

// ISO/IEC 14496-12, 8.5.2: entries stand behind version, flags and their count.
TEST(TrackFormat, timedTextHasEverySampleDescriptionWhole) {
    const Bytes one = mediaBytes("mp4_h264_eac3.mp4");
    const size_t entry = boxType(one, "stsd", 2) + 12;
    const Bytes first(one.begin() + entry, one.begin() + entry + be32(one, entry));
    // Another font, and the bit rate's box (20 bytes) is missing.
    Bytes second = truncated(first, first.size() - 20);
    putBe32(second, 0, static_cast<uint32_t>(second.size()));
    replace(second, ascii("Arial"), ascii("Serif"));
    Bytes two = one;
    addSampleDescription(two, 2, second);
    for (const auto& [file, descriptions] : {std::pair(one, first), {two, first + second}}) {
        host::MemorySource source(file);
        const auto extractor = open(source);
        ASSERT_TRUE(extractor);
        ASSERT_EQ(extractor->countTracks(), 3u);
        host::Format format;
        ASSERT_EQ(extractor->trackFormat(2, 0, &format), OK);
        EXPECT_EQ(entriesOf(format, {{"descriptions", descriptions}}),
                  entriesOf("mime=text/3gpp-tt file-format=video/mp4 language=eng "
                            "durationUs=1900000L max-input-size=262144 "
                            "text-format-data=descriptions"));
    }
}

}  // namespace orvel::test
