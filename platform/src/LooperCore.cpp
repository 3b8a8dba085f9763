#define LOG_TAG "ALooper"

#include "LooperCore.h"

#include <errno.h>
#include <media/stagefright/foundation/ADebug.h>

#include <algorithm>
#include <memory>

#include "LooperThreads.h"

namespace android {

using standin::Autolock;

namespace {

constexpr size_t kMaxThreadName = 15;

struct ThreadArguments {
    sp<LooperCore> core;
    uint32_t runId;
    std::string name;
};

}  // namespace

status_t LooperCore::start(const std::string& name, bool runOnCallingThread) {
    standin::addLooperThread(this);
    uint32_t runId = 0;
    status_t status = startThread(name, runOnCallingThread, &runId);
    if (status != OK) standin::removeLooperThread(this);
    if (status == OK && runOnCallingThread) run(runId);
    return status;
}

status_t LooperCore::startThread(const std::string& name, bool runOnCallingThread,
                                 uint32_t* runId) {
    Autolock hold(mLock);
    if (mRunning) return INVALID_OPERATION;
    *runId = ++mRunId;
    if (runOnCallingThread) {
        mThread = pthread_self();
    } else {
        auto arguments = std::make_unique<ThreadArguments>();
        arguments->core = this;
        arguments->runId = *runId;
        arguments->name = name.substr(0, kMaxThreadName);
        // Under the lock: the thread must find mThread set when it asks who it is.
        int error = pthread_create(&mThread, nullptr, threadMain, arguments.get());
        if (error != 0) {
            ALOGE("no thread for looper \"%s\": error %d", name.c_str(), error);
            return -error;
        }
        arguments.release();
    }
    mRunning = true;
    mStopped = false;
    mRunsOnCaller = runOnCallingThread;
    return OK;
}

void* LooperCore::threadMain(void* data) {
    std::unique_ptr<ThreadArguments> arguments(static_cast<ThreadArguments*>(data));
    if (!arguments->name.empty()) pthread_setname_np(pthread_self(), arguments->name.c_str());
    arguments->core->run(arguments->runId);
    return nullptr;
}

void LooperCore::run(uint32_t runId) {
    sp<LooperCore> self = this;  // the ALooper may go while a message is handled
    while (sp<AMessage> message = nextMessage(runId))
        message->deliver();
    standin::removeLooperThread(this);
}

sp<AMessage> LooperCore::nextMessage(uint32_t runId) {
    Autolock hold(mLock);
    while (mRunning && mRunId == runId) {
        if (mHead == mQueue.size()) {
            mQueueChanged.wait(mLock);
            continue;
        }
        Event& first = mQueue[mHead];
        int64_t nowUs = first.whenUs == kAtOnce ? kAtOnce : standin::looperTimeUs();
        if (first.whenUs > nowUs) {
            // A set clock wakes the queue when it is set again. The wait is cut into days because
            // the far end of time does not fit a timespec everywhere.
            constexpr int64_t kDayUs = 24 * 3600 * int64_t{1000000};
            if (standin::looperTimeIsReal()) {
                mQueueChanged.waitUntil(mLock, std::min(first.whenUs, nowUs + kDayUs));
            } else {
                mQueueChanged.wait(mLock);
            }
            continue;
        }
        sp<AMessage> message = std::move(first.message);
        if (++mHead == mQueue.size()) {
            mQueue.clear();
            mHead = 0;
        }
        return message;
    }
    return nullptr;
}

status_t LooperCore::post(const sp<AMessage>& message, int64_t delayUs) {
    {
        Autolock hold(mLock);
        if (mStopped) return -ENOENT;
        // Behind nothing that has a time, the posting order says it all.
        const bool atOnce =
                delayUs <= 0 && (mHead == mQueue.size() || mQueue.back().whenUs == kAtOnce);
        int64_t whenUs = atOnce ? kAtOnce : standin::looperTimeUs();
        if (delayUs > 0) whenUs = delayUs > INT64_MAX - whenUs ? INT64_MAX : whenUs + delayUs;
        // Full of messages that are gone: move to the front rather than grow.
        if (mQueue.size() == mQueue.capacity() && mHead > mQueue.size() / 2) {
            mQueue.erase(mQueue.begin(), mQueue.begin() + static_cast<ptrdiff_t>(mHead));
            mHead = 0;
        }
        auto place = mQueue.end();
        while (place != mQueue.begin() + static_cast<ptrdiff_t>(mHead) &&
               (place - 1)->whenUs > whenUs) {
            --place;
        }
        mQueue.insert(place, Event{whenUs, message});
    }
    mQueueChanged.signal();
    return OK;
}

status_t LooperCore::stop() {
    std::vector<Event> undelivered;
    pthread_t thread;
    bool runsOnCaller;
    {
        Autolock hold(mLock);
        if (!mRunning) return INVALID_OPERATION;
        mRunning = false;
        mStopped = true;
        thread = mThread;
        runsOnCaller = mRunsOnCaller;
        undelivered.assign(std::make_move_iterator(mQueue.begin() + static_cast<ptrdiff_t>(mHead)),
                           std::make_move_iterator(mQueue.end()));
        mQueue.clear();
        mHead = 0;
        mQueueChanged.broadcast();
    }
    // Before the waits are ended: who waited may use the message again.
    for (const Event& event : undelivered)
        event.message->drop();
    {
        Autolock hold(mLock);
        while (mWaiters != nullptr)
            endWait(mWaiters->id, nullptr);
    }
    mWaitEnded.broadcast();
    if (!runsOnCaller) {
        if (pthread_equal(thread, pthread_self())) {
            pthread_detach(thread);
        } else {
            pthread_join(thread, nullptr);
        }
    }
    return OK;
}

void LooperCore::wake() {
    Autolock hold(mLock);
    mQueueChanged.broadcast();
}

status_t LooperCore::postAndAwait(const sp<AMessage>& message, sp<AMessage>* response) {
    Waiter waiter;
    {
        Autolock hold(mLock);
        if (!mRunning) return -ENOENT;
        CHECK(!pthread_equal(mThread, pthread_self()));
        waiter.id = ++mLastWaiterId;
        waiter.next = mWaiters;
        mWaiters = &waiter;
    }
    message->mReplyToken = new AReplyToken(this, waiter.id);
    if (post(message, 0) != OK) message->drop();
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

void LooperCore::abandon(uint64_t waiterId) {
    {
        Autolock hold(mLock);
        if (!endWait(waiterId, nullptr)) return;
    }
    mWaitEnded.broadcast();
}

}  // namespace android
