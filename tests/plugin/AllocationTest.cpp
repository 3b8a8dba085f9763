// Every allocation of the plug-in's own that can fail does fail once: nothing crashes, and what is
// delivered is what would have been. The linker diverts the plug-in's calls to the wrappers below;
// those of the libraries stay as they are.
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <atomic>
#include <new>
#include <optional>
#include <utility>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

#include "framework/MemorySource.h"
#include "framework/Player.h"
#include "framework/Plugin.h"
#include "plugin/LogCapture.h"
#include "support/SyntheticFiles.h"

extern "C" android::ExtractorDef GETEXTRACTORDEF();

namespace {

// Calls count from 1 over all threads; 0: none fails.
std::atomic<int> gCalls{0};
std::atomic<int> gFailing{0};

bool fails() {
    return ++gCalls == gFailing;
}

}  // namespace

// A wrapper of a function, which fails in the way of that function.
#define WRAP(result, function, parameters, arguments, failure)  \
    extern "C" result __real_##function parameters;             \
    extern "C" result __wrap_##function parameters {            \
        return fails() ? failure : __real_##function arguments; \
    }

// clang-format off
WRAP(void*, av_malloc, (size_t size), (size), nullptr)
WRAP(AVPacket*, av_packet_alloc, (), (), nullptr)
WRAP(AVPacket*, av_packet_clone, (const AVPacket* packet), (packet), nullptr)
WRAP(AVFormatContext*, avformat_alloc_context, (), (), nullptr)
WRAP(AVIOContext*, avio_alloc_context,
     (unsigned char* buffer, int size, int writes, void* opaque, void* read, void* write, void* seek),
     (buffer, size, writes, opaque, read, write, seek), nullptr)
// The library's own, called for what the plug-in keeps.
WRAP(int, av_dict_set_int, (AVDictionary** to, const char* key, int64_t value, int flags),
     (to, key, value, flags), AVERROR(ENOMEM))
WRAP(int, av_dict_copy, (AVDictionary** to, const AVDictionary* from, int flags),
     (to, from, flags), AVERROR(ENOMEM))
WRAP(int, av_get_packet, (AVIOContext* from, AVPacket* packet, int size),
     (from, packet, size), AVERROR(ENOMEM))
// operator new(size_t, const std::nothrow_t&), and the same for arrays.
WRAP(void*, _ZnwmRKSt9nothrow_t, (size_t size, const std::nothrow_t& tag), (size, tag), nullptr)
WRAP(void*, _ZnamRKSt9nothrow_t, (size_t size, const std::nothrow_t& tag), (size, tag), nullptr)
// clang-format on

namespace orvel::test {
namespace {

struct TrackLife {
    std::vector<std::pair<std::optional<int64_t>, Bytes>> samples;  // times in us, and payloads
    android::status_t end = android::OK;
};

// Sniffs, creates, asks for every format, reads every track to its end.
std::vector<TrackLife> live(const Bytes& bytes) {
    static const host::Plugin* const plugin = new host::Plugin("linked", GETEXTRACTORDEF);
    host::MemorySource source(bytes.data(), bytes.size());
    host::SniffResult sniffed = plugin->sniff(source);
    if (!sniffed.taken()) return {};
    const auto extractor = plugin->create(source, std::move(sniffed));
    if (!extractor) return {};
    host::Format format;
    extractor->fileFormat(&format);
    std::vector<TrackLife> tracks(extractor->countTracks());
    for (size_t i = 0; i < tracks.size(); ++i)
        extractor->trackFormat(i, host::Extractor::kIncludeExtensiveMetaData, &format);
    host::Player player(*extractor);
    const auto results = player.play({}, [&](size_t index, host::Buffer& buffer) {
        tracks[index].samples.emplace_back(buffer.timeUs(),
                                           Bytes(buffer.data(), buffer.data() + buffer.size()));
        return true;
    });
    for (size_t i = 0; i < tracks.size(); ++i)
        tracks[i].end = results[i].status;
    return tracks;
}

struct File {
    const char* name;
    Bytes (*make)();
};

class Allocation : public ::testing::TestWithParam<File> {};

// Between them, they reach every call that can fail: codec parameters, covers, timed text, a place
// that lacks its solidus.
INSTANTIATE_TEST_SUITE_P(
        Media, Allocation,
        ::testing::Values(
                File{"timedText", [] { return mediaBytes("mp4_h264_eac3.mp4"); }},
                File{"videoCover", [] { return mediaBytes("mp4_video_cover.mp4"); }},
                File{"cover", [] { return mediaBytes("mp3_cover.mp3"); }},
                File{"place",
                     [] {
                         return id3Tag({{"location", "+48.85+002.29"}}) + mediaBytes("mp3_cbr.mp3");
                     }},
                File{"pcm", [] { return mediaBytes("wav_s16.wav"); }}),
        [](const auto& info) { return info.param.name; });

TEST_P(Allocation, failsOnceAndNothingElseDoes) {
    property_set("mm.enable.orvel_parser", "32767");
    const Bytes bytes = GetParam().make();
    gFailing = 0;
    gCalls = 0;
    LogCapture log;
    const std::vector<TrackLife> whole = live(bytes);
    EXPECT_EQ(log.take("RefBase"), Lines{}) << "something is not held by sp";
    ASSERT_FALSE(whole.empty());
    const int calls = gCalls;
    int endedEarly = 0;
    // Opening allocates some dozen times; then it is one packet after the other.
    for (int failing = 1; failing <= calls; failing += failing < 40 ? 1 : 11) {
        SCOPED_TRACE("allocation " + std::to_string(failing) + " of " + std::to_string(calls));
        gFailing = failing;
        gCalls = 0;
        const std::vector<TrackLife> tracks = live(bytes);
        ASSERT_LE(tracks.size(), whole.size());
        endedEarly += tracks.empty();
        for (size_t i = 0; i < tracks.size(); ++i) {
            const TrackLife& track = tracks[i];
            ASSERT_LE(track.samples.size(), whole[i].samples.size());
            for (size_t at = 0; at < track.samples.size(); ++at)
                ASSERT_EQ(track.samples[at], whole[i].samples[at]) << "track " << i;
            const bool complete = track.samples.size() == whole[i].samples.size();
            EXPECT_TRUE(track.end == android::ERROR_IO ||
                        (complete && track.end == android::ERROR_END_OF_STREAM))
                    << "track " << i << " ends with " << track.end;
            endedEarly += !complete;
        }
    }
    EXPECT_GE(endedEarly, 3);
}

}  // namespace
}  // namespace orvel::test
