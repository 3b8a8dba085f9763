// Media buffers and their group over a scripted framework group.
#include <gtest/gtest.h>
#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/MediaErrors.h>

#include <memory>

#include "FakeFramework.h"
#include "base/OrvelMediaBuffer.h"
#include "ffmpeg/TrackFormat.h"
#include "ffmpeg/reader/SampleConversion.h"

namespace orvel {
namespace {

using test::FakeBuffer;
using test::FakeGroup;

struct MediaBuffer : testing::Test {
    FakeGroup framework;
    android::MediaBufferGroupHelper helper{&framework.table};
};

TEST_F(MediaBuffer, SameFrameworkBuffer_ComesAsTheSameObjectWithoutOldMetadata) {
    FakeBuffer frame(16), other(8);
    framework.answers = {{&frame, AMEDIA_OK}, {&other, AMEDIA_OK}, {&frame, AMEDIA_OK}};
    auto group = std::make_unique<OrvelMediaBufferGroup>(&helper);
    EXPECT_TRUE(group->init(1, 262144, 7));
    EXPECT_EQ(framework.call, (std::vector<size_t>{1, 262144, 7}));
    IOrvelMediaBuffer *first = nullptr, *second = nullptr, *third = nullptr;
    ASSERT_EQ(group->acquire_buffer(&first, true, 4711), android::OK);
    EXPECT_EQ(framework.call, (std::vector<size_t>{1, 4711}));
    int64_t timeUs = 0;
    EXPECT_TRUE(first->meta_data().setInt64(kKeyTime, 40000));
    EXPECT_TRUE(AMediaFormat_getInt64(frame.format, "timeUs", &timeUs) && timeUs == 40000);
    ASSERT_EQ(group->acquire_buffer(&second, false, 0), android::OK);
    ASSERT_EQ(group->acquire_buffer(&third, false, 0), android::OK);
    EXPECT_TRUE(second != first && third == first);
    EXPECT_FALSE(AMediaFormat_getInt64(frame.format, "timeUs", &timeUs));
    second->meta_data().setInt64(kKeyTime, 1);
    group.reset();  // leaves the framework's buffers and their formats alone
    EXPECT_TRUE(AMediaFormat_getInt64(other.format, "timeUs", &timeUs));
    EXPECT_EQ(frame.releases + other.releases, 0);
}

// A group may make a larger buffer where one was that it has freed.
TEST_F(MediaBuffer, NewFrameworkBufferAtAnOldAddress_GetsTheTime) {
    FakeBuffer old(16), larger(32);
    framework.answers = {{&old, AMEDIA_OK}, {&old, AMEDIA_OK}};
    OrvelMediaBufferGroup group(&helper);
    IOrvelMediaBuffer* buffer = nullptr;
    ASSERT_EQ(group.acquire_buffer(&buffer, false, 16), android::OK);
    old.table.handle = &larger;
    ASSERT_EQ(group.acquire_buffer(&buffer, false, 32), android::OK);
    int64_t timeUs = 0;
    EXPECT_TRUE(buffer->meta_data().setInt64(kKeyTime, 40000));
    EXPECT_TRUE(AMediaFormat_getInt64(larger.format, "timeUs", &timeUs) && timeUs == 40000);
    EXPECT_EQ(buffer->size(), 32u);
}

// It would have neither range nor time.
TEST_F(MediaBuffer, PacketWithoutData_TakesNone) {
    AVFormatContext* const context = avformat_alloc_context();
    AVStream* const stream = avformat_new_stream(context, nullptr);
    stream->codecpar->codec_id = AV_CODEC_ID_MP3;
    android::Vector<TrackInfo> infos;
    infos.push_back({});
    initTrackInfo(stream, nullptr, 0, &infos.editItemAt(0));
    {
        FakeBuffer frame(16);
        framework.answers = {{&frame, AMEDIA_OK}};
        const android::sp<FFmpegReader::Track> track =
                new FFmpegReader::Track(0, context, infos, &helper);
        AVPacket* packet = av_packet_alloc();
        IOrvelMediaBuffer* out = nullptr;
        EXPECT_EQ(convertPacket(*track, *packet, nullptr, &out), android::OK);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(framework.answers.size(), 1u);
        av_packet_free(&packet);
        track->reset();
    }
    avformat_free_context(context);
}

TEST_F(MediaBuffer, NoBuffer_GivesNullAndTheFrameworksStatus) {
    FakeBuffer frame(16);
    OrvelMediaBufferGroup group(&helper);
    const struct {
        FakeGroup::Answer answer;  // a buffer that a failing group leaves behind is not lent
        android::status_t expected;
    } cases[] = {{{nullptr, AMEDIA_ERROR_WOULD_BLOCK}, android::WOULD_BLOCK},
                 {{&frame, AMEDIA_ERROR_IO}, android::ERROR_IO},
                 {{&frame, AMEDIA_ERROR_UNSUPPORTED}, android::UNKNOWN_ERROR},
                 {{nullptr, AMEDIA_OK}, android::OK}};
    for (const auto& test : cases) {
        framework.answers = {test.answer};
        IOrvelMediaBuffer* out = reinterpret_cast<IOrvelMediaBuffer*>(&group);
        EXPECT_EQ(group.acquire_buffer(&out, true, 1), test.expected);
        EXPECT_EQ(out, nullptr) << test.expected;
    }
}

}  // namespace
}  // namespace orvel
