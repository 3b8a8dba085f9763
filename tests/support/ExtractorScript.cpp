#include "support/ExtractorScript.h"

#include <cutils/properties.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "framework/FaultSource.h"
#include "framework/MemorySource.h"
#include "support/SwitchSource.h"

namespace orvel::test {

namespace {

using host::Fault;

constexpr size_t kMaxTracks = 16;  // as many as a step can name
constexpr int kMaxReads = 400;
constexpr size_t kMaxBuffer = 16 << 20;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "ExtractorScript: %s\n", what);
    std::abort();
}

// The habits as a stack of decorators over the bytes.
class SteeredSource {
  public:
    SteeredSource(host::DataSource& bytes, const ScriptHeader& header) : mTop(&bytes) {
        const auto has = [&](uint8_t habit) { return (header.habits & habit) != 0; };
        const uint64_t call = header.call;
        if (has(ScriptHeader::kClaimedSize)) {
            const off64_t size = (header.claimedSize[0] << 8 | header.claimedSize[1]) * 64;
            put(std::make_unique<host::FaultSource>(*mTop, host::SizeChange{call, size}));
        }
        if (has(ScriptHeader::kFault)) {
            const auto repeat =
                    has(ScriptHeader::kFaultForGood) ? Fault::Repeat::ForGood : Fault::Repeat::Once;
            const auto result = has(ScriptHeader::kFaultEmpty) ? 0 : android::ERROR_IO;
            put(std::make_unique<host::FaultSource>(*mTop, Fault::onCall(call, repeat, result)));
        }
        if (has(ScriptHeader::kShortReads)) {
            put(std::make_unique<host::ShortReadSource>(*mTop, header.amount * 16 + 1));
        }
        if (has(ScriptHeader::kUnknownSize)) {
            put(std::make_unique<host::UnknownSizeSource>(*mTop));
        }
    }
    host::DataSource& top() { return *mTop; }

  private:
    void put(std::unique_ptr<host::DataSource> source) {
        mTop = source.get();
        mSources.push_back(std::move(source));
    }

    std::vector<std::unique_ptr<host::DataSource>> mSources;
    host::DataSource* mTop;
};

class Life {
  public:
    Life(host::Extractor extractor) : mExtractor(std::move(extractor)) {
        mTracks.resize(std::min(mExtractor->countTracks(), kMaxTracks));
        for (size_t i = 0; i < mTracks.size(); ++i) {
            mTracks[i].track = mExtractor->track(i);
            mTracks[i].group.setMaxBufferSize(kMaxBuffer);
        }
        host::Format format;
        for (size_t i = 0; i < mTracks.size(); ++i) {
            if (mExtractor->trackFormat(i, 0, &format) != android::OK) continue;
            mDurationUs = std::max(mDurationUs, format.int64(host::kKeyDurationUs).value_or(0));
        }
    }

    void perform(ScriptHeader::Step step) {
        using H = ScriptHeader;
        const uint8_t operation = step.operation % H::kOperations;
        const size_t index = step.argument & 15;
        const int high = step.argument >> 4;
        if (operation == H::kTrackFormat) return trackFormat(index, high);
        if (operation == H::kFileFormat) return fileFormat();
        if (operation == H::kDropExtractor) return mExtractor.reset();
        if (operation == H::kStartAll) return startAll();
        if (index >= mTracks.size() || !mTracks[index].track) return;
        Played& played = mTracks[index];
        if (operation == H::kStart) return start(played);
        if (operation == H::kDropTrack) return drop(played);
        if (!played.track->isStarted()) return;
        if (operation == H::kStop) return static_cast<void>(played.track->stop());
        if (operation < H::kSeek0)
            return read(played, {std::nullopt, operation == H::kReadNonBlocking}, high + 1);
        const auto mode = static_cast<host::SeekMode>(operation - H::kSeek0);
        read(played, {host::ReadOptions::Seek{place(high), mode}, false}, 1);
    }

    void readRest() {
        startAll();
        for (int round = 0; round < kMaxReads && mReads < kMaxReads; ++round) {
            for (Played& played : mTracks)
                read(played, {}, 1);
        }
    }

    void end() {
        for (Played& played : mTracks)
            drop(played);
    }

  private:
    struct Played {
        host::BufferGroup group;
        std::optional<host::Track> track;
    };

    void start(Played& played) {
        if (!played.track->isStarted()) played.track->start(played.group);
    }
    void startAll() {
        for (Played& played : mTracks) {
            if (played.track) start(played);
        }
    }
    void drop(Played& played) {
        played.track.reset();
        require(played.group.outstanding() == 0, "a buffer has not come back");
    }

    void read(Played& played, const host::ReadOptions& options, int count) {
        if (!played.track || !played.track->isStarted()) return;
        for (int i = 0; i < count && mReads < kMaxReads; ++i, ++mReads) {
            const host::ReadResult result = played.track->read(options);
            if (result.status != android::OK) return;
            require(static_cast<bool>(result.buffer), "a good status without a buffer");
            require(result.buffer.timeUs().has_value(), "a sample without a time");
            // Every byte of the range counts as used, so that a sanitizer sees those never written.
            for (size_t at = 0; at < result.buffer.size(); ++at)
                mSum += result.buffer.data()[at];
        }
    }

    void trackFormat(size_t index, int flags) {
        host::Format format;
        if (mExtractor && mExtractor->trackFormat(index, flags, &format) == android::OK) {
            mSum += format.toString().size();
        }
        if (index < mTracks.size() && mTracks[index].track) mTracks[index].track->format(&format);
    }
    void fileFormat() {
        if (!mExtractor) return;
        host::Format format;
        if (mExtractor->fileFormat(&format) == android::OK) mSum += format.toString().size();
        mExtractor->flags();
        mExtractor->name();
    }

    // Eleven places inside the duration, five outside.
    int64_t place(int choice) const {
        constexpr int64_t kOutside[] = {-1, INT64_MAX, INT64_MIN, INT64_MAX / 1000};
        if (choice >= 12) return kOutside[choice - 12];
        return std::min(mDurationUs, INT64_MAX / 2) / 10 * choice;
    }

    std::optional<host::Extractor> mExtractor;
    std::vector<Played> mTracks;
    int64_t mDurationUs = 0;
    int mReads = 0;
    volatile unsigned mSum = 0;
};

}  // namespace

void runScript(const host::Plugin& plugin, const ScriptHeader& header, const uint8_t* file,
               size_t fileSize) {
    const int mask = header.container == 0 ? 32767 : 1 << header.container % 15;
    property_set("mm.enable.orvel_parser", std::to_string(mask).c_str());
    host::MemorySource bytes(file, fileSize);
    SteeredSource steered(bytes, header);
    const bool sniffsToo = (header.habits & ScriptHeader::kSniffsToo) != 0;
    SwitchSource source(sniffsToo ? steered.top() : bytes, steered.top());
    host::SniffResult sniffed = plugin.sniff(source);
    source.switchOver();
    std::optional<host::Extractor> extractor;
    if (sniffed.taken()) extractor = plugin.create(source, std::move(sniffed));
    if (extractor) {
        Life life(std::move(*extractor));
        for (size_t i = 0; i < header.steps % (ScriptHeader::kSteps + 1); ++i)
            life.perform(header.step[i]);
        if ((header.habits & ScriptHeader::kLastReadAll) != 0) life.readRest();
        life.end();
    }
    property_set("mm.enable.orvel_parser", "32767");
}

}  // namespace orvel::test
