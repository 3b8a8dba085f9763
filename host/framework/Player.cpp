#include "framework/Player.h"

#include <strings.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "framework/TrackScheduler.h"

namespace orvel::host {
namespace {

std::vector<size_t> allIndices(const Extractor& extractor) {
    std::vector<size_t> indices(extractor.countTracks());
    std::iota(indices.begin(), indices.end(), size_t{0});
    return indices;
}

bool isVideo(const Track& track) {
    Format format;
    if (track.format(&format) != android::OK) return false;
    const auto mime = format.string(kKeyMime);
    return mime && strncasecmp(mime->c_str(), "video/", 6) == 0;
}

}  // namespace

Player::Player(const Extractor& extractor) : Player(extractor, allIndices(extractor)) {}

Player::Player(const Extractor& extractor, std::vector<size_t> indices) {
    std::sort(indices.begin(), indices.end());
    indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
    for (size_t index : indices) {
        Entry& entry = mEntries.emplace_back();
        entry.index = index;
        entry.track = extractor.track(index);
        if (!entry.track) {
            entry.status = android::BAD_VALUE;
            continue;
        }
        entry.isVideo = isVideo(*entry.track);
    }
    for (Entry& entry : mEntries) {
        if (entry.track) entry.status = entry.track->start(entry.group);
    }
}

Player::~Player() {
    for (Entry& entry : mEntries) {
        if (entry.isStarted()) entry.track->stop();
    }
}

Track* Player::track(size_t position) {
    Entry& entry = mEntries[position];
    return entry.isStarted() ? &*entry.track : nullptr;
}

/** One play() call. */
class Player::Run {
  public:
    Run(std::vector<Entry>& entries, const Options& options, const OnSample& onSample)
        : mEntries(entries),
          mOptions(options),
          mOnSample(onSample),
          mScheduler(entries.size()),
          mResults(entries.size()) {
        for (size_t i = 0; i < mEntries.size(); ++i) {
            Entry& entry = mEntries[i];
            mResults[i].index = entry.index;
            if (entry.isStarted() && mOptions.seek) {
                entry.status = android::OK;
                entry.lastTimeUs.reset();
            }
            mResults[i].status = entry.status;
            if (entry.status != android::OK || mOptions.limitPerTrack == 0) mScheduler.ended(i);
            mScheduler.delivered(i, entry.lastTimeUs);
        }
    }

    std::vector<TrackResult> run() {
        if (mOptions.seek) {
            seekAll(true);
            seekAll(false);
        }
        while (const auto position = mScheduler.next())
            readOne(*position, {});
        return std::move(mResults);
    }

  private:
    void seekAll(bool video) {
        for (size_t i = 0; i < mEntries.size(); ++i) {
            if (mEntries[i].isVideo != video || mScheduler.hasEnded(i)) continue;
            ReadOptions options;
            options.seek = mOptions.seek;
            readOne(i, options);
            mResults[i].seekStatus = mResults[i].status;
        }
    }

    void readOne(size_t position, const ReadOptions& options) {
        Entry& entry = mEntries[position];
        TrackResult& result = mResults[position];
        ReadResult read = entry.track->read(options);
        entry.status = result.status = read.status;
        // A success without a sample breaks the contract; taking it for one could go on for ever.
        if (read.status == android::OK && !read.buffer) {
            entry.status = result.status = android::UNKNOWN_ERROR;
        }
        if (result.status != android::OK) {
            mScheduler.ended(position);
            return;
        }
        const auto timeUs = read.buffer.timeUs();
        if (timeUs) entry.lastTimeUs = timeUs;
        if (result.samples == 0) result.firstTimeUs = timeUs;
        result.lastTimeUs = timeUs;
        ++result.samples;
        result.bytes += read.buffer.size();
        mScheduler.delivered(position, timeUs);
        const bool goOn = !mOnSample || mOnSample(entry.index, read.buffer);
        if (!goOn || result.samples >= mOptions.limitPerTrack) mScheduler.ended(position);
    }

    std::vector<Entry>& mEntries;
    const Options& mOptions;
    const OnSample& mOnSample;
    TrackScheduler mScheduler;
    std::vector<TrackResult> mResults;
};

std::vector<Player::TrackResult> Player::play(const Options& options, const OnSample& onSample) {
    return Run(mEntries, options, onSample).run();
}

}  // namespace orvel::host
