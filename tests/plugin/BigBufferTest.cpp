// Big-buffer mode: an MP3 file's packets fill a buffer as far as they fit in whole.
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include "FakeFramework.h"
#include "OrvelDataSource.h"
#include "OrvelMediaBuffer.h"
#include "ffmpeg/FFmpegObject.h"

namespace orvel {
namespace {

constexpr size_t kFrameSize = 417;

// Frames of MPEG-1 Layer III, 128 kb/s at 44.1 kHz (ISO/IEC 11172-3), each with its number in it.
struct Mp3Source : test::WavSource {
    explicit Mp3Source(size_t frames) : WavSource(0) {
        bytes.assign(frames * kFrameSize, 0);
        for (size_t i = 0; i < frames; ++i) {
            uint8_t* frame = &bytes[i * kFrameSize];
            const uint8_t header[] = {0xFF, 0xFB, 0x90, 0x64};
            memcpy(frame, header, sizeof(header));
            frame[kFrameSize - 1] = static_cast<uint8_t>(i);
        }
    }
};

TEST(BigBuffer, HoldsThePacketsThatFitInWhole) {
    const struct {
        size_t capacity;
        int32_t extraFlags;
        std::vector<size_t> frames;  // in each buffer
    } cases[] = {
            {4096, 2, {9, 9, 9, 9, 4}},
            {9 * kFrameSize, 2, {9, 9, 9, 9, 4}},
            {9 * kFrameSize - 1, 2, {8, 8, 8, 8, 8}},
            {4096, 0, std::vector<size_t>(40, 1)},
    };
    ASSERT_EQ(property_set("vendor.audio.parser.ip.buffer.size", "65536"), 0);
    Mp3Source source(40);
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.capacity << " bytes, flags " << test.extraFlags);
        test::FakeBuffer buffer(test.capacity);
        test::FakeGroup group;
        while (group.answers.size() < test.frames.size())
            group.answers.push_back({&buffer, AMEDIA_OK});
        android::MediaBufferGroupHelper helper(&group.table);
        const android::sp<FFmpegObject> object =
                new FFmpegObject(new OrvelDataSource(source.table()), av_find_input_format("mp3"));
        ASSERT_EQ(object->initCheck(), android::OK);
        object->setPlayBackMode(1);
        object->addTrackInfos();
        const android::sp<OrvelMetaData> params = new OrvelMetaData;
        params->setPointer(kKeyBufferGroup, &helper);
        params->setInt32(kKeyExtraFlags, test.extraFlags);
        ASSERT_EQ(object->start(0, params), android::OK);
        int32_t granted = -1;
        EXPECT_TRUE(params->findInt32(kKeyBigBufferFlags, &granted));
        EXPECT_EQ(granted, test.extraFlags != 0 ? 1 : 0);

        size_t next = 0;
        IOrvelMediaBuffer* out = nullptr;
        for (size_t frames : test.frames) {
            ASSERT_EQ(object->dequeueBuffer(0, &out, nullptr), android::OK);
            ASSERT_EQ(out->range_length(), frames * kFrameSize);
            EXPECT_EQ(memcmp(out->data(), &source.bytes[next * kFrameSize], out->range_length()),
                      0);
            next += frames;
        }
        EXPECT_EQ(object->dequeueBuffer(0, &out, nullptr), android::ERROR_END_OF_STREAM);
        EXPECT_EQ(object->stop(0), android::OK);
    }
    property_set("vendor.audio.parser.ip.buffer.size", "");
}

}  // namespace
}  // namespace orvel
