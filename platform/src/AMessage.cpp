#define LOG_TAG "AMessage"

#include <errno.h>
#include <log/log.h>
#include <media/stagefright/foundation/AMessage.h>

#include "LooperCore.h"

namespace android {

AMessage::AMessage(uint32_t what, const sp<const AHandler>& handler) : mWhat(what) {
    if (handler == nullptr) return;
    mTarget = handler->id();
    mHandler = handler->getHandler();
    mLooper = handler->getLooper();
}

void AMessage::set(const char* name, Value value) {
    for (auto& field : mFields) {
        if (field.first != name) continue;
        field.second = value;
        return;
    }
    mFields.emplace_back(name, value);
}

template <typename T>
bool AMessage::find(const char* name, T* value) const {
    for (const auto& field : mFields) {
        if (field.first != name) continue;
        const T* found = std::get_if<T>(&field.second);
        if (found != nullptr) *value = *found;
        return found != nullptr;
    }
    return false;
}
template bool AMessage::find(const char* name, int32_t* value) const;
template bool AMessage::find(const char* name, int64_t* value) const;
template bool AMessage::find(const char* name, void** value) const;

sp<LooperCore> AMessage::core() const {
    const sp<ALooper> looper = mLooper.promote();
    if (looper != nullptr && mTarget != 0) return looper->mCore;
    ALOGW("failed to post message as target looper for handler %d is gone.", mTarget);
    return nullptr;
}

status_t AMessage::post() {
    const sp<LooperCore> looper = core();
    return looper != nullptr ? looper->post(this) : -ENOENT;
}

status_t AMessage::postAndAwaitResponse(sp<AMessage>* response) {
    // Only the inner state is kept for the wait: the looper may go meanwhile, which ends the wait.
    const sp<LooperCore> looper = core();
    return looper != nullptr ? looper->postAndAwait(this, response) : -ENOENT;
}

bool AMessage::senderAwaitsResponse(sp<AReplyToken>* replyToken) {
    if (mReplyToken == nullptr) return false;
    *replyToken = std::move(mReplyToken);
    return true;
}

status_t AMessage::postReply(const sp<AReplyToken>& replyToken) {
    if (replyToken == nullptr) {
        ALOGW("failed to post reply to a NULL token");
        return -ENOENT;
    }
    if (replyToken->mReplied.exchange(true, std::memory_order_relaxed)) {
        ALOGE("trying to post a duplicate reply");
        return -EBUSY;
    }
    return replyToken->mCore->reply(replyToken->mWaiterId, this);
}

void AMessage::deliver() {
    sp<AHandler> handler = mHandler.promote();
    if (handler == nullptr || handler->id() != mTarget) {
        ALOGW("failed to deliver message as target handler %d is gone.", mTarget);
        drop();
        return;
    }
    handler->onMessageReceived(this);
}

void AMessage::drop() {
    // Only a message that is in a queue once has a token. One that is posted again and again may be
    // dropped by two threads at a time, which then must not write to it.
    if (mReplyToken != nullptr) mReplyToken.clear();
}

AReplyToken::AReplyToken(const sp<LooperCore>& core, uint64_t waiterId)
    : mCore(core), mWaiterId(waiterId) {}

AReplyToken::~AReplyToken() {
    mCore->abandon(mWaiterId);
}

}  // namespace android
