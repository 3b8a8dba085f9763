// The inner state of a looper: its queue, its thread, and the senders that wait for replies. A part
// of its own so that it can outlive the ALooper, which may be released on the looper's own thread.
#pragma once

#include <media/stagefright/foundation/AMessage.h>
#include <pthread.h>
#include <utils/RefBase.h>

#include <string>
#include <vector>

#include "Monitor.h"

namespace android {

// References: the ALooper, the thread while it runs, reply tokens, and each sender while it waits.
// Messages are never destroyed under mLock: what they refer to may call back.
class LooperCore : public RefBase {
  public:
    // As those of ALooper.
    status_t start(const std::string& name);
    status_t stop();
    status_t post(const sp<AMessage>& message);

    // Posts a message with a reply token and waits.
    status_t postAndAwait(const sp<AMessage>& message, sp<AMessage>* response);
    // -ENOENT when that sender does not wait any more.
    status_t reply(uint64_t waiterId, const sp<AMessage>& response);
    // The token is gone or was dropped with its message: ends the wait of its sender, if any.
    void abandon(uint64_t waiterId) { reply(waiterId, nullptr); }

  private:
    enum class State { NotStarted, Running, Stopped };

    // On the stack of a sender that waits.
    struct Waiter {
        uint64_t id;
        bool ended = false;
        sp<AMessage> response;
        Waiter* next = nullptr;
    };

    static void* threadMain(void* arguments);
    void run();
    sp<AMessage> nextMessage();
    // False when there is no such waiter. The caller signals mWaitEnded.
    bool endWait(uint64_t waiterId, const sp<AMessage>& response)
            ORVEL_TSA(requires_capability(mLock));

    standin::Mutex mLock;
    standin::Condition mQueueChanged;
    // A waiter's end. One for all of them, so that it can be signalled after mLock is released: a
    // woken sender that finds it held would go back to sleep.
    standin::Condition mWaitEnded;

    // What is before mHead is delivered: a vector with a moving start, so that posting does not
    // allocate once the queue has had its usual length.
    std::vector<sp<AMessage>> mQueue ORVEL_TSA(guarded_by(mLock));
    size_t mHead ORVEL_TSA(guarded_by(mLock)) = 0;
    State mState ORVEL_TSA(guarded_by(mLock)) = State::NotStarted;
    pthread_t mThread ORVEL_TSA(guarded_by(mLock)) = {};  // while running

    Waiter* mWaiters ORVEL_TSA(guarded_by(mLock)) = nullptr;
    uint64_t mLastWaiterId ORVEL_TSA(guarded_by(mLock)) = 0;
};

}  // namespace android
