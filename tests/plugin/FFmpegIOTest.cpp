// The bridge's callbacks where libavformat hardly ever leads: positions that no file has, questions
// that it does not know, sources that are wrong about what they gave.
#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include "FakeFramework.h"
#include "base/OrvelDataSource.h"
#include "ffmpeg/FFmpegIO.h"

namespace orvel {
namespace {

// Claims so many bytes of size and of every read, whatever it was asked for.
struct ClaimingSource : test::WavSource {
    ClaimingSource() : WavSource(100) {}
    ssize_t readAt(off64_t, void*, size_t) override { return claimed; }
    android::status_t getSize(off64_t* size) override {
        *size = claimed;
        return android::OK;
    }
    ssize_t claimed = 0;
};

TEST(FFmpegIO, Seeks_GoToPlacesThatCanBeAndElseStay) {
    constexpr int64_t kInvalid = AVERROR(EINVAL);
    const struct {
        int64_t size, offset;
        int whence;
        int64_t result;
    } cases[] = {
            {1000, 20, SEEK_SET, 20},
            {1000, 5000, SEEK_SET, 5000},
            {1000, -1, SEEK_SET, kInvalid},
            {1000, -40, SEEK_CUR, 60},
            {1000, -101, SEEK_CUR, kInvalid},
            {1000, INT64_MAX, SEEK_CUR, kInvalid},
            {1000, -1000, SEEK_END, 0},
            {1000, -1001, SEEK_END, kInvalid},
            {1000, INT64_MAX, SEEK_END, kInvalid},
            {-1, 50, SEEK_END, kInvalid},
            {1000, 0, AVSEEK_SIZE, 1000},
            {1000, 0, 77, kInvalid},
    };
    ClaimingSource source;
    const android::sp<OrvelDataSource> wrapped = new OrvelDataSource(source.table());
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.offset << " from " << test.whence);
        source.claimed = test.size;
        IOData data = {nullptr, 0, wrapped.get(), 100};
        EXPECT_EQ(seekDataSource(&data, test.offset, test.whence), test.result);
        const bool moves = test.result >= 0 && test.whence != AVSEEK_SIZE;
        EXPECT_EQ(data.mOffset, moves ? test.result : 100);
    }
}

TEST(FFmpegIO, Reads_TakeNoMoreThanThereIsRoomFor) {
    const struct {
        ssize_t claimed;
        bool hasBuffer;
        int result;
    } cases[] = {
            {16, true, 16},
            {17, true, android::ERROR_IO},
            {SSIZE_MAX, true, android::ERROR_IO},
            {0, true, AVERROR_EOF},
            {android::ERROR_END_OF_STREAM, true, AVERROR_EOF},
            {android::ERROR_IO, true, android::ERROR_IO},
            {AVERROR(EAGAIN), true, android::ERROR_IO},
            {ssize_t{INT_MIN} - 100, true, android::ERROR_IO},
            {16, false, AVERROR(EINVAL)},
    };
    ClaimingSource source;
    const android::sp<OrvelDataSource> wrapped = new OrvelDataSource(source.table());
    uint8_t buffer[16];
    for (const auto& test : cases) {
        SCOPED_TRACE(test.claimed);
        source.claimed = test.claimed;
        IOData data = {nullptr, 0, wrapped.get(), 100};
        EXPECT_EQ(readDataSource(&data, test.hasBuffer ? buffer : nullptr, 16), test.result);
        EXPECT_EQ(data.mOffset, test.result > 0 ? 116 : 100);
    }
}

}  // namespace
}  // namespace orvel
