#include <errno.h>
#include <media/stagefright/foundation/ADebug.h>
#include <media/stagefright/foundation/AMessage.h>
#include <standin/looper_control.h>

#include <functional>
#include <thread>

#include "TestSupport.h"

using namespace android;

namespace {

// Hands each message to a function.
struct Handler : AHandler {
    using Function = std::function<void(const sp<AMessage>&)>;
    explicit Handler(Function function) : function(std::move(function)) {}
    void onMessageReceived(const sp<AMessage>& message) override { function(message); }
    Function function;
};

// Counts how many of its kind are alive.
struct Tracked : RefBase {
    explicit Tracked(std::atomic<int>* alive) : alive(alive) { alive->fetch_add(1); }
    ~Tracked() override { alive->fetch_sub(1); }
    std::atomic<int>* alive;
};

void reply(const sp<AMessage>& message, int32_t value = 0) {
    sp<AReplyToken> token;
    CHECK(message->senderAwaitsResponse(&token));
    sp<AMessage> response = new AMessage;
    response->setInt32("value", value);
    CHECK_EQ(response->postReply(token), OK);
}

constexpr uint32_t kFence = 0x66656e63;

// A looper and a handler that records the codes it gets and answers fences.
struct LooperTest : testing::Test {
    LooperTest() { looper->registerHandler(handler); }
    ~LooperTest() override {
        looper->stop();
        standin::useSystemLooperTime();
    }

    sp<AMessage> message(uint32_t what) { return new AMessage(what, handler); }

    // Everything that was due before has been delivered when it returns.
    std::vector<uint32_t> delivered() {
        sp<AMessage> response;
        EXPECT_EQ(message(kFence)->postAndAwaitResponse(&response), OK);
        return std::exchange(codes, {});
    }

    sp<ALooper> looper = new ALooper;
    std::vector<uint32_t> codes;
    sp<Handler> handler = new Handler([this](const sp<AMessage>& message) {
        if (message->what() == kFence) {
            reply(message);
        } else {
            codes.push_back(message->what());
        }
    });
};

// Owns its looper as the packet reader of an extractor does.
struct Owner : AHandler {
    explicit Owner(Latch* gate, std::atomic<int>* alive)
        : gate(gate), tracked(new Tracked(alive)) {}
    ~Owner() override {
        looper->unregisterHandler(id());
        looper->stop();
    }
    void start() {
        looper->setName("owned");
        CHECK_EQ(looper->start(), OK);
        looper->registerHandler(this);
    }
    void onMessageReceived(const sp<AMessage>&) override {
        if (gate != nullptr) gate->wait();
    }
    Latch* gate;
    sp<Tracked> tracked;
    sp<ALooper> looper = new ALooper;
};

}  // namespace

TEST_F(LooperTest, Messages_ComeByTimeAndThenInPostingOrder) {
    standin::setLooperTimeUs(1000);
    looper->start();
    const struct {
        uint32_t what;
        int64_t delayUs;
    } posts[] = {{1, 30}, {2, 0}, {3, 10}, {4, 10}, {5, -7}, {6, 30}, {7, 9}, {8, INT64_MAX}};
    for (const auto& post : posts)
        EXPECT_EQ(message(post.what)->post(post.delayUs), OK);
    EXPECT_EQ(delivered(), (std::vector<uint32_t>{2, 5}));
    standin::setLooperTimeUs(1009);
    message(9)->post();
    EXPECT_EQ(delivered(), (std::vector<uint32_t>{7, 9}));
    standin::setLooperTimeUs(1029);
    EXPECT_EQ(delivered(), (std::vector<uint32_t>{3, 4}));
    standin::setLooperTimeUs(5000);
    EXPECT_EQ(delivered(), (std::vector<uint32_t>{1, 6}));
}

TEST_F(LooperTest, DelayedMessage_ComesByTheSystemClock) {
    Latch came;
    int64_t cameUs = 0;
    handler->function = [&](const sp<AMessage>&) {
        cameUs = ALooper::GetNowUs();
        came.open();
    };
    looper->start();
    int64_t postedUs = ALooper::GetNowUs();
    message(1)->post(3000);
    came.wait();
    EXPECT_GE(cameUs, postedUs + 3000);
}

TEST_F(LooperTest, SeveralPosters_KeepEachOnesOrder) {
    looper->start();
    constexpr uint32_t kEach = 5000;
    std::vector<std::thread> posters;
    for (uint32_t p = 0; p < 3; ++p) {
        posters.emplace_back([this, p] {
            for (uint32_t i = 0; i < kEach; ++i)
                message(p << 16 | i)->post();
        });
    }
    for (auto& poster : posters)
        poster.join();
    uint32_t next[3] = {};
    for (uint32_t code : delivered())
        ASSERT_EQ(code & 0xffff, next[code >> 16]++);
    for (uint32_t count : next)
        EXPECT_EQ(count, kEach);
}

TEST_F(LooperTest, Posting_AllocatesTheMessageAndItsCountersOnly) {
    if (!allocationsAreCounted()) GTEST_SKIP() << "a sanitizer owns the allocator";
    looper->start();
    constexpr size_t kMessages = 1000;
    codes.reserve(2 * kMessages);
    size_t before = 0;
    for (int round = 0; round < 2; ++round) {  // the first one grows the queue
        before = allocationCount();
        for (size_t i = 0; i < kMessages; ++i) {
            sp<AMessage> packet = message(1);
            packet->setInt32("stream_index", 3);
            packet->post();
            if (i % 100 == 99) {
                sp<AMessage> response;
                message(kFence)->postAndAwaitResponse(&response);
            }
        }
    }
    // Each of the ten fences makes a handful of objects.
    EXPECT_LE(allocationCount() - before, 2 * kMessages + 100);
}

TEST_F(LooperTest, WaitingSender_GetsTheReplyOnce) {
    sp<AReplyToken> kept;
    handler->function = [&](const sp<AMessage>& message) {
        EXPECT_TRUE(message->senderAwaitsResponse(&kept));
        sp<AReplyToken> again;
        EXPECT_FALSE(message->senderAwaitsResponse(&again)) << "taken before";
        // Answered later, by another thread.
        std::thread([token = kept] {
            sp<AMessage> response = new AMessage;
            response->setInt32("value", 42);
            EXPECT_EQ(response->postReply(token), OK);
        }).detach();
    };
    looper->start();
    sp<AMessage> response;
    ASSERT_EQ(message(1)->postAndAwaitResponse(&response), OK);
    int32_t value = 0;
    EXPECT_TRUE(response->findInt32("value", &value));
    EXPECT_EQ(value, 42);
    EXPECT_EQ(sp<AMessage>(new AMessage)->postReply(kept), -EBUSY);
    EXPECT_EQ(sp<AMessage>(new AMessage)->postReply(nullptr), -ENOENT);
}

TEST_F(LooperTest, ReplyThatCannotCome_EndsTheWait) {
    sp<AMessage> response;
    EXPECT_EQ(message(1)->postAndAwaitResponse(&response), -ENOENT) << "not started";

    looper->start();
    handler->function = [](const sp<AMessage>& message) {
        sp<AReplyToken> dropped;
        message->senderAwaitsResponse(&dropped);
    };
    EXPECT_EQ(message(1)->postAndAwaitResponse(&response), -ENOENT) << "token dropped";

    sp<AMessage> forGone = new AMessage(1, sp<Handler>(new Handler(nullptr)));
    EXPECT_EQ(forGone->postAndAwaitResponse(&response), -ENOENT) << "never registered";
    sp<Handler> other = new Handler(nullptr);
    looper->registerHandler(other);
    forGone->setTarget(other);
    looper->unregisterHandler(other->id());
    EXPECT_EQ(forGone->postAndAwaitResponse(&response), -ENOENT) << "unregistered";
    looper->registerHandler(other);
    forGone->setTarget(other);
    other.clear();
    EXPECT_EQ(forGone->postAndAwaitResponse(&response), -ENOENT) << "handler gone";

    sp<AMessage> late = message(1);
    looper.clear();
    EXPECT_EQ(late->postAndAwaitResponse(&response), -ENOENT) << "looper gone";
    EXPECT_EQ(handler->id(), 0) << "free for another looper";
    EXPECT_EQ(late->post(), -ENOENT);
    EXPECT_EQ(response, nullptr);
    looper = new ALooper;
}

TEST_F(LooperTest, Stop_EndsWaitsAndDestroysWhatIsQueued) {
    std::atomic<int> alive{0};
    Latch entered;
    Latch leave;
    std::atomic<bool> left{false};
    std::atomic<int> calls{0};
    sp<AReplyToken> kept;
    handler->function = [&](const sp<AMessage>& message) {
        calls.fetch_add(1);
        message->senderAwaitsResponse(&kept);
        entered.open();
        leave.wait();
        left = true;
    };
    looper->start();
    std::vector<std::thread> waiters;
    std::atomic<int> ended{0};
    auto wait = [&] {
        sp<AMessage> response;
        EXPECT_EQ(message(1)->postAndAwaitResponse(&response), -ENOENT);
        ended.fetch_add(1);
    };
    waiters.emplace_back(wait);  // being handled, its token kept
    entered.wait();
    waiters.emplace_back(wait);  // queued, or too late
    for (int i = 0; i < 100; ++i) {
        sp<AMessage> queued = message(2);
        queued->setObject("tracked", new Tracked(&alive));
        queued->post(i % 2 * 1000000000);
    }
    EXPECT_EQ(alive.load(), 100);

    std::thread stopper([&] {
        EXPECT_EQ(looper->stop(), OK);
        EXPECT_TRUE(left.load()) << "stop waits for the message that is being handled";
    });
    while (message(3)->post() == OK)
        std::this_thread::yield();
    leave.open();
    stopper.join();
    for (auto& waiter : waiters)
        waiter.join();
    EXPECT_EQ(ended.load(), 2);
    EXPECT_EQ(calls.load(), 1);
    EXPECT_EQ(alive.load(), 0);
    EXPECT_EQ(looper->stop(), INVALID_OPERATION);

    // A second life.
    handler->function = [](const sp<AMessage>& message) { reply(message, 7); };
    EXPECT_EQ(looper->start(), OK);
    EXPECT_EQ(looper->start(), INVALID_OPERATION);
    EXPECT_EQ(delivered(), std::vector<uint32_t>());
}

TEST_F(LooperTest, LastReferenceDroppedOnTheLoopersThread_EndsThreadAndQueue) {
    for (int round = 0; round < 300; ++round) {
        std::atomic<int> alive{0};
        Latch gate;
        sp<Owner> owner = new Owner(&gate, &alive);
        owner->start();
        for (int i = 0; i < 3; ++i) {
            sp<AMessage> queued = new AMessage(1, owner);
            queued->setObject("tracked", new Tracked(&alive));
            queued->post();
        }
        wp<Owner> weak = owner;
        // Held by the delivery alone from here on.
        while (owner->getStrongCount() == 1)
            std::this_thread::yield();
        owner.clear();
        ASSERT_NE(weak.promote(), nullptr);
        gate.open();
        standin::waitForLooperThreads();
        ASSERT_EQ(alive.load(), 0);
        ASSERT_EQ(weak.promote(), nullptr);
    }
}

TEST_F(LooperTest, LastReferenceRacingWithDelivery_IsSafeOnEitherThread) {
    std::atomic<int> alive{0};
    auto rounds = [&alive] {
        for (int round = 0; round < 1000; ++round) {
            sp<Owner> owner = new Owner(nullptr, &alive);
            owner->start();
            for (int i = 0; i < round % 4; ++i)
                sp<AMessage>(new AMessage(1, owner))->post();
            wp<Owner> weak = owner;
            owner.clear();
            weak.promote();
        }
    };
    std::thread other(rounds);
    rounds();
    other.join();
    standin::waitForLooperThreads();
    EXPECT_EQ(standin::looperThreadCount(), 0u);
    EXPECT_EQ(alive.load(), 0);
}

// One message in the queue several times, as a request that is posted again and again: while the
// looper's thread drops it because its handler is gone, stop() drops the copies behind it.
TEST_F(LooperTest, MessagePostedSeveralTimes_IsDroppedByTwoThreads) {
    for (int i = 0; i < 200; ++i) {
        sp<ALooper> other = new ALooper;
        sp<Handler> gone = new Handler([](const sp<AMessage>&) {});
        other->registerHandler(gone);
        sp<AMessage> request = new AMessage(1, gone);
        for (int copies = 0; copies < 50; ++copies)
            EXPECT_EQ(request->post(), OK);
        gone.clear();
        other->start();
        while (i % 2 == 1 && request->getStrongCount() > 40)
            std::this_thread::yield();
        EXPECT_EQ(other->stop(), OK);
        EXPECT_EQ(request->getStrongCount(), 1);
    }
}

TEST_F(LooperTest, RunOnTheCallingThread_ReturnsWhenAHandlerStopsIt) {
    handler->function = [this](const sp<AMessage>& message) {
        codes.push_back(message->what());
        if (message->what() == 2) looper->stop();
    };
    for (uint32_t what : {1, 2, 3})
        message(what)->post();
    EXPECT_EQ(looper->start(true), OK);
    EXPECT_EQ(codes, (std::vector<uint32_t>{1, 2}));
    EXPECT_EQ(looper->registerHandler(handler), INVALID_OPERATION) << "registered already";
}

TEST(LooperDeathTest, WaitingOnTheLoopersOwnThread_Aborts) {
    auto waitForSelf = [] {
        sp<ALooper> looper = new ALooper;
        sp<Handler> handler = new Handler([&](const sp<AMessage>& message) {
            sp<AMessage> response;
            message->dup()->postAndAwaitResponse(&response);
        });
        looper->registerHandler(handler);
        sp<AMessage>(new AMessage(1, handler))->post();
        looper->start(true);
    };
    EXPECT_DEATH(waitForSelf(), "CHECK\\(.*\\) failed");
}

TEST(Message, Fields_LastWriteWinsAndTypesAreKeptApart) {
    std::atomic<int> alive{0};
    sp<AMessage> message = new AMessage(1, nullptr);
    const std::string longName(40, 'n');
    int marker = 0;
    message->setInt32("a", 1);
    message->setInt64("a", 2);
    message->setPointer(longName.c_str(), &marker);
    message->setString("text", "one");
    message->setString("text", "two and more", 3);
    message->setObject("object", new Tracked(&alive));
    message->setObject("object", new Tracked(&alive));
    sp<AMessage> inner = new AMessage;
    inner->setInt32("deep", 5);
    message->setMessage("inner", inner);
    for (int i = 0; i < 20; ++i)
        message->setSize(("s" + std::to_string(i)).c_str(), 100u + i);
    EXPECT_EQ(alive.load(), 1);
    EXPECT_EQ(message->countEntries(), 25u);

    sp<AMessage> copy = message->dup();
    inner->setInt32("deep", 6);
    message->clear();
    EXPECT_EQ(message->countEntries(), 0u);
    EXPECT_EQ(alive.load(), 1) << "shared with the copy";

    int32_t int32 = -1;
    int64_t int64 = -1;
    size_t size = 0;
    void* pointer = nullptr;
    AString text;
    sp<AMessage> found;
    EXPECT_FALSE(copy->findInt32("a", &int32));
    EXPECT_FALSE(copy->findInt32("b", &int32));
    EXPECT_EQ(int32, -1);
    EXPECT_TRUE(copy->findInt64("a", &int64) && int64 == 2);
    EXPECT_TRUE(copy->findPointer(longName.c_str(), &pointer) && pointer == &marker);
    EXPECT_TRUE(copy->findString("text", &text) && text == "two");
    EXPECT_TRUE(copy->findSize("s19", &size) && size == 119);
    ASSERT_TRUE(copy->findMessage("inner", &found));
    EXPECT_TRUE(found->findInt32("deep", &int32) && int32 == 5);
    copy.clear();
    EXPECT_EQ(alive.load(), 0);
}
