// The adapters through the framework's C tables, over scripted extractors and tracks.
#include <gtest/gtest.h>
#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/MediaErrors.h>
#include <stdlib.h>

#include "FakeFramework.h"
#include "WrapOrvelExtractor.h"
#include "WrapOrvelSource.h"
#include "ffmpeg/FFmpegObject.h"

namespace orvel {
namespace {

using android::MediaBufferGroupHelper;
using android::MediaTrackHelper;
using android::sp;
using android::status_t;
using test::FakeGroup;

// A track that answers with the status that the test set, and keeps what it was asked.
struct FakeTrack : OrvelSource2 {
    explicit FakeTrack(bool* diedFirst) : OrvelSource2(nullptr, 0), diedFirst(diedFirst) {}
    // The group's helper goes after the track: here it can still be asked.
    ~FakeTrack() override { *diedFirst = group != nullptr && group->has_buffers(); }

    status_t start(sp<OrvelMetaData> params) override {
        void* pointer = nullptr;
        params->findPointer(kKeyBufferGroup, &pointer);
        group = static_cast<MediaBufferGroupHelper*>(pointer);
        return status;
    }
    status_t stop() override { return status; }
    status_t getFormat(OrvelMetaData& meta) override {
        meta.setInt32(kKeyWidth, 1920);
        return status;
    }
    status_t read(IOrvelMediaBuffer** out,
                  const MediaTrackHelper::ReadOptions* /*options*/) override {
        *out = nullptr;
        return status;
    }

    status_t status = android::OK;
    MediaBufferGroupHelper* group = nullptr;
    bool* const diedFirst;
};

struct FakeExtractor : OrvelExtractor2 {
    FakeExtractor() : OrvelExtractor2(nullptr, nullptr) {}
    status_t getTrackMetaData(OrvelMetaData& meta, size_t index, uint32_t flags) override {
        meta.setInt32(kKeyWidth, static_cast<int32_t>(index * 100 + flags));
        return status;
    }
    status_t getMetaData(OrvelMetaData& meta) override {
        meta.setInt32(kKeyWidth, 55);
        return status;
    }
    status_t status = android::OK;
};

struct FrameworkAdapter : testing::Test {
    ~FrameworkAdapter() override {
        track->free(track->data);
        free(track);
        extractor->free(extractor->data);
        free(extractor);
        AMediaFormat_delete(format);
    }
    int32_t width() {
        int32_t value = -1;
        AMediaFormat_getInt32(format, "width", &value);
        return value;
    }

    bool trackDiedFirst = false;
    FakeTrack* const fakeTrack = new FakeTrack(&trackDiedFirst);
    FakeExtractor* const fakeExtractor = new FakeExtractor;
    android::CMediaTrack* const track = android::wrap(new WrapOrvelSource(fakeTrack));
    android::CMediaExtractor* const extractor =
            android::wrap(new WrapOrvelExtractor(fakeExtractor));
    AMediaFormat* const format = AMediaFormat_new();
    FakeGroup group;
};

TEST_F(FrameworkAdapter, Start_HandsOverAGroupAndReplacesItWhenRepeated) {
    FakeGroup second;
    group.answers = {{nullptr, AMEDIA_OK}};
    EXPECT_EQ(track->start(track->data, &second.table), AMEDIA_OK);
    EXPECT_FALSE(fakeTrack->group->has_buffers());
    EXPECT_EQ(track->start(track->data, &group.table), AMEDIA_OK);
    EXPECT_TRUE(fakeTrack->group->has_buffers());
    track->free(track->data);
    track->data = nullptr;
    EXPECT_TRUE(trackDiedFirst);
}

TEST_F(FrameworkAdapter, Failure_IsTranslatedAndCopiesNothingOut) {
    const struct {
        status_t plugin;
        media_status_t framework;
    } cases[] = {{android::ERROR_END_OF_STREAM, AMEDIA_ERROR_END_OF_STREAM},
                 {android::ERROR_IO, AMEDIA_ERROR_IO},
                 {android::WOULD_BLOCK, AMEDIA_ERROR_UNKNOWN},
                 {android::BAD_VALUE, AMEDIA_ERROR_UNKNOWN}};
    AMediaFormat_setInt32(format, "width", 7);
    for (const auto& test : cases) {
        fakeTrack->status = fakeExtractor->status = test.plugin;
        auto* const untouched = reinterpret_cast<android::CMediaBuffer*>(this);
        android::CMediaBuffer* out = untouched;
        EXPECT_EQ(track->start(track->data, &group.table), test.framework);
        EXPECT_EQ(track->read(track->data, &out, 0, 0), test.framework);
        EXPECT_EQ(track->stop(track->data), test.framework);
        EXPECT_EQ(track->getFormat(track->data, format), test.framework);
        EXPECT_EQ(extractor->getMetaData(extractor->data, format), test.framework);
        EXPECT_EQ(extractor->getTrackMetaData(extractor->data, format, 0, 0), test.framework);
        EXPECT_TRUE(out == untouched && width() == 7) << test.plugin;
    }
}

}  // namespace
}  // namespace orvel
