// Timed text: every cue once, in whatever order tracks are read, and where seeks leave it.

#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include <numeric>

#include "e2e/SeekFixture.h"
#include "framework/FaultSource.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

using namespace android;
using host::SeekMode;

namespace {

struct TextFile {
    const char* name;
    size_t textTracks;  // behind video and audio
    bool lastIsKey;
};
void PrintTo(const TextFile& file, std::ostream* out) {
    *out << file.name;
}

// The last sample of a fragmented file ends the last cue. Its entry lacks the key flag that the
// demultiplexer's packets all have.
const TextFile kFiles[] = {
        {"mp4_h264_eac3.mp4", 1, true},
        {"mp4_two_texts.mp4", 2, true},
        {"mp4_fragmented_text.mp4", 1, false},
};

class TimedText : public ::testing::TestWithParam<TextFile> {
  protected:
    void SetUp() override {
        const auto isText = [](const AVStream& stream) {
            return stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE;
        };
        host::MemorySource source(mBytes);
        const Oracle media = Oracle::read(source, "mov");
        const Oracle text = Oracle::read(source, "mov", isText);
        for (size_t i = 0; i < 2 + GetParam().textTracks; ++i) {
            mExpected.push_back((i < 2 ? media : text).streams[i].samples);
            if (i >= 2) mExpected[i].back().sync = GetParam().lastIsKey;
        }
    }
    std::optional<host::Extractor> openAll(host::DataSource& source) {
        std::optional<host::Extractor> extractor = open(source);
        EXPECT_TRUE(extractor && extractor->countTracks() == mExpected.size());
        return extractor;
    }
    void expectRest(host::Track& track, size_t index, size_t first = 0) {
        const std::vector<Sample>& all = mExpected[index];
        const TrackRead rest = readToEnd(track);
        EXPECT_TRUE(
                sameSamples(rest.samples, {all.begin() + static_cast<ptrdiff_t>(first), all.end()}))
                << "track " << index << " from sample " << first;
        EXPECT_EQ(rest.end, ERROR_END_OF_STREAM);
    }
    // Which sample a seek gives; none when it is refused.
    std::optional<size_t> landing(size_t index, int64_t timeUs, SeekMode mode) const {
        const std::vector<Sample>& all = mExpected[index];
        std::optional<size_t> previous, next;
        for (size_t i = 0; i < all.size(); ++i) {
            if (!all[i].sync) continue;
            if (all[i].timeUs <= timeUs) previous = i;
            if (all[i].timeUs >= timeUs && !next) next = i;
        }
        if (mode == SeekMode::NextSync) return next;
        if (mode == SeekMode::ClosestSync && previous && next &&
            all[*next].timeUs - timeUs <= timeUs - all[*previous].timeUs) {
            return next;
        }
        return previous.value_or(0);
    }

    const Bytes mBytes = mediaBytes(GetParam().name);
    std::vector<std::vector<Sample>> mExpected;  // by track
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Media, TimedText, ::testing::ValuesIn(kFiles),
                         [](const auto& info) { return asTestName(info.param.name); });

TEST_P(TimedText, comesOnceInWhateverOrderTracksAreRead) {
    host::MemorySource source(mBytes);
    std::vector<size_t> order(mExpected.size());
    std::iota(order.begin(), order.end(), 0);
    for (const bool textFirst : {false, true}) {
        const auto extractor = openAll(source);
        ASSERT_TRUE(extractor);
        host::Player player(*extractor);
        for (size_t index : order)
            expectRest(*player.track(index), index);
        std::reverse(order.begin(), order.end());
        // An ended track stays ended.
        for (size_t index : order)
            EXPECT_EQ(player.track(index)->read().status, ERROR_END_OF_STREAM) << textFirst;
    }
    const auto byTime = openAll(source);
    ASSERT_TRUE(byTime);
    for (const TrackRead& read : readTracks(*byTime, order))
        EXPECT_TRUE(sameSamples(read.samples, mExpected[read.track])) << "track " << read.track;
}

TEST_P(TimedText, seeksMoveTheirTrackAlone) {
    host::MemorySource source(mBytes);
    const auto extractor = openAll(source);
    ASSERT_TRUE(extractor);
    host::Player player(*extractor);
    ASSERT_EQ(player.track(0)->read().status, OK);
    for (size_t index = 2; index < mExpected.size(); ++index) {
        const std::vector<Sample>& all = mExpected[index];
        host::Track& track = *player.track(index);
        std::vector<int64_t> times = {INT64_MIN, -1000000, 5000000, INT64_MAX};
        for (size_t i = 0; i < all.size(); ++i) {
            const int64_t end = i + 1 < all.size() ? all[i + 1].timeUs : 2500000;
            times.insert(times.end(), {all[i].timeUs, (all[i].timeUs + end) / 2, end - 10000});
        }
        for (int64_t timeUs : times) {
            for (int mode = 0; mode < 4; ++mode) {
                SCOPED_TRACE("track " + std::to_string(index) + " to " + std::to_string(timeUs) +
                             " us, mode " + std::to_string(mode));
                ASSERT_EQ(track.read(seekTo(all[1].timeUs, SeekMode::PreviousSync)).status, OK);
                const auto sample = landing(index, timeUs, static_cast<SeekMode>(mode));
                host::ReadResult read = track.read(seekTo(timeUs, static_cast<SeekMode>(mode)));
                // BAD_VALUE does not cross the interface as itself.
                ASSERT_EQ(read.status, sample ? OK : UNKNOWN_ERROR);
                if (sample) {
                    EXPECT_EQ(asSample(read.buffer), all[*sample]);
                    EXPECT_FALSE(read.buffer.targetTimeUs());
                }
                read.buffer.reset();
                // A refused seek leaves the place as it was: behind the sample before it.
                expectRest(track, index, sample.value_or(1) + 1);
            }
        }
    }
    expectRest(*player.track(0), 0, 1);
    expectRest(*player.track(1), 1);
}

// One read of a text sample fails: that track ends with the error until it is sought, the others do
// not notice.
TEST_P(TimedText, failsAlone) {
    host::MemorySource memory(mBytes);
    host::FaultSource fault(memory, host::Fault::onCall(1, host::Fault::Repeat::Once));
    SwitchSource source(memory, fault);
    const auto extractor = openAll(source);
    ASSERT_TRUE(extractor);
    host::Player player(*extractor);
    host::Track& text = *player.track(2);
    ASSERT_EQ(text.read().status, OK);
    source.switchOver();
    EXPECT_EQ(text.read().status, ERROR_IO);
    EXPECT_EQ(fault.faults(), 1u);
    EXPECT_EQ(text.read().status, ERROR_IO);
    for (size_t index : {0, 1})
        expectRest(*player.track(index), index);
    ASSERT_EQ(text.read(seekTo(0, SeekMode::PreviousSync)).status, OK);
    expectRest(text, 2, 1);
}

// A text sample that would lie behind the end of the file is the end of its track alone.
TEST(BrokenText, endsWhereItsSamplesLeaveTheFile) {
    const MediaFile& file = mediaFile("mp4_h264_eac3.mp4");
    Bytes bytes = file.bytes();
    constexpr int kText = 2;
    // The fourth chunk, in front of which are four samples.
    putBe32(bytes, boxType(bytes, "stco", kText) + 24, 0x7FFFFFFF);
    host::MemorySource source(bytes);
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    const Oracle oracle = readOracle(source, file, {0, 1});
    const auto reads = readTracks(*extractor, {0, 1, kText});
    EXPECT_EQ(reads[kText].samples.size(), 4u);
    EXPECT_EQ(reads[kText].end, ERROR_END_OF_STREAM);
    expectOracle({reads[0], reads[1]}, file, oracle);
}

}  // namespace orvel::test
