#define LOG_TAG "ALooper"

#include "LooperCore.h"

#include <errno.h>
#include <media/stagefright/foundation/ADebug.h>

#include <memory>

#include "LooperThreads.h"

namespace android {

using standin::Autolock;

namespace {

constexpr size_t kMaxThreadName = 15;

struct ThreadArguments {
    sp<LooperCore> core;
    std::string name;
};

}  // namespace

status_t LooperCore::start(const std::string& name) {
    auto arguments = std::make_unique<ThreadArguments>();
    arguments->core = this;
    arguments->name = name.substr(0, kMaxThreadName);
    Autolock hold(mLock);
    if (mState != State::NotStarted) return INVALID_OPERATION;
    standin::addLooperThread();
    // Under the lock: the thread must find mThread set when it asks who it is.
    const int error = pthread_create(&mThread, nullptr, threadMain, arguments.get());
    if (error != 0) {
        standin::removeLooperThread();
        ALOGE("no thread for looper \"%s\": error %d", name.c_str(), error);
        return -error;
    }
    arguments.release();
    mState = State::Running;
    return OK;
}

void* LooperCore::threadMain(void* data) {
    std::unique_ptr<ThreadArguments> arguments(static_cast<ThreadArguments*>(data));
    if (!arguments->name.empty()) pthread_setname_np(pthread_self(), arguments->name.c_str());
    arguments->core->run();
    arguments.reset();
    standin::removeLooperThread();
    return nullptr;
}

void LooperCore::run() {
    while (sp<AMessage> message = nextMessage())
        message->deliver();
}

sp<AMessage> LooperCore::nextMessage() {
    Autolock hold(mLock);
    while (mState == State::Running && mHead == mQueue.size())
        mQueueChanged.wait(mLock);
    if (mState != State::Running) return nullptr;
    sp<AMessage> message = std::move(mQueue[mHead]);
    if (++mHead == mQueue.size()) {
        mQueue.clear();
        mHead = 0;
    }
    return message;
}

status_t LooperCore::post(const sp<AMessage>& message) {
    {
        Autolock hold(mLock);
        if (mState == State::Stopped) return -ENOENT;
        // Full of messages that are gone: move to the front rather than grow.
        if (mQueue.size() == mQueue.capacity() && mHead > mQueue.size() / 2) {
            mQueue.erase(mQueue.begin(), mQueue.begin() + static_cast<ptrdiff_t>(mHead));
            mHead = 0;
        }
        mQueue.push_back(message);
        standin::noteQueueLength(mQueue.size() - mHead);
    }
    mQueueChanged.signal();
    return OK;
}

status_t LooperCore::stop() {
    std::vector<sp<AMessage>> undelivered;
    pthread_t thread;
    {
        Autolock hold(mLock);
        if (mState != State::Running) return INVALID_OPERATION;
        mState = State::Stopped;
        thread = mThread;
        mQueue.erase(mQueue.begin(), mQueue.begin() + static_cast<ptrdiff_t>(mHead));
        undelivered.swap(mQueue);
        mHead = 0;
        mQueueChanged.broadcast();
    }
    // Before the waits are ended: who waited may use the message again.
    for (const sp<AMessage>& message : undelivered)
        message->drop();
    {
        Autolock hold(mLock);
        while (mWaiters != nullptr)
            endWait(mWaiters->id, nullptr);
    }
    mWaitEnded.broadcast();
    if (pthread_equal(thread, pthread_self())) {
        pthread_detach(thread);
    } else {
        pthread_join(thread, nullptr);
    }
    return OK;
}

status_t LooperCore::postAndAwait(const sp<AMessage>& message, sp<AMessage>* response) {
    Waiter waiter;
    {
        Autolock hold(mLock);
        if (mState != State::Running) return -ENOENT;
        CHECK(!pthread_equal(mThread, pthread_self()));
        waiter.id = ++mLastWaiterId;
        waiter.next = mWaiters;
        mWaiters = &waiter;
    }
    message->mReplyToken = new AReplyToken(this, waiter.id);
    if (post(message) != OK) message->drop();
    {
        Autolock hold(mLock);
        while (!waiter.ended)
            mWaitEnded.wait(mLock);
    }
    if (waiter.response == nullptr) return -ENOENT;
    *response = std::move(waiter.response);
    return OK;
}

bool LooperCore::endWait(uint64_t waiterId, const sp<AMessage>& response) {
    for (Waiter** link = &mWaiters; *link != nullptr; link = &(*link)->next) {
        Waiter* waiter = *link;
        if (waiter->id != waiterId) continue;
        *link = waiter->next;
        waiter->response = response;
        waiter->ended = true;
        return true;
    }
    return false;
}

status_t LooperCore::reply(uint64_t waiterId, const sp<AMessage>& response) {
    {
        Autolock hold(mLock);
        if (!endWait(waiterId, response)) return -ENOENT;
    }
    mWaitEnded.broadcast();
    return OK;
}

}  // namespace android
