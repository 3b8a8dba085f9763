// What a file may cost, however broken it is: orvelprobe over files that are cut and altered, and
// over MP4 files of a few KB that claim millions of samples.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>

#include "e2e/MediaTable.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

using nlohmann::json;

namespace {

#ifdef ORVEL_SANITIZED
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
// A sanitizer's memory is its own, and an emulator sets no limit for the program that it runs.
bool memoryIsLimited() {
    return !kSanitized && getenv("ORVEL_EMULATED") == nullptr;
}

constexpr double kMaxSeconds = 10;  // of one file, of processor time: others may be busy, too
constexpr long kMaxResidentKiB = 512 << 10;

// A folder of files for one run of the command.
class Files {
  public:
    Files() {
        std::string name = ::testing::TempDir() + "limits-XXXXXX";
        mFolder = mkdtemp(name.data());
    }
    ~Files() { std::filesystem::remove_all(mFolder); }

    void add(const std::string& name, const Bytes& bytes) {
        std::ofstream file(mFolder / name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        ++mCount;
    }
    // Reads them all; every one comes to an end of its own, within the limits. The lines by the
    // files' names.
    std::map<std::string, json> probe() const {
        const std::string output = mFolder.string() + ".out";
        const pid_t pid = fork();
        if (pid == 0) {
            dup2(open(output.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), STDOUT_FILENO);
            dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
            execl(ORVEL_PROBE_PATH, ORVEL_PROBE_PATH, "--plugin", ORVEL_PLUGIN_PATH, "--json",
                  "--read", "--timeout", "100", mFolder.c_str(), nullptr);
            _exit(127);
        }
        int status = 0;
        rusage usage{};  // of the command and the processes that it made: the largest of them
        wait4(pid, &status, 0, &usage);
        EXPECT_TRUE(WIFEXITED(status));
        const auto seconds = [](const timeval& time) { return time.tv_sec + time.tv_usec / 1e6; };
        EXPECT_LT(seconds(usage.ru_utime) + seconds(usage.ru_stime), kMaxSeconds);
        if (memoryIsLimited()) {
            EXPECT_LT(usage.ru_maxrss, kMaxResidentKiB);
        }

        std::map<std::string, json> lines;
        std::ifstream text(output);
        for (std::string line; std::getline(text, line);) {
            json object = json::parse(line);
            if (object.contains("error")) {
                for (const char* ending : {"crashed", "timed out", "ended by itself"})
                    EXPECT_EQ(object["error"].get<std::string>().find(ending), std::string::npos)
                            << line;
            }
            lines[std::filesystem::path(object["file"].get<std::string>()).filename()] = object;
        }
        std::filesystem::remove(output);
        EXPECT_EQ(lines.size(), mCount);
        return lines;
    }

  private:
    std::filesystem::path mFolder;
    size_t mCount = 0;
};

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

TEST_P(Mangled, endsInTimeAndMemory) {
    const Bytes whole = GetParam().bytes();
    std::minstd_rand random(static_cast<unsigned>(whole.size()));
    Files files;
    const int variants = kSanitized ? 2 : 16;
    for (int i = 0; i < variants; ++i)
        files.add("altered" + std::to_string(i), altered(whole, random));
    for (int percent : {5, 50, 99})
        files.add("cut" + std::to_string(percent), truncated(whole, whole.size() * percent / 100));
    files.add("whole", whole);
    EXPECT_EQ(files.probe()["whole"]["taken"], true);
}

namespace {

// Samples of one byte each, all of them in one chunk (ISO/IEC 14496-12, 8.7).
Bytes withSamples(uint32_t count) {
    Bytes file = mediaBytes("mp4_small.mp4");
    constexpr int kAudio = 1;
    const size_t sizes = boxType(file, "stsz", kAudio);
    putBe32(file, sizes + 8, 1);
    putBe32(file, sizes + 12, count);
    putBe32(file, boxType(file, "stsc", kAudio) + 16, count);
    putBe32(file, boxType(file, "stts", kAudio) + 12, count);
    return file;
}

// A track run without a table, of samples as the track has them (8.8.8).
Bytes withTrackRun(uint32_t count) {
    Bytes file = mediaBytes("mp4_fragmented.mp4");
    const size_t run = boxType(file, "trun");
    constexpr uint32_t kDataOffset = 1;
    putBe32(file, run + 4, kDataOffset);
    putBe32(file, run + 8, count);
    return file;
}

}  // namespace

// More samples than the file has bytes: declined once the index is there.
TEST(Limits, fileWithMoreSamplesThanBytesIsDeclined) {
    Files files;
    files.add("samples", withSamples(300000));
    files.add("run", withTrackRun(300000));
    for (const auto& [name, line] : files.probe())
        EXPECT_EQ(line["taken"], false) << name;
}

// An index of gigabytes, which FFmpeg is refused.
TEST(Limits, indexOfGigabytesIsNotBuilt) {
    if (!memoryIsLimited()) GTEST_SKIP() << "no limit under a sanitizer or an emulator";
    Files files;
    files.add("samples", withSamples(80000000));
    files.add("run", withTrackRun(80000000));
    files.probe();
}

}  // namespace orvel::test
