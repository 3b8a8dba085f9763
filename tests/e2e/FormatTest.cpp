// What the decoder is told: every entry of tracks of every kind. Expected values were worked out by
// hand, or are fields that libavformat reads from the same bytes here.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include "e2e/FormatText.h"
#include "e2e/Opened.h"
#include "support/Demuxer.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

using namespace android;

namespace {

// The record of libavcodec 58 without its pointer to the extradata, which follow instead. Later
// versions leave these fields at their places.
Bytes codecParameters(const AVCodecParameters& parameters) {
    static_assert(offsetof(AVCodecParameters, extradata) == 16 &&
                  offsetof(AVCodecParameters, seek_preroll) == 136);
    const auto* record = reinterpret_cast<const uint8_t*>(&parameters);
    Bytes blob(record, record + 16);
    blob.insert(blob.end(), record + 24, record + 144);
    blob.insert(blob.end(), parameters.extradata, parameters.extradata + parameters.extradata_size);
    return blob;
}

Bytes ascii(const std::string& text) {
    return {text.begin(), text.end()};
}

// AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1) of LC and 44100 Hz becomes one of LC at 22050 Hz
// with an extension to 44100 Hz.
void makeSbrOfLc(Bytes& file) {
    replace(file, {0x12, 0x08, 0x56, 0xE5, 0x00}, {0x2B, 0x8A, 0x08, 0x00, 0x00});
}
// Frame sizes of STREAMINFO (RFC 9639, 8.2), behind the signature and a block header.
void setFlacFrameSizes(Bytes& file) {
    const Bytes mark = ascii("fLaC");
    std::copy_n(std::begin({1, 2, 3, 4, 5, 6}), 6,
                std::search(file.begin(), file.end(), mark.begin(), mark.end()) + 12);
}
// An ALAC stream whose configuration has 19 bytes, and a delay of 6.5 ms.
void makeAlacOfOpus(Bytes& file) {
    replace(file, ascii("A_OPUS"), ascii("A_ALAC"));
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
    void (*change)(Bytes& file) = nullptr;
};
void PrintTo(const FormatCase& c, std::ostream* out) {
    *out << c.file << " " << c.own;
}

// clang-format off
const FormatCase kCases[] = {
    {"mp4_h264_eac3.mp4", 0, 2000000, kMp4, kLarge,
     "mime=video/avc csd-avc=extradata nal-length-size=4"},
    {"mp4_hevc_eac3.mp4", 0, 2000000, kMp4, kLarge,
     "mime=video/hevc csd-hevc=extradata nal-length-size=4"},
    {"mkv_h264_eac3.mkv", 0, kOfContainer, kMkv, kLarge,
     "mime=video/avc csd-avc=extradata nal-length-size=4"},
    {"mkv_hevc_dts.mkv", 0, kOfContainer, kMkv, kLarge,
     "mime=video/hevc csd-hevc=extradata nal-length-size=4"},
    {"mkv_vp9_eac3.mkv", 0, kOfContainer, kMkv, kSmall, "mime=video/x-vnd.on2.vp9 frame-rate=25"},
    {"avi_h264_ac3.avi", 0, 2000000, kAvi, kLarge,
     "mime=video/avc raw-codec-specific-data=extradata"},
    {"flv_h264_aac.flv", 0, kOfContainer, kFlv, kLarge,
     "mime=video/avc raw-codec-specific-data=extradata"},
    {"mp4_rates.mp4", 0, 1001000, kMp4, kSmall,  // 30000/1001
     "mime=video/mp4v-es frame-rate=30 raw-codec-specific-data=extradata use-arbitrary-mode=1"},
    {"mp4_rates.mp4", 1, 1001000, kMp4, kSmall,  // 24000/1001
     "mime=video/mp4v-es frame-rate=24 raw-codec-specific-data=extradata use-arbitrary-mode=1"},
    {"rm_rv20_ac3.rm", 0, 2000000, " file-format=video/vnd.rn-realmedia", kLarge,
     "mime=video/vnd.rn-realvideo raw-codec-specific-data=extradata thumbnail-time=0L"},
    {"mp3_cbr.mp3", 0, kOfContainer, " file-format=audio/mpeg", k44100, "mime=audio/mpeg"},
    {"flv_h264_aac.flv", 1, kOfContainer, kFlv, k44100, "mime=audio/mp4a-latm bits-per-sample=16 "
     "aac-codec-specific-data=120856e500 aac-profile=2 aac-format-adif=2"},
    // The rate of the core. It is mono, and may have parametric stereo: two channels.
    {"mov_sounds.mov", 1, 1023220, kMov, " sample-rate=22050 channel-count=2",
     "mime=audio/mp4a-latm bits-per-sample=16 "
     "aac-codec-specific-data=2b8a080000 aac-profile=2 aac-format-adif=2", makeSbrOfLc},
    // 4096 samples; 16 bits, 40, 10, 14, 1 channel; run 0; 8196 bytes; 705600 bit/s; 44100 Hz.
    {"mov_sounds.mov", 2, 1000000, kMov, k44100, "mime=audio/alac bits-per-sample=16 "
     "raw-codec-specific-data=001000000010280a0e0100000420000040c40a0044ac0000"},
    {"mkv_sounds.mkv", 1, kOfContainer, kMkv, " sample-rate=48000 channel-count=2",
     "mime=audio/alac bits-per-sample=16 language=fre encoder-delay=312 encoder-padding=0",
     makeAlacOfOpus},
    {"flac.flac", 0, 2000000, " file-format=audio/flac", k44100, "mime=audio/flac "
     "min-block-size=4608 max-block-size=4608 min-frame-size=66051 max-frame-size=263430",
     setFlacFrameSizes},
    // Signed 16 bits little- and big-endian, 24 bits the same, signed and unsigned 8 bits.
    {"wav_s16.wav", 0, 10000000, kWav, k8000, kPcm16},
    {"mov_sounds.mov", 3, 1000000, kMov, k44100, kPcm16},
    {"mov_sounds.mov", 4, 1000000, kMov, k44100, kPcm24},
    {"aiff_s24.aiff", 0, 10000000, " file-format=audio/x-aiff", k8000, kPcm24},
    {"mov_sounds.mov", 6, 1000000, kMov, k44100, kPcm16},
    {"wav_u8.wav", 0, 10000000, kWav, k8000, kPcm16},
};
// clang-format on

}  // namespace

class TrackFormat : public ::testing::TestWithParam<FormatCase> {};
INSTANTIATE_TEST_SUITE_P(Media, TrackFormat, ::testing::ValuesIn(kCases), [](const auto& info) {
    return asTestName(info.param.file) + "_" + std::to_string(info.index);
});

TEST_P(TrackFormat, holdsJustItsEntries) {
    const FormatCase& c = GetParam();
    Bytes bytes = mediaBytes(c.file);
    if (c.change) c.change(bytes);
    host::MemorySource source(bytes);
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
        const std::string rate = std::to_string(parameters.bit_rate);
        if (parameters.bit_rate != 0) expected += " bitrate=" + rate + " max-bitrate=" + rate;
    }
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    host::Format format;
    ASSERT_EQ(extractor->trackFormat(c.track, host::Extractor::kIncludeExtensiveMetaData, &format),
              OK);
    EXPECT_EQ(entriesOf(format, named), entriesOf(expected));
}

TEST(TrackFormat, streamOf32BitPcmBecomesNoTrack) {
    host::MemorySource source(mediaBytes("mov_sounds.mov"));
    ASSERT_EQ(Demuxer(source, "mov").context()->streams[8]->codecpar->codec_id,
              AV_CODEC_ID_PCM_S32LE);
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    EXPECT_EQ(extractor->countTracks(), 8u);
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
