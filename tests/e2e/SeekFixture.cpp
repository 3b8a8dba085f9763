#include "e2e/SeekFixture.h"

#include <media/stagefright/MediaErrors.h>

namespace orvel::test {

using namespace android;

std::vector<size_t> seekOrder(const host::Extractor& extractor, std::vector<SoughtTrack>* tracks) {
    std::vector<size_t> order;
    for (const std::string kind : {"video/", "audio/"}) {
        for (size_t i = 0; i < extractor.countTracks(); ++i) {
            host::Format format;
            EXPECT_EQ(extractor.trackFormat(i, 0, &format), OK);
            if (format.string("mime").value().compare(0, kind.size(), kind) != 0) continue;
            order.push_back(i);
            tracks->push_back({static_cast<int>(i), kind == "video/",
                               format.int64("durationUs").value_or(-1)});
        }
    }
    return order;
}

SeekFixture::SeekFixture(host::DataSource& source, const Bytes& bytes, const std::string& demuxer,
                         bool craKeys)
    : mForOracle(bytes.data(), bytes.size()),
      mSource(source),
      mExtractor(open(mSource)),
      mOrder(seekOrder(*mExtractor, &mTracks)),
      mPlayer(*mExtractor, mOrder),
      mOracle(mForOracle, demuxer, mTracks, craKeys) {}

host::Track& SeekFixture::track(size_t i) {
    // The player's tracks are in ascending order.
    const size_t below = std::count_if(mOrder.begin(), mOrder.end(),
                                       [&](size_t other) { return other < mOrder[i]; });
    return *mPlayer.track(below);
}

void SeekFixture::readToTheEnd() {
    for (size_t i = 0; i < trackCount(); ++i) {
        const auto samples = readToEnd(track(i)).samples;
        const auto expected = mOracle.readOn(i);
        EXPECT_TRUE(mSeekFailed || sameSamples(samples, expected));
    }
}

std::optional<Sample> SeekFixture::seek(int64_t timeUs, host::SeekMode mode, size_t compared) {
    std::optional<Sample> first;
    bool moved = false;
    mSeekFailed = false;
    for (size_t i = 0; i < trackCount(); ++i) {
        const SeekOracle::Outcome expected = mOracle.seek(i, timeUs, mode);
        const uint64_t callsBefore = mSource.counts().calls;
        host::ReadResult read = track(i).read(seekTo(timeUs, mode));
        moved = moved || !expected.refused;
        mSeekFailed = mSeekFailed || (expected.status != OK && !expected.refused);
        EXPECT_TRUE(moved || mSource.counts().calls == callsBefore);
        if (i >= compared) continue;
        EXPECT_EQ(read.status, expected.status) << "track " << i;
        if (!read.buffer || !expected.sample) continue;
        const Sample sample = asSample(read.buffer);
        EXPECT_TRUE(sameSamples({sample}, {*expected.sample})) << "track " << i;
        EXPECT_EQ(read.buffer.targetTimeUs(), expected.targetUs) << "track " << i;
        if (i == 0) first = sample;
    }
    return first;
}

}  // namespace orvel::test
