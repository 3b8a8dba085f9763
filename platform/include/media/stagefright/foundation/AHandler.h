// What receives the messages of a looper.
#pragma once

#include <media/stagefright/foundation/ALooper.h>
#include <utils/RefBase.h>

#include <atomic>

namespace android {

#pragma GCC visibility push(default)

// Inside, since a class keeps the visibility of its first declaration.
struct AMessage;

// Registered with one looper at a time, before the first message for it is made.
struct AHandler : public RefBase {
    AHandler();

    // 0 when not registered. Any thread.
    ALooper::handler_id id() const { return mId.load(std::memory_order_acquire); }
    // The looper that it was last registered with.
    wp<ALooper> getLooper() const { return mLooper; }
    wp<AHandler> getHandler() const { return const_cast<AHandler*>(this); }

  protected:
    ~AHandler() override;

    // On the looper's thread.
    virtual void onMessageReceived(const sp<AMessage>& message) = 0;

  private:
    friend struct AMessage;
    friend class LooperRoster;

    std::atomic<ALooper::handler_id> mId{0};
    // Written by the registration only, so that making a message needs no lock.
    wp<ALooper> mLooper;

    DISALLOW_EVIL_CONSTRUCTORS(AHandler);
};

#pragma GCC visibility pop

}  // namespace android
