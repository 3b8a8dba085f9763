// What a file may cost in the plug-in alone, however broken it is: files that are cut and altered,
// and MP4 files of a few KB that claim millions of samples.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>

#include "e2e/Opened.h"
#include "framework/CountingSource.h"
#include "framework/Player.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

namespace {

#ifdef ORVEL_SANITIZED
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

struct Cost {
    bool taken;
    double seconds;    // of the processor
    long residentKiB;  // at most, what the process had before included
};

// A player's whole life with the file: everything read, sought to in every mode, and read again.
bool play(const Bytes& file) {
    host::MemorySource source(file.data(), file.size());
    host::SniffResult sniffed = plugin().sniff(source);
    if (!sniffed.taken()) return false;
    const auto extractor = plugin().create(source, std::move(sniffed));
    if (!extractor) return false;
    host::Player player(*extractor);
    const auto ignore = [](size_t, host::Buffer&) { return true; };
    player.play({}, ignore);
    for (int mode = 0; mode < 4; ++mode) {
        player.play({host::ReadOptions::Seek{1000000, static_cast<host::SeekMode>(mode)}, 10},
                    ignore);
    }
    return true;
}

// In a process of its own; the test fails when that does not end by itself.
Cost costOf(const Bytes* file) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(100);
        _exit(file == nullptr || play(*file) ? 0 : 1);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    const auto seconds = [](const timeval& time) { return time.tv_sec + time.tv_usec / 1e6; };
    return {WEXITSTATUS(status) == 0, seconds(usage.ru_utime) + seconds(usage.ru_stime),
            usage.ru_maxrss};
}

// FFmpeg decodes pictures to learn their format: as large as the file claims, so many KiB of them.
constexpr long kPicturesKiB = 448 << 10;

// Whether the file is taken; it costs at most 5 s, and 64 MiB and eight times its size.
bool takenWithinLimits(const Bytes& file, long picturesKiB = 0) {
    static const Cost idle = costOf(nullptr);
    const Cost cost = costOf(&file);
    EXPECT_LT(cost.seconds, kSanitized ? 50 : 5);
    if (!kSanitized) {
        EXPECT_LT(cost.residentKiB - idle.residentKiB,
                  (64 << 10) + 8 * static_cast<long>(file.size() / 1024) + picturesKiB);
    }
    return cost.taken;
}

// Some bytes changed, most of them where the tables are.
Bytes altered(Bytes bytes, std::minstd_rand& random) {
    constexpr size_t kEnd = 2048;
    constexpr uint8_t kValues[] = {0x00, 0xFF, 0x7F, 0x80, 0x01};
    const size_t end = std::min(kEnd, bytes.size());
    for (int i = 0; i < 8; ++i) {
        const size_t region = random() % 4;
        const size_t at = region == 0   ? random() % bytes.size()
                          : region == 1 ? bytes.size() - 1 - random() % end
                                        : random() % end;
        const size_t kind = random() % 8;
        bytes[at] = kind < 5 ? kValues[kind] : static_cast<uint8_t>(random());
    }
    return bytes;
}

}  // namespace

class Mangled : public ::testing::TestWithParam<MediaFile> {};

INSTANTIATE_TEST_SUITE_P(Limits, Mangled, ::testing::ValuesIn(mediaFiles()),
                         [](const auto& info) { return asTestName(info.param.name); });

// ORVEL_MUTATIONS: how many of each file, where more are wanted than in every run of the tests.
TEST_P(Mangled, endsInTimeAndMemory) {
    const Bytes whole = GetParam().bytes();
    long pictures = 0;
    for (const ExpectedTrack& track : GetParam().tracks)
        if (std::string(track.mime).compare(0, 6, "video/") == 0) pictures = kPicturesKiB;
    std::minstd_rand random(static_cast<unsigned>(whole.size()));
    EXPECT_TRUE(takenWithinLimits(whole, pictures));
    for (size_t percent : {5, 50, 99})
        takenWithinLimits(truncated(whole, whole.size() * percent / 100), pictures);
    const char* wanted = getenv("ORVEL_MUTATIONS");
    const int mutations = wanted != nullptr ? atoi(wanted) : kSanitized ? 2 : 16;
    for (int i = 0; i < mutations; ++i) {
        const Bytes file = altered(whole, random);
        takenWithinLimits(file, pictures);
        if (!HasFailure()) continue;
        const std::string name = ::testing::TempDir() + GetParam().name + ".limits";
        std::ofstream(name, std::ios::binary)
                .write(reinterpret_cast<const char*>(file.data()),
                       static_cast<std::streamsize>(file.size()));
        FAIL() << "over " << name << ", mutation " << i;
    }
}

namespace {

constexpr int kAudio = 1;  // the second track

// Samples of one byte each, all of them in one chunk (ISO/IEC 14496-12, 8.7).
Bytes withSamples(uint32_t count) {
    Bytes file = mediaBytes("mp4_small.mp4");
    const size_t sizes = boxType(file, "stsz", kAudio);
    putBe32(file, sizes + 8, 1);
    putBe32(file, sizes + 12, count);
    putBe32(file, boxType(file, "stsc", kAudio) + 16, count);
    putBe32(file, boxType(file, "stts", kAudio) + 12, count);
    return file;
}

// A track run without a table, of samples as the track has them (8.8.8).
Bytes withTrackRun(const char* name, int nth, uint32_t count) {
    Bytes file = mediaBytes(name);
    const size_t run = boxType(file, "trun", nth);
    constexpr uint32_t kDataOffset = 1;
    putBe32(file, run + 4, kDataOffset);
    putBe32(file, run + 8, count);
    return file;
}

Bytes withoutHeader() {
    Bytes file = mediaBytes("mp4_fragmented.mp4");
    file[boxType(file, "tkhd")] = 'x';
    return file;
}

// Whose first picture looks like a box.
Bytes withPictureLikeRun() {
    Bytes file = mediaBytes("mp4_small.mp4");
    const size_t picture = be32(file, boxType(file, "stco") + 12);
    const Bytes run = {0, 0, 0, 16, 't', 'r', 'u', 'n', 0, 0, 0, 0, 0x7F, 0xFF, 0xFF, 0xFF};
    std::copy(run.begin(), run.end(), file.begin() + static_cast<ptrdiff_t>(picture));
    return file;
}

// Uncompressed sound with so many samples, and so many in each chunk (0: as they are).
Bytes withSound(uint32_t samples, uint32_t inChunk) {
    Bytes file = mediaBytes("mov_pcm_eac3.mov");
    constexpr int kSound = 2;  // the third track
    putBe32(file, boxType(file, "stsz", kSound) + 12, samples);
    if (inChunk != 0) putBe32(file, boxType(file, "stsc", kSound) + 16, inChunk);
    return file;
}

// Pictures of which a list says that they are so many (8.6.1.3), and another that they are groups
// (8.9.2).
Bytes withOffsets(uint32_t count) {
    Bytes file = mediaBytes("mp4_hevc_eac3.mp4");
    const Bytes group = {0,   0,   0, 28, 's', 'b', 'g', 'p', 0, 0, 0, 0, 's', 'y',
                         'n', 'c', 0, 0,  0,   1,   0,   0,   0, 1, 0, 0, 0,   1};
    append(file, {"moov", "trak", "mdia", "minf", "stbl"}, 0, group);
    putBe32(file, boxType(file, "ctts") + 12, count);
    return file;
}

// Metadata of as many keys, all of them missing (QuickTime File Format, metadata item keys).
Bytes withKeys(uint32_t count) {
    Bytes file = mediaBytes("mp4_small.mp4");
    append(file, {"moov", "udta"}, 0, {0, 0, 0, 16, 'k', 'e', 'y', 's', 0, 0, 0, 0, 0, 0, 0, 0});
    putBe32(file, boxType(file, "keys") + 8, count);
    return file;
}

// The whole track again and again (8.6.6).
Bytes withEdits(int count) {
    Bytes file = withSamples(100000);
    const size_t list = boxType(file, "elst", kAudio);
    Bytes edits;
    for (int i = 0; i < count; ++i)
        edits = edits + Bytes(&file[list + 12], &file[list + 24]);
    append(file, {"moov", "trak", "edts", "elst"}, kAudio, edits);
    putBe32(file, list + 8, be32(file, list + 8) + static_cast<uint32_t>(count));
    return file;
}

}  // namespace

TEST(Limits, samplesThatNoByteJustifiesAreNotIndexed) {
    const struct {
        const char* says;
        Bytes file;
        bool taken;
    } cases[] = {
            {"an hour of E-AC-3, cut: more samples than bytes", withSamples(112500), true},
            {"more than the file can hold", withSamples(400000), false},
            {"an index of gigabytes", withSamples(80000000), false},
            {"a run", withTrackRun("mp4_fragmented.mp4", 0, 400000), false},
            {"a run of gigabytes", withTrackRun("mp4_fragmented.mp4", 0, 80000000), false},
            {"a run in a later fragment", withTrackRun("mp4_sidx.mp4", 9, 80000000), false},
            {"an hour of sound, cut: its chunks are few", withSound(158760000, 0), true},
            {"runs beside a track without a header", withoutHeader(), false},
            {"chunks of sound without end", withSound(1000, 0x7FFFFFFF), false},
            {"runs of offsets that groups unroll", withOffsets(300000000), false},
            {"keys of metadata", withKeys(200000000), false},
            {"a picture that looks like a run", withPictureLikeRun(), true},
            {"edits", withEdits(200), true},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.says);
        EXPECT_EQ(takenWithinLimits(one.file), one.taken);
    }
}

TEST(Limits, emptyTagsCostFewReads) {
    Bytes tags;
    while (tags.size() < 3 << 20)
        tags = std::move(tags) + id3Tag(0);
    host::MemorySource bytes(tags.data(), tags.size());
    host::CountingSource source(bytes);
    EXPECT_FALSE(plugin().sniff(source).taken());
    EXPECT_LT(source.counts().calls, 1000u);
}

}  // namespace orvel::test
