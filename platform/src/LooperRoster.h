// Which handlers are registered, process-wide: handler ids are unique over all loopers.
#pragma once

#include <media/stagefright/foundation/AHandler.h>
#include <utils/KeyedVector.h>

#include "Monitor.h"

namespace android {

// Any thread. Handlers and loopers are never released under the lock.
class LooperRoster {
  public:
    static LooperRoster& instance();

    ALooper::handler_id registerHandler(ALooper* looper, const sp<AHandler>& handler);
    void unregisterHandler(ALooper::handler_id id);

    // Called by destructors.
    void forgetHandler(ALooper::handler_id id);
    void forgetLooper(const ALooper* looper);

  private:
    struct Entry {
        const ALooper* looper;
        wp<AHandler> handler;
    };

    standin::Mutex mLock;
    KeyedVector<ALooper::handler_id, Entry> mHandlers ORVEL_TSA(guarded_by(mLock));
    ALooper::handler_id mLastId ORVEL_TSA(guarded_by(mLock)) = 0;
};

}  // namespace android
