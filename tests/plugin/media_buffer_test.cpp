// Media buffers and their group over a scripted framework group.
#include <gtest/gtest.h>
#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/MediaErrors.h>

#include <set>

#include "OrvelMediaBuffer.h"
#include "fake_framework.h"

namespace orvel {
namespace {

using test::FakeBuffer;
using test::FakeGroup;

struct MediaBuffer : testing::Test {
    FakeGroup framework;
    android::MediaBufferGroupHelper helper{&framework.table};
};

TEST_F(MediaBuffer, SameFrameworkBuffer_ComesAsTheSameObjectWithoutOldMetadata) {
    FakeBuffer frame(16);
    framework.answers = {{&frame, AMEDIA_OK}, {&frame, AMEDIA_OK}};
    OrvelMediaBufferGroup group(&helper);
    EXPECT_TRUE(group.init(1, 262144, 7));
    EXPECT_EQ(framework.call, (std::vector<size_t>{1, 262144, 7}));
    IOrvelMediaBuffer* first = nullptr;
    ASSERT_EQ(group.acquire_buffer(&first, true, 4711), android::OK);
    EXPECT_EQ(framework.call, (std::vector<size_t>{1, 4711}));
    first->set_range(3, 5);
    EXPECT_EQ(first->range_offset() * 10 + first->range_length(), 35u);
    EXPECT_TRUE(first->data() == frame.memory.data() && first->size() == 16);
    EXPECT_EQ(first->getBuffer()->mBuffer, &frame.table);
    int64_t timeUs = 0;
    EXPECT_TRUE(first->meta_data().setInt64(kKeyTime, 40000));
    EXPECT_TRUE(AMediaFormat_getInt64(frame.format, "timeUs", &timeUs) && timeUs == 40000);
    first->release();
    EXPECT_EQ(frame.releases, 1);

    IOrvelMediaBuffer* second = nullptr;
    ASSERT_EQ(group.acquire_buffer(&second, false, 0), android::OK);
    EXPECT_EQ(framework.call, (std::vector<size_t>{0, 0}));
    EXPECT_EQ(second, first);
    EXPECT_FALSE(AMediaFormat_getInt64(frame.format, "timeUs", &timeUs));
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

TEST_F(MediaBuffer, Destruction_LeavesTheFrameworksBuffersAlone) {
    FakeBuffer frames[] = {FakeBuffer(1), FakeBuffer(2), FakeBuffer(3)};
    for (int round = 0; round < 2; ++round) {
        OrvelMediaBufferGroup group(&helper);
        std::set<IOrvelMediaBuffer*> distinct;
        for (size_t i = 0; i < 6; ++i) {
            framework.answers = {{&frames[i % 3], AMEDIA_OK}};
            IOrvelMediaBuffer* out = nullptr;
            ASSERT_EQ(group.acquire_buffer(&out, false, 1), android::OK);
            EXPECT_EQ(out->size(), i % 3 + 1);
            out->meta_data().setInt32(kKeyWidth, 1);
            distinct.insert(out);
        }
        EXPECT_EQ(distinct.size(), 3u);
    }
    for (FakeBuffer& frame : frames) {
        int32_t width = 0;
        EXPECT_EQ(frame.releases, 0);
        EXPECT_TRUE(AMediaFormat_getInt32(frame.format, "width", &width));
    }
}

}  // namespace
}  // namespace orvel
