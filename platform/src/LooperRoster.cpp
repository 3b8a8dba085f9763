#define LOG_TAG "ALooperRoster"

#include "LooperRoster.h"

#include <log/log.h>

#include <vector>

namespace android {

using standin::Autolock;

// Never destroyed: handlers may end after static destruction has begun.
LooperRoster& LooperRoster::instance() {
    static LooperRoster& roster = *new LooperRoster;
    return roster;
}

ALooper::handler_id LooperRoster::registerHandler(ALooper* looper, const sp<AHandler>& handler) {
    Autolock hold(mLock);
    if (handler->id() != 0) {
        ALOGE("handler %d is registered already", handler->id());
        return INVALID_OPERATION;
    }
    ALooper::handler_id id = ++mLastId;
    mHandlers.add(id, Entry{looper, handler});
    handler->mLooper = looper;
    handler->mId.store(id, std::memory_order_release);
    return id;
}

void LooperRoster::unregisterHandler(ALooper::handler_id id) {
    // Declared before the lock is taken: it may turn out to be the last reference.
    sp<AHandler> handler;
    Autolock hold(mLock);
    ssize_t index = mHandlers.indexOfKey(id);
    if (index < 0) return;
    handler = mHandlers.valueAt(static_cast<size_t>(index)).handler.promote();
    mHandlers.removeItemsAt(static_cast<size_t>(index));
    if (handler != nullptr) handler->mId.store(0, std::memory_order_release);
}

void LooperRoster::forgetHandler(ALooper::handler_id id) {
    if (id == 0) return;
    Autolock hold(mLock);
    mHandlers.removeItem(id);
}

void LooperRoster::forgetLooper(const ALooper* looper) {
    std::vector<sp<AHandler>> handlers;  // as above
    Autolock hold(mLock);
    for (size_t i = 0; i < mHandlers.size();) {
        const Entry& entry = mHandlers.valueAt(i);
        if (entry.looper != looper) {
            ++i;
            continue;
        }
        if (sp<AHandler> handler = entry.handler.promote()) {
            handler->mId.store(0, std::memory_order_release);
            handlers.push_back(std::move(handler));
        }
        mHandlers.removeItemsAt(i);
    }
}

}  // namespace android
