// Where seeks land: against a full read of the same file, and against plain libavformat.

#include <gtest/gtest.h>

#include <array>

#include "e2e/SeekFixture.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

using host::SeekMode;

namespace {

constexpr SeekMode kModes[] = {SeekMode::PreviousSync, SeekMode::NextSync, SeekMode::ClosestSync,
                               SeekMode::Closest};
constexpr size_t kModeCount = std::size(kModes);
using PerMode = std::array<int, kModeCount>;

/** Marks the key frames of the first track but its first as CRA pictures: ISO/IEC 14496-12, 8.9,
 * grouping type 'sync' of ISO/IEC 14496-15. */
Bytes withSyncGroups(const std::string& name) {
    Bytes file = mediaBytes(name);
    const auto put = [](Bytes& bytes, std::initializer_list<uint32_t> words) {
        for (uint32_t word : words) {
            bytes.resize(bytes.size() + 4);
            putBe32(bytes, bytes.size() - 4, word);
        }
    };
    constexpr uint32_t kSync = 0x73796e63, kSgpd = 0x73677064, kSbgp = 0x73626770;
    const size_t stss = boxType(file, "stss");
    const uint32_t keys = be32(file, stss + 8);
    Bytes groups;
    put(groups, {25, kSgpd, 0x01000000, kSync, 1, 1});
    groups.push_back(21);  // the NAL unit type
    put(groups, {20 + 16 * (keys - 1), kSbgp, 0, kSync, 2 * (keys - 1)});
    for (uint32_t key = 1, last = 0; key < keys; ++key) {
        const uint32_t sample = be32(file, stss + 12 + 4 * key);
        put(groups, {sample - last - 1, 0, 1, 1});
        last = sample;
    }
    const size_t stbl = boxType(file, "stbl");
    const size_t end = stbl - 4 + be32(file, stbl - 4);
    for (const char* type : {"moov", "trak", "mdia", "minf", "stbl"}) {
        const size_t size = boxType(file, type) - 4;
        putBe32(file, size, be32(file, size) + static_cast<uint32_t>(groups.size()));
    }
    file.insert(file.begin() + static_cast<ptrdiff_t>(end), groups.begin(), groups.end());
    return file;
}

struct SeekFile {
    const char* name;
    const char* demuxer;
    // How many seeks, by mode, do not land where the full read says, of an extractor that has just
    // been opened and of one that has read the file to its end.
    PerMode missesFresh;
    PerMode missesRead;
    Bytes (*make)(const std::string& name) = mediaBytes;
};
void PrintTo(const SeekFile& file, std::ostream* out) {
    *out << file.name;
}

// clang-format off
const SeekFile kFiles[] = {
        {"mp4_no_b.mp4",          "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mp4_h264_eac3.mp4",     "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mp4_open_gop.mp4",      "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mp4_long_gop.mp4",      "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mp4_hevc_eac3.mp4",     "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mp4_hevc_eac3.mp4",     "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}, withSyncGroups},
        {"mp4_negative_cts.mp4",  "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mp4_late_audio.mp4",    "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mp4_fragmented.mp4",    "mov",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mp4_sidx.mp4",          "mov",       {6, 23, 0, 6},    {0, 0, 0, 0}},
        {"mkv_front_cues.mkv",    "matroska",  {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"mkv_h264_eac3.mkv",     "matroska",  {0, 0, 8, 0},     {0, 0, 0, 0}},
        {"mkv_no_cues.mkv",       "matroska",  {0, 0, 8, 0},     {0, 0, 0, 0}},
        {"avi_mpeg4_mp3.avi",     "avi",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"avi_h264_ac3.avi",      "avi",       {0, 0, 0, 0},     {0, 0, 0, 0}},
        {"flv_h264_aac.flv",      "flv",       {13, 28, 6, 13},  {13, 28, 6, 13}},
        {"flv_flv1_mp3.flv",      "flv",       {0, 0, 2, 0},     {0, 0, 0, 0}},
        {"mp3_cbr.mp3",           "mp3",       {0, 0, 12, 0},    {0, 0, 0, 0}},
        {"mp3_vbr.mp3",           "mp3",       {0, 0, 8, 0},     {0, 0, 0, 0}},
        {"flac.flac",             "flac",      {1, 1, 11, 1},    {1, 1, 1, 1}},
        {"wav_s16.wav",           "wav",       {1, 1, 1, 1},     {1, 1, 1, 1}},
        {"eac3.eac3",             "eac3",      {1, 1, 8, 1},     {1, 1, 1, 1}},
        {"asf_divx3_mp3.asf",     "asf",       {18, 11, 24, 18}, {18, 7, 12, 18}},
        {"rm_rv20_ac3.rm",        "rm",        {0, 1, 8, 0},     {1, 1, 1, 1}},
};
// clang-format on

// The row as the version of the library makes it that is loaded.
SeekFile withVersion(SeekFile file) {
    const unsigned major = avformat_version() >> 16;
    const std::string name = file.name;
    // FFmpeg 4.3 lists all fragments when it opens the file.
    if (major == 58 && name == "mp4_sidx.mp4") file.missesFresh = {0, 0, 0, 0};
    // FFmpeg 7.1 goes a frame too far when it seeks forward in FLAC.
    if (major == 61 && name == "flac.flac") {
        file.missesFresh = {3, 2, 11, 3};
        file.missesRead = {1, 6, 5, 1};
    }
    return file;
}

std::vector<int64_t> interestingTimes(const SeekOracle& oracle) {
    const auto& frames = oracle.frames(0);
    int64_t duration = oracle.tracks()[0].durationUs;
    if (duration < 1) duration = oracle.timeUs(0, frames.back());
    std::vector<int64_t> times = {-1000000,     -1,           0,
                                  duration / 4, duration / 2, duration / 4 * 3,
                                  duration,     duration + 1, duration + 1000000,
                                  INT64_MAX};
    std::vector<int64_t> keys;
    for (const SeekOracle::Frame& frame : frames)
        if (frame.key) keys.push_back(oracle.timeUs(0, frame));
    const size_t step = std::max<size_t>(keys.size() / 5, 1);
    for (size_t i = 0; i < keys.size(); i += step) {
        // The second is half-way between two frames of 25 a second.
        for (int64_t offset : {-40000, -20000, -1, 0, 1})
            times.push_back(keys[i] + offset);
    }
    return times;
}

}  // namespace

class Seeking : public ::testing::TestWithParam<SeekFile> {};

INSTANTIATE_TEST_SUITE_P(Media, Seeking, ::testing::ValuesIn(kFiles), [](const auto& info) {
    return asTestName(info.param.name) + (info.param.make == withSyncGroups ? "_sync_groups" : "");
});

TEST_P(Seeking, landsWhereItShould) {
    const SeekFile file = withVersion(GetParam());
    const Bytes bytes = file.make(file.name);
    const bool craKeys = file.make == withSyncGroups;
    host::MemorySource source(bytes);
    SeekFixture played(source, bytes, file.demuxer, craKeys);
    played.readToTheEnd();
    PerMode fresh{}, read{};
    const auto count = [&played](PerMode* misses, int64_t timeUs, SeekMode mode,
                                 const std::optional<Sample>& sample) {
        const int64_t duration = played.oracle().tracks()[0].durationUs;
        if (duration >= 1 && timeUs > duration) return;  // refused
        if (sample && played.oracle().isRight(0, timeUs, mode, *sample)) return;
        ++(*misses)[static_cast<size_t>(mode)];
    };
    for (int64_t timeUs : interestingTimes(played.oracle())) {
        for (SeekMode mode : kModes) {
            SCOPED_TRACE("to " + std::to_string(timeUs) + " us, mode " +
                         std::to_string(static_cast<int>(mode)));
            {
                SCOPED_TRACE("after a full read");
                const auto sample = played.seek(timeUs, mode);
                count(&read, timeUs, mode, sample);
                played.readToTheEnd();
            }
            SCOPED_TRACE("first thing");
            SeekFixture opened(source, bytes, file.demuxer, craKeys);
            // The second seek of the last mode comes at a moment of the read-ahead's choosing.
            const size_t compared = mode == SeekMode::Closest ? 1 : SIZE_MAX;
            count(&fresh, timeUs, mode, opened.seek(timeUs, mode, compared));
        }
    }
    EXPECT_EQ(fresh, file.missesFresh);
    EXPECT_EQ(read, file.missesRead);
}

}  // namespace orvel::test
