// Interleavings that a framework can produce: commands for one track while another is read, many
// extractors at once, sniffs beside open extractors; and what idle extractors cost.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>
#include <sys/resource.h>

#include <algorithm>
#include <thread>

#include "e2e/Opened.h"

namespace orvel::test {

using namespace android;

namespace {

struct Started {
    host::BufferGroup group;
    host::Track track;

    Started(const host::Extractor& extractor, size_t index)
        : track(std::move(*extractor.track(index))) {
        start();
    }
    void start() { EXPECT_EQ(track.start(group), OK); }
    void stop() { EXPECT_EQ(track.stop(), OK); }
};

const char* const kFiles[] = {"mp4_h264_eac3.mp4", "mkv_hevc_dts.mkv", "avi_h264_ac3.avi",
                              "flv_h264_aac.flv"};

int64_t processorTimeUs() {
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    const auto us = [](const timeval& time) { return time.tv_sec * 1000000 + time.tv_usec; };
    return us(usage.ru_utime) + us(usage.ru_stime);
}

}  // namespace

TEST(Races, startsAndStopsOfAnotherTrackLeaveEverySampleInItsPlace) {
    for (const char* name : kFiles) {
        const MediaFile& file = mediaFile(name);
        host::MemorySource source(file.bytes());
        const Oracle oracle = readOracle(source, file, {0});
        for (int round = 0; round < 3 * kEffort; ++round) {
            const auto extractor = open(source);
            ASSERT_TRUE(extractor);
            Started video(*extractor, 0);
            std::atomic<bool> ended{false};
            std::thread other([&] {
                Started audio(*extractor, 1);
                while (!ended) {
                    for (int i = 0; i < 3; ++i)
                        audio.track.read();
                    audio.stop();
                    audio.start();
                }
            });
            const TrackRead read = readToEnd(video.track);
            ended = true;
            other.join();
            EXPECT_TRUE(sameSamples(read.samples, oracle.streams[file.tracks[0].stream].samples))
                    << name;
            EXPECT_EQ(read.end, ERROR_END_OF_STREAM);
        }
    }
}

TEST(Races, seeksOfOneTrackDeliverOnlyTheFilesSamplesToAnother) {
    for (const char* name : kFiles) {
        const MediaFile& file = mediaFile(name);
        host::MemorySource source(file.bytes());
        const Oracle oracle = readOracle(source, file, {0, 1});
        const auto& samples = oracle.streams[file.tracks[1].stream].samples;
        const auto extractor = open(source);
        ASSERT_TRUE(extractor);
        Started video(*extractor, 0), audio(*extractor, 1);
        std::atomic<bool> ended{false};
        std::thread seeking([&] {
            for (unsigned i = 0; !ended; ++i) {
                const host::ReadOptions seek{host::ReadOptions::Seek{
                        i * 370000 % 2000000, static_cast<host::SeekMode>(i % 4)}};
                const status_t status = video.track.read(seek).status;
                EXPECT_TRUE(status == OK || status == ERROR_END_OF_STREAM) << status;
            }
        });
        for (int i = 0; i < 100 * kEffort; ++i) {
            const host::ReadResult read = audio.track.read();
            if (read.status != OK) {
                EXPECT_EQ(read.status, ERROR_END_OF_STREAM);
                continue;
            }
            const Sample sample = asSample(read.buffer);
            EXPECT_NE(std::find_if(samples.begin(), samples.end(),
                                   [&](const Sample& s) { return s.data == sample.data; }),
                      samples.end())
                    << name << ": " << describe(sample);
        }
        ended = true;
        seeking.join();
    }
}

TEST(Races, twoHundredExtractorsAtOnceBesideSniffs) {
    const ResourceCheck resources;
    std::vector<Bytes> files;
    for (const char* name : kFiles)
        files.push_back(mediaBytes(name));
    std::atomic<bool> ended{false};
    std::vector<std::thread> sniffers;
    for (unsigned thread = 0; thread < 2; ++thread) {
        sniffers.emplace_back([&, thread] {
            for (unsigned i = thread; !ended; ++i) {
                const Bytes& file = files[i % files.size()];
                host::MemorySource source(file.data(), file.size());
                EXPECT_TRUE(open(source));
            }
        });
    }
    {
        std::vector<std::unique_ptr<host::MemorySource>> sources;
        std::vector<host::Extractor> extractors;
        std::vector<std::unique_ptr<Started>> tracks;
        for (unsigned i = 0; i < 200; ++i) {
            const Bytes& file = files[i % files.size()];
            sources.push_back(std::make_unique<host::MemorySource>(file.data(), file.size()));
            auto extractor = open(*sources.back());
            ASSERT_TRUE(extractor);
            tracks.push_back(std::make_unique<Started>(*extractor, i / 4 % 2));
            extractors.push_back(std::move(*extractor));
        }
        for (const auto& started : tracks)
            EXPECT_EQ(started->track.read().status, OK);
        tracks.clear();
    }
    ended = true;
    for (std::thread& sniffer : sniffers)
        sniffer.join();
}

TEST(Limits, idleExtractorsUseNoProcessorTime) {
    std::vector<std::unique_ptr<host::MemorySource>> sources;
    std::vector<host::Extractor> extractors;
    std::vector<std::unique_ptr<Started>> tracks;
    for (int i = 0; i < 20; ++i) {
        sources.push_back(std::make_unique<host::MemorySource>(mediaBytes(kFiles[i % 4])));
        auto extractor = open(*sources.back());
        ASSERT_TRUE(extractor);
        tracks.push_back(std::make_unique<Started>(*extractor, 0));
        EXPECT_EQ(tracks.back()->track.read().status, OK);
        extractors.push_back(std::move(*extractor));
    }
    // The read-ahead comes to its end first: two equal looks, or the test fails below.
    int64_t before = processorTimeUs();
    for (int i = 0; i < 100; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const int64_t now = processorTimeUs();
        if (now - before < 1000) break;
        before = now;
    }
    before = processorTimeUs();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_LT(processorTimeUs() - before, 20000) << "us of the second";
}

}  // namespace orvel::test
