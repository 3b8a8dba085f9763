// The facade: an extractor that has no container, one whose container does not open, and what the
// facade itself adds to a container's answers.
#include <gtest/gtest.h>
#include <media/stagefright/foundation/AMessage.h>

#include "FakeFramework.h"
#include "OrvelExtractor2.h"
#include "OrvelSource2.h"
#include "ffmpeg/FFmpegObject.h"

namespace orvel {
namespace {

using android::AMessage;
using android::MediaTrackHelper;
using android::sp;
using test::WavSource;

sp<AMessage> messageWith(const AVInputFormat* format) {
    sp<AMessage> message = new AMessage;
    message->setPointer("ff-format", const_cast<AVInputFormat*>(format));
    return message;
}

TEST(Extractor, WithoutAnOpenedFile_HasNoTracks) {
    WavSource garbage(2000);
    garbage.bytes.assign(4096, 0x55);
    const struct {
        const char* name;
        sp<AMessage> message;
        android::status_t fileMetaStatus;
    } cases[] = {{"no message", nullptr, android::BAD_VALUE},
                 {"no format", new AMessage, android::BAD_VALUE},
                 {"null format", messageWith(nullptr), android::BAD_VALUE},
                 {"does not open", messageWith(av_find_input_format("wav")), android::OK}};
    for (const auto& test : cases) {
        const sp<OrvelExtractor2> extractor =
                new OrvelExtractor2(new OrvelDataSource(garbage.table()), test.message);
        const sp<OrvelMetaData> store = new OrvelMetaData;
        OrvelMetaData& meta = *store;
        EXPECT_EQ(extractor->initCheck(), android::NO_INIT) << test.name;
        EXPECT_EQ(extractor->countTracks(), 0u) << test.name;
        EXPECT_EQ(extractor->getTrack(0), nullptr) << test.name;
        EXPECT_EQ(extractor->getTrackMetaData(meta, 0, 1), android::BAD_VALUE) << test.name;
        EXPECT_EQ(extractor->getMetaData(meta), test.fileMetaStatus) << test.name;
    }
}

TEST(Source, WrongOrderOrRefusedSeek_AbortsOrEndsTheRead) {
    WavSource bytes(100);
    // Without an opened container there is no reader: every command is refused, and no thread runs
    // beside the death tests.
    const sp<FFmpegObject> object = new FFmpegObject(new OrvelDataSource(bytes.table()), nullptr);
    const sp<OrvelSource2> source = new OrvelSource2(object, 0);
    IOrvelMediaBuffer* buffer = reinterpret_cast<IOrvelMediaBuffer*>(&bytes);
    EXPECT_DEATH(source->stop(), "CHECK\\(mStarted\\) failed");
    EXPECT_DEATH(source->read(&buffer, nullptr), "CHECK\\(mStarted\\) failed");
    EXPECT_EQ(source->start(new OrvelMetaData), android::OK);
    EXPECT_DEATH(source->start(new OrvelMetaData), "CHECK\\(!mStarted\\) failed");
    const MediaTrackHelper::ReadOptions seek(android::SEEK, 0);
    EXPECT_EQ(source->read(&buffer, &seek), android::UNKNOWN_ERROR);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(source->stop(), android::OK);
}

}  // namespace
}  // namespace orvel
