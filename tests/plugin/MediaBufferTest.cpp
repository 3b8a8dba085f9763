// Media buffers and their group over a scripted framework group.
#include <gtest/gtest.h>
#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/MediaErrors.h>

#include <memory>

#include "FakeFramework.h"
#include "OrvelMediaBuffer.h"

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
    auto owned = std::make_unique<OrvelMediaBufferGroup>(&helper);
    OrvelMediaBufferGroup& group = *owned;
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

    IOrvelMediaBuffer *second = nullptr, *third = nullptr;
    ASSERT_EQ(group.acquire_buffer(&second, false, 0), android::OK);
    EXPECT_EQ(framework.call, (std::vector<size_t>{0, 0}));
    ASSERT_EQ(group.acquire_buffer(&third, false, 0), android::OK);
    EXPECT_TRUE(second != first && third == first);
    EXPECT_FALSE(AMediaFormat_getInt64(frame.format, "timeUs", &timeUs));
    second->meta_data().setInt64(kKeyTime, 1);
    owned.reset();  // leaves the framework's buffers and their formats alone
    EXPECT_TRUE(AMediaFormat_getInt64(other.format, "timeUs", &timeUs));
    EXPECT_EQ(frame.releases * 10 + other.releases, 10);
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
