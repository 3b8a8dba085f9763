// Orders of commands that threads come to by chance: the looper is held at a line that it logs, or
// behind a reply, until the messages that matter are in its queue.
#include <gtest/gtest.h>
#include <media/MediaExtractorPluginHelper.h>
#include <media/stagefright/foundation/AMessage.h>
#include <standin/LogControl.h>
#include <standin/LooperControl.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>

#include "base/OrvelDataSource.h"
#include "base/OrvelMediaBuffer.h"
#include "ffmpeg/FFmpegObject.h"
#include "framework/BufferGroup.h"
#include "framework/MemorySource.h"
#include "support/Oracle.h"
#include "support/SyntheticFiles.h"

namespace orvel {
namespace {

using android::AMessage;
using android::AReplyToken;
using android::sp;

// Holds one thread, which comes to arrive(), until open().
class Gate {
  public:
    void arrive() {
        std::unique_lock<std::mutex> lock(mLock);
        mHeld = true;
        mChanged.notify_all();
        mChanged.wait(lock, [this] { return mOpen; });
    }
    void waitUntilHeld() {
        std::unique_lock<std::mutex> lock(mLock);
        mChanged.wait(lock, [this] { return mHeld; });
    }
    void open() {
        const std::lock_guard<std::mutex> lock(mLock);
        mOpen = true;
        mChanged.notify_all();
    }

  private:
    std::mutex mLock;
    std::condition_variable mChanged;
    bool mHeld = false, mOpen = false;
};

std::atomic<Gate*> gAfterReply{nullptr};

}  // namespace

// The linker diverts the plug-in's replies to here.
extern "C" {
android::status_t __real__ZN7android8AMessage9postReplyERKNS_2spINS_11AReplyTokenEEE(
        AMessage* message, const sp<AReplyToken>& token);
android::status_t __wrap__ZN7android8AMessage9postReplyERKNS_2spINS_11AReplyTokenEEE(
        AMessage* message, const sp<AReplyToken>& token) {
    const android::status_t status =
            __real__ZN7android8AMessage9postReplyERKNS_2spINS_11AReplyTokenEEE(message, token);
    if (Gate* gate = gAfterReply) gate->arrive();
    return status;
}
}

namespace {

struct Steered : testing::Test {
    // The looper may be the last to let go of the reader, and of the gate.
    ~Steered() override {
        for (const auto& started : helpers)
            object->stop(started.first);
        object.clear();
        standin::waitForLooperThreads();
        standin::setLogHook(nullptr, nullptr);
    }

    void open(const char* name) {
        source = std::make_unique<host::MemorySource>(test::mediaBytes(name));
        oracle = test::Oracle::read(*source, "mov");
        object =
                new FFmpegObject(new OrvelDataSource(source->table()), av_find_input_format("mov"));
        ASSERT_EQ(object->initCheck(), android::OK);
        object->addTrackInfos();
        standin::setLogHook(
                [](void* self, int, const char*, const char* line) {
                    auto* steered = static_cast<Steered*>(self);
                    if (steered->heldLine == line) steered->gates[0].arrive();
                },
                this);
    }

    void start(int track) {
        helpers[track] = std::make_unique<android::MediaBufferGroupHelper>(groups[track].table());
        const sp<OrvelMetaData> params = new OrvelMetaData;
        params->setPointer(kKeyBufferGroup, helpers[track].get());
        object->start(track, params);
    }

    // The time of the track's next sample.
    int64_t read(int track) {
        IOrvelMediaBuffer* buffer = nullptr;
        int64_t timeUs = -1;
        EXPECT_EQ(object->dequeueBuffer(track, &buffer, nullptr), android::OK);
        if (buffer == nullptr) return timeUs;
        buffer->meta_data().findInt64(kKeyTime, &timeUs);
        buffer->release();
        return timeUs;
    }

    // Where a seek to the time lands: the last sample before it that can be decoded alone.
    int64_t landing(size_t stream, int64_t timeUs) {
        int64_t found = -1;
        for (const test::Sample& sample : oracle.streams[stream].samples)
            if (sample.sync && sample.timeUs <= timeUs) found = sample.timeUs;
        return found;
    }

    // The looper is held as it begins to start the track; what is posted waits from then on.
    std::future<void> holdAtStart(int track) {
        groups[track];
        heldLine = "start track: " + std::to_string(track);
        auto starting = std::async(std::launch::async, [this, track] { start(track); });
        gates[0].waitUntilHeld();
        standin::takeLongestLooperQueue();
        queued = 0;
        return starting;
    }

    // On a thread of its own; returns when the looper's queue holds its message, too.
    template <typename Work>
    auto post(Work work) {
        auto result = std::async(std::launch::async, work);
        for (const size_t wanted = queued + 1; queued < wanted; std::this_thread::yield())
            queued = std::max(queued, standin::takeLongestLooperQueue());
        return result;
    }

    std::unique_ptr<host::MemorySource> source;
    test::Oracle oracle;
    std::map<int, host::BufferGroup> groups;
    std::map<int, std::unique_ptr<android::MediaBufferGroupHelper>> helpers;
    std::string heldLine;
    std::deque<Gate> gates = std::deque<Gate>(1);
    size_t queued = 0;
    sp<FFmpegObject> object;
};

// Two tracks are sought by a thread each. The flush of the first seek comes after the second one
// was asked for; nothing may be read between that seek and its own flush, which throws it away.
TEST_F(Steered, SeekBehindTheFlushOfAnother_LosesNoSample) {
    open("mov_sounds.mov");
    for (int track : {0, 1, 6})
        start(track);
    ASSERT_EQ(object->seek(0, 300000, android::SEEK_PREVIOUS_SYNC), android::OK);
    auto starting = holdAtStart(2);
    auto flushing = post([&] { object->flush(0); });
    auto seeking = post([&] {
        EXPECT_EQ(object->seek(1, 600000, android::SEEK_PREVIOUS_SYNC), android::OK);
        object->flush(1);
        return read(1);
    });
    auto reading = post([&] { return read(6); });
    gates[0].open();
    EXPECT_EQ(seeking.get(), landing(1, 600000));
    EXPECT_EQ(reading.get(), landing(6, 600000));
}

TEST_F(Steered, StartBetweenASeekAndItsFlush_LosesNoSample) {
    open("mov_sounds.mov");
    for (int track : {0, 6})
        start(track);
    ASSERT_EQ(object->seek(0, 300000, android::SEEK_PREVIOUS_SYNC), android::OK);
    auto starting = holdAtStart(2);
    auto reading = post([&] { return read(6); });
    gates[0].open();
    starting.get();
    object->flush(0);  // asks for packets on behalf of the read that waits
    EXPECT_EQ(reading.get(), landing(6, 300000));
    EXPECT_EQ(read(0), landing(0, 300000));
}

TEST_F(Steered, FlushOfTextUnderASeekOfTheVideo_LosesNoSample) {
    open("mp4_two_texts.mp4");
    for (int track : {0, 1, 2})
        start(track);
    ASSERT_EQ(object->seek(2, 900000, android::SEEK_PREVIOUS_SYNC), android::OK);
    ASSERT_EQ(object->seek(0, 1000000, android::SEEK_PREVIOUS_SYNC), android::OK);
    auto starting = holdAtStart(3);
    auto flushing = post([&] { object->flush(2); });
    auto reading = post([&] { return read(1); });
    gates[0].open();
    flushing.get();
    object->flush(0);
    EXPECT_EQ(read(0), landing(0, 1000000));
    reading.get();
}

// The thread that waits for a reply may release the container, and with it the source, at once: the
// looper holds no reference any more when it has replied.
TEST_F(Steered, ReplyToACommand_IsTheLastThatTheLooperDoesWithTheContainer) {
    open("mov_sounds.mov");
    const std::pair<const char*, std::function<void()>> commands[] = {
            {"start", [&] { start(0); }},
            {"seek", [&] { object->seek(0, 300000, android::SEEK_PREVIOUS_SYNC); }},
            {"flush", [&] { object->flush(0); }},
            {"stop", [&] {
                 object->stop(0);
                 helpers.erase(0);
             }}};
    for (const auto& [name, command] : commands) {
        Gate& afterReply = gates.emplace_back();
        gAfterReply = &afterReply;
        command();
        afterReply.waitUntilHeld();
        EXPECT_EQ(object->getStrongCount(), 1) << name;
        gAfterReply = nullptr;
        afterReply.open();
    }
}

}  // namespace
}  // namespace orvel
