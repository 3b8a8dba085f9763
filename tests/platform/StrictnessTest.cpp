// Where the stand-in is as strict as a device. The plug-in breaks none of these rules, so its own
// tests would pass over a kinder stand-in, and hide a plug-in that does break them.
#include <errno.h>
#include <gtest/gtest.h>
#include <media/NdkMediaFormat.h>
#include <media/stagefright/foundation/AMessage.h>
#include <standin/LogControl.h>

#include <functional>

using namespace android;

namespace {

struct Counted : RefBase {};

struct Handler : AHandler {
    std::function<void(const sp<AMessage>&)> handle;
    void onMessageReceived(const sp<AMessage>& message) override { handle(message); }
};

}  // namespace

TEST(StrictnessDeathTest, brokenOwnershipAborts) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH({ Counted().incStrong(nullptr); }, "destroyed with 1 strong references");
    EXPECT_DEATH({ Counted().decStrong(nullptr); }, "released twice");
}

TEST(Strictness, objectThatNoStrongPointerHeldIsLogged) {
    int lines = 0;
    standin::setLogHook(
            [](void* count, int, const char*, const char*) { ++*static_cast<int*>(count); },
            &lines);
    { Counted onStack; }
    EXPECT_EQ(lines, 1);
    standin::setLogHook(nullptr, nullptr);
}

TEST(Strictness, formatEntryIsFoundUnderItsLastTypeAlone) {
    AMediaFormat* format = AMediaFormat_new();
    AMediaFormat* empty = AMediaFormat_new();
    int32_t int32 = 0;
    AMediaFormat_setInt32(format, "key", 5);
    AMediaFormat_setInt64(format, "key", 6);
    AMediaFormat_setBuffer(format, "bytes", "x", 1);
    EXPECT_FALSE(AMediaFormat_getInt32(format, "key", &int32));
    EXPECT_STREQ(AMediaFormat_toString(format), "bytes: data(1 bytes), key: int64(6)");
    AMediaFormat_copy(format, empty);
    EXPECT_STREQ(AMediaFormat_toString(format), "");
    AMediaFormat_delete(empty);
    AMediaFormat_delete(format);
}

// A sender never waits for a reply that cannot come.
TEST(Strictness, waitEndsWithTheReplyThatCannotCome) {
    const sp<ALooper> looper = new ALooper;
    sp<Handler> handler = new Handler;
    looper->registerHandler(handler);
    sp<AMessage> response;
    const auto wait = [&](const sp<AMessage>& message) {
        return message->postAndAwaitResponse(&response);
    };
    EXPECT_EQ(wait(new AMessage(1, handler)), -ENOENT) << "not started";
    looper->start();
    sp<AReplyToken> token;
    handler->handle = [&](const sp<AMessage>& message) {
        EXPECT_TRUE(message->senderAwaitsResponse(&token));
        token.clear();
    };
    EXPECT_EQ(wait(new AMessage(1, handler)), -ENOENT) << "token dropped";
    handler->handle = [&](const sp<AMessage>& message) {
        EXPECT_TRUE(message->senderAwaitsResponse(&token));
        looper->stop();
    };
    EXPECT_EQ(wait(new AMessage(1, handler)), -ENOENT) << "stopped, the token kept";
    EXPECT_EQ(sp<AMessage>(new AMessage)->postReply(token), -ENOENT) << "nobody waits";
    EXPECT_EQ(sp<AMessage>(new AMessage)->postReply(token), -EBUSY) << "replied twice";

    const sp<ALooper> other = new ALooper;
    sp<Handler> gone = new Handler;
    other->registerHandler(gone);
    other->start();
    const sp<AMessage> late = new AMessage(1, gone);
    gone.clear();
    EXPECT_EQ(wait(late), -ENOENT) << "handler gone";
    EXPECT_EQ(response, nullptr);
}
