#include "e2e/Opened.h"

#include <cutils/properties.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/MediaDefs.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

namespace orvel::test {

namespace {

constexpr char kMaskProperty[] = "mm.enable.orvel_parser";
constexpr char kEverything[] = "32767";

constexpr char kThreads[] = "/proc/self/task";
constexpr char kDescriptors[] = "/proc/self/fd";

size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

// The threads of a process that has loaded the plug-in and has had a thread before: the thread
// sanitizer starts one of its own beside the first.
size_t settledThreads() {
    plugin();
    std::filesystem::path first;
    std::thread([&] { first = std::string(kThreads) + "/" + std::to_string(gettid()); }).join();
    while (std::filesystem::exists(first))
        std::this_thread::yield();
    return entriesOf(kThreads);
}

}  // namespace

const host::Plugin& plugin() {
    static const host::Plugin* const loaded = [] {
        property_set(kMaskProperty, kEverything);
        return new host::Plugin(ORVEL_PLUGIN_PATH);
    }();
    return *loaded;
}

EnabledContainers::EnabledContainers(const std::string& mask) {
    plugin();
    property_set(kMaskProperty, mask.c_str());
}
EnabledContainers::~EnabledContainers() {
    property_set(kMaskProperty, kEverything);
}

std::optional<host::Extractor> open(host::DataSource& source) {
    host::SniffResult result = plugin().sniff(source);
    EXPECT_TRUE(result.taken());
    if (!result.taken()) return std::nullopt;
    return plugin().create(source, std::move(result));
}

std::optional<host::Extractor> openSniffedCalmly(SwitchSource& source) {
    host::SniffResult result = plugin().sniff(source);
    EXPECT_TRUE(result.taken());
    if (!result.taken()) return std::nullopt;
    source.switchOver();
    return plugin().create(source, std::move(result));
}

StartedFile::StartedFile(const Bytes& bytes, const std::string& demuxer, size_t maxBufferSize)
    : source(bytes), expected(Oracle::read(source, demuxer).streams.at(0).samples) {
    group.setMaxBufferSize(maxBufferSize);
    extractor = open(source);
    track = extractor.value().track(0);
    EXPECT_EQ(track.value().start(group), android::OK);
}

Sample asSample(const host::Buffer& buffer) {
    EXPECT_TRUE(buffer.timeUs().has_value());
    return {buffer.timeUs().value_or(INT64_MIN),
            buffer.isSync().value_or(false),
            {buffer.data(), buffer.data() + buffer.size()}};
}

std::vector<TrackRead> readTracks(const host::Extractor& extractor, std::vector<size_t> tracks) {
    std::vector<TrackRead> reads(tracks.size());
    host::Player player(extractor, tracks);
    const auto results = player.play({}, [&](size_t index, host::Buffer& buffer) {
        const auto at = std::find(tracks.begin(), tracks.end(), index) - tracks.begin();
        reads[at].samples.push_back(asSample(buffer));
        return true;
    });
    for (size_t i = 0; i < reads.size(); ++i) {
        reads[i].track = tracks[i];
        reads[i].end = results[i].status;
        EXPECT_EQ(player.group(i).outstanding(), 0u);
    }
    return reads;
}

void expectReturns(std::future<void>& work) {
    ASSERT_EQ(work.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    work.get();
}

TrackRead readToEnd(host::Track& track) {
    TrackRead result;
    for (;;) {
        host::ReadResult read = track.read();
        result.end = read.status;
        if (read.status != android::OK) return result;
        result.samples.push_back(asSample(read.buffer));
    }
}

std::vector<size_t> playedTracks(const MediaFile& file) {
    std::vector<size_t> tracks;
    for (size_t i = 0; i < file.tracks.size(); ++i) {
        if (std::strcmp(file.tracks[i].mime, android::MEDIA_MIMETYPE_TEXT_3GPP) != 0) {
            tracks.push_back(i);
        }
    }
    return tracks;
}

Oracle readOracle(host::DataSource& source, const MediaFile& file,
                  const std::vector<size_t>& tracks) {
    return Oracle::read(source, file.demuxer, [&](const AVStream& stream) {
        return std::any_of(tracks.begin(), tracks.end(),
                           [&](size_t track) { return file.tracks[track].stream == stream.index; });
    });
}

::testing::AssertionResult sameSamples(const std::vector<Sample>& actual,
                                       const std::vector<Sample>& expected) {
    for (size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) {
        if (actual[i] == expected[i]) continue;
        return ::testing::AssertionFailure() << "sample " << i << " is " << describe(actual[i])
                                             << ", expected " << describe(expected[i]);
    }
    if (actual.size() == expected.size()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << actual.size() << " samples, expected " << expected.size();
}

void expectOracle(const std::vector<TrackRead>& reads, const MediaFile& file,
                  const Oracle& oracle) {
    for (const TrackRead& read : reads) {
        const size_t stream = static_cast<size_t>(file.tracks[read.track].stream);
        ASSERT_LT(stream, oracle.streams.size());
        EXPECT_TRUE(sameSamples(read.samples, oracle.streams[stream].samples))
                << file.name << ", track " << read.track;
        EXPECT_EQ(read.end, oracle.end) << file.name << ", track " << read.track;
    }
}

ResourceCheck::ResourceCheck()
    : mThreads(settledThreads()), mDescriptors(entriesOf(kDescriptors)) {}

ResourceCheck::~ResourceCheck() {
    // A looper whose last reference went on its own thread ends by itself, a moment later.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (entriesOf(kThreads) > mThreads && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_LE(entriesOf(kThreads), mThreads);
    EXPECT_EQ(entriesOf(kDescriptors), mDescriptors);
}

}  // namespace orvel::test
