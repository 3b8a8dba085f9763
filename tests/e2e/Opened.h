#pragma once

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "e2e/MediaTable.h"
#include "framework/MemorySource.h"
#include "framework/Player.h"
#include "framework/Plugin.h"
#include "support/Oracle.h"
#include "support/SwitchSource.h"

namespace orvel::test {

// How often the loops of the thread tests go round: sanitizers cost about ten times the time.
#ifdef ORVEL_SANITIZED
constexpr int kEffort = 1;
#else
constexpr int kEffort = 10;
#endif

/** The library under test, with every container enabled. */
const host::Plugin& plugin();
/** "mm.enable.orvel_parser" for the life of the object; afterwards everything is enabled again. */
struct EnabledContainers {
    explicit EnabledContainers(const std::string& mask);
    ~EnabledContainers();
};

/** Sniffs and creates; the test fails, and nothing comes back, when the source is declined. */
std::optional<host::Extractor> open(host::DataSource& source);
/** The same, but sniffed over `calm`, so that only what follows meets `source`'s temper. */
std::optional<host::Extractor> openSniffedCalmly(SwitchSource& source);

/** A track that has been started, with the buffers it is started with. */
struct StartedTrack {
    host::BufferGroup group;
    std::optional<host::Track> track;

    StartedTrack(const host::Extractor& extractor, size_t index) : track(extractor.track(index)) {
        EXPECT_TRUE(track);
        start();
    }
    void start() { EXPECT_EQ(track->start(group), android::OK); }
    void stop() { EXPECT_EQ(track->stop(), android::OK); }
};

/** The first track of the bytes, started, and what libavformat and the plain rules make of it. */
struct StartedFile {
    host::MemorySource source;
    std::vector<Sample> expected;
    host::BufferGroup group;
    std::optional<host::Extractor> extractor;
    std::optional<host::Track> track;

    StartedFile(const Bytes& bytes, const std::string& demuxer, size_t maxBufferSize = SIZE_MAX);
};

/** Runs `work` on its own thread; a test that would wait for it for ever fails instead. */
template <typename Work>
std::future<void> inThread(Work work) {
    return std::async(std::launch::async, std::move(work));
}
void expectReturns(std::future<void>& work);

/** What one track gave. */
struct TrackRead {
    size_t track = 0;
    std::vector<Sample> samples;
    android::status_t end = android::OK;
};
/** Starts the tracks, reads them by time to their ends, stops them. One result per track. */
std::vector<TrackRead> readTracks(const host::Extractor& extractor, std::vector<size_t> tracks);
/** Reads one started track to its end. */
TrackRead readToEnd(host::Track& track);
Sample asSample(const host::Buffer& buffer);

/** The audio and video tracks of a file: positions in its table row. */
std::vector<size_t> playedTracks(const MediaFile& file);
/** What libavformat makes of the streams of those tracks. */
Oracle readOracle(host::DataSource& source, const MediaFile& file,
                  const std::vector<size_t>& tracks);

::testing::AssertionResult sameSamples(const std::vector<Sample>& actual,
                                       const std::vector<Sample>& expected);
/** Each track gave what the oracle's stream gives, and ended as the oracle says. */
void expectOracle(const std::vector<TrackRead>& reads, const MediaFile& file, const Oracle& oracle);

/** Threads and file descriptors of this process; fails the test unless they are back to the count
 * that they had at construction, a looper on its way out being given a moment. */
class ResourceCheck {
  public:
    ResourceCheck();
    ~ResourceCheck();

  private:
    const size_t mThreads;
    const size_t mDescriptors;
};

}  // namespace orvel::test
