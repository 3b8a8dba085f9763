#pragma once

#include <chrono>
#include <optional>

#include "Words.h"
#include "collect/Collector.h"
#include "collect/PluginLog.h"
#include "collect/SniffReason.h"
#include "collect/Source.h"
#include "extract/SampleWriter.h"
#include "framework/Player.h"
#include "framework/Plugin.h"
#include "verify/Verifier.h"

namespace orvel::probe {

/** What is counted of a track while it is read. */
struct TrackCounts {
    uint64_t count = 0, keys = 0, bytes = 0, largest = 0, empty = 0;
    int64_t firstUs = INT64_MAX, lastUs = INT64_MIN;  // earliest and latest time
    int64_t lastKeyUs = 0, keyIntervalUs = 0;         // the longest from key to key

    void add(size_t size, int64_t timeUs, bool sync);
    void writeTo(Json* track) const;
};

/** Everything that is open for the file, in an order in which the members can be destroyed. */
class Session {
  public:
    Session(const Options& options, const OutputFds& outputs, ChildState& state,
            ReportSender& sender)
        : mOptions(options), mOutputs(outputs), mState(state), mSender(sender) {}

    void run(const std::string& file);
    int exitCode() const { return mExit; }

  private:
    // Collector.cpp: up to the formats.
    void open(const std::string& file);
    bool sniffAndCreate(bool again);
    bool create(host::SniffResult result);
    bool reopen();
    void explain();
    void explainMask(const SniffCase& narrow);
    void describe();
    void writeCover();
    // Reading.cpp: the samples.
    void startTracks();
    void read();
    void onSample(size_t index, const host::Buffer& buffer);
    void openWriters();
    void withWriter(size_t index, const std::function<void()>& action);
    void closeWriter(size_t index, android::status_t end);
    void noteReadEnd(const Json& track, bool started);
    void seek();
    void seekTrack(const SeekRequest& request, size_t position, Json* report);
    void count(size_t track, const host::Buffer& buffer, int64_t timeUs);
    Sample toSample(size_t track, const host::Buffer& buffer) const;

    Json& tracks() { return mTree["tracks"]; }
    Json& more() { return mTree["private"]; }
    // Keeps the first error and the highest code.
    void fail(int code, const std::string& text);
    void failUnless(android::status_t status, const std::string& what);
    std::string noTrackText(size_t index) const;

    const Options& mOptions;
    const OutputFds& mOutputs;
    ChildState& mState;
    ReportSender& mSender;
    Json mTree = {{"file", ""}, {"private", Json::object()}};
    std::string mError;
    int mExit = kExitFine;

    PluginLog mLog;
    std::optional<host::Plugin> mPlugin;
    std::optional<Source> mSource;
    std::optional<host::Extractor> mExtractor;
    std::optional<host::Player> mPlayer;
    std::chrono::steady_clock::time_point mSniffBegin;
    bool mHasFirstSample = false;
    std::vector<TrackCounts> mCounts;  // by the extractor's index, as many as it has
    std::map<size_t, std::unique_ptr<SampleWriter>> mWriters;
    std::optional<Verifier> mVerifier;
};

}  // namespace orvel::probe
