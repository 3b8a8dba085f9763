// Big-buffer mode: an MP3 file's packets fill a buffer as far as they fit in whole.
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>

#include "FakeFramework.h"
#include "base/OrvelDataSource.h"
#include "base/OrvelMediaBuffer.h"
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
    constexpr int32_t kAsked = 2;
    using Frames = std::vector<size_t>;  // in each buffer
    const Frames single(40, 1);
    const struct {
        const char* name;
        size_t capacity;
        int32_t extraFlags;
        Frames frames;
        const char* sizeProperty = "65536";
        int local = 1;
        const char* demuxer = "mp3";
    } cases[] = {
            {"granted", 4096, kAsked, {9, 9, 9, 9, 4}},
            {"just fits", 9 * kFrameSize, kAsked, {9, 9, 9, 9, 4}},
            {"a byte too small", 9 * kFrameSize - 1, kAsked, {8, 8, 8, 8, 8}},
            {"largest size", 4096, kAsked, {9, 9, 9, 9, 4}, "262144"},
            {"not asked for", 4096, 0, single},
            {"no size", 4096, kAsked, single, "0"},
            {"size over 256 KiB", 4096, kAsked, single, "262145"},
            {"streamed", 4096, kAsked, single, "65536", 0},
            {"other container", 4096, kAsked, {}, "65536", 1, "wav"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        ASSERT_EQ(property_set("vendor.audio.parser.ip.buffer.size", test.sizeProperty), 0);
        const bool isGranted = test.frames.size() == 5;
        const bool isMp3 = !test.frames.empty();
        Mp3Source mp3(40);
        test::WavSource wav(4000);
        test::WavSource& source = isMp3 ? mp3 : wav;
        test::FakeBuffer buffer(test.capacity);
        test::FakeGroup group;
        group.answers.assign(100, {&buffer, AMEDIA_OK});
        android::MediaBufferGroupHelper helper(&group.table);
        const android::sp<FFmpegObject> object = new FFmpegObject(
                new OrvelDataSource(source.table()), av_find_input_format(test.demuxer));
        ASSERT_EQ(object->initCheck(), android::OK);
        object->setPlayBackMode(test.local);
        object->addTrackInfos();
        const auto start = [&](int32_t extraFlags) {
            const android::sp<OrvelMetaData> params = new OrvelMetaData;
            params->setPointer(kKeyBufferGroup, &helper);
            params->setInt32(kKeyExtraFlags, extraFlags);
            EXPECT_EQ(object->start(0, params), android::OK);
            int32_t granted = -1;
            EXPECT_TRUE(params->findInt32(kKeyBigBufferFlags, &granted));
            return granted;
        };
        EXPECT_EQ(start(test.extraFlags), isGranted ? 1 : 0);
        size_t next = 0;
        IOrvelMediaBuffer* out = nullptr;
        for (size_t frames : test.frames) {
            ASSERT_EQ(object->dequeueBuffer(0, &out, nullptr), android::OK);
            ASSERT_EQ(out->range_length(), frames * kFrameSize);
            EXPECT_EQ(memcmp(out->data(), &source.bytes[next * kFrameSize], out->range_length()),
                      0);
            next += frames;
        }
        if (isMp3) {
            EXPECT_EQ(object->dequeueBuffer(0, &out, nullptr), android::ERROR_END_OF_STREAM);
            // A seek's read gives one packet; so does the track once it is started without them.
            const android::MediaTrackHelper::ReadOptions toStart(android::SEEK, 0);
            for (const auto* options : {&toStart, static_cast<decltype(&toStart)>(nullptr)}) {
                if (options == nullptr) {
                    object->stop(0);
                    EXPECT_EQ(start(0), 0);
                }
                EXPECT_EQ(object->seek(0, 0, 0), android::OK);
                object->flush(0);
                ASSERT_EQ(object->dequeueBuffer(0, &out, options), android::OK);
                EXPECT_EQ(out->range_length(), kFrameSize);
            }
        }
        EXPECT_EQ(object->stop(0), android::OK);
    }
    property_set("vendor.audio.parser.ip.buffer.size", "");
}

}  // namespace
}  // namespace orvel
