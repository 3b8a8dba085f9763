// A message queue with a thread of its own, which gives the messages to their handlers.
#pragma once

#include <media/stagefright/foundation/ABase.h>
#include <stdint.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <string>

namespace android {

class LooperCore;

#pragma GCC visibility push(default)

// Inside, since a class keeps the visibility of its first declaration.
struct AHandler;
struct AMessage;

// Messages are delivered one at a time, in the order of posting. The handler is held strongly while
// it handles a message.
//
// Threads: every function may be called from any thread, stop() and the last release also from a
// handler on the looper's own thread. The thread does not need the ALooper object, only its inner
// state, of which it holds a reference: an ALooper that is released on its own thread is gone at
// once, and the thread ends when the current message has been handled.
struct ALooper : public RefBase {
    // Never 0 for a registered handler; never used twice.
    typedef int32_t handler_id;

    ALooper();

    // The thread's name, cut to the 15 characters that the system allows. Before start().
    void setName(const char* name);

    // Gives the handler its id, or INVALID_OPERATION when it has one. The looper holds it weakly.
    handler_id registerHandler(const sp<AHandler>& handler);
    // From now on messages for this handler are dropped, also those that are queued.
    void unregisterHandler(handler_id handlerId);

    // Starts the thread; messages may be posted before. Once: INVALID_OPERATION after that.
    status_t start();

    // Waits for the message that is being handled and joins the thread, unless called on it. What
    // is still queued is destroyed on the calling thread without being delivered, and who waits for
    // a reply gets -ENOENT. INVALID_OPERATION when it is not running.
    status_t stop();

  protected:
    ~ALooper() override;

  private:
    friend struct AMessage;

    std::string mName;
    const sp<LooperCore> mCore;

    DISALLOW_EVIL_CONSTRUCTORS(ALooper);
};

#pragma GCC visibility pop

}  // namespace android
