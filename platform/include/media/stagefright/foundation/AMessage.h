// A message: a code, a handler to go to, and named fields.
#pragma once

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/ALooper.h>
#include <stdint.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <atomic>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace android {

class LooperCore;

#pragma GCC visibility push(default)

// Stands for a sender that waits. When the last reference to it goes without a reply, the wait ends
// with -ENOENT: nobody could answer any more.
struct AReplyToken : public RefBase {
  private:
    friend struct AMessage;
    friend class LooperCore;

    AReplyToken(const sp<LooperCore>& core, uint64_t waiterId);
    ~AReplyToken() override;

    const sp<LooperCore> mCore;
    const uint64_t mWaiterId;
    std::atomic<bool> mReplied{false};

    DISALLOW_EVIL_CONSTRUCTORS(AReplyToken);
};

// Used by one thread at a time: by the poster until it is posted, then by the handler. After a wait
// for its reply has failed the handler may still use it.
struct AMessage : public RefBase {
    AMessage() = default;
    // A message for a handler that is not registered can be filled but not posted.
    AMessage(uint32_t what, const sp<const AHandler>& handler);

    uint32_t what() const { return mWhat; }

    // The last write to a name wins, whatever its type. Names are copied.
    void setInt32(const char* name, int32_t value) { set(name, value); }
    void setInt64(const char* name, int64_t value) { set(name, value); }
    void setPointer(const char* name, void* value) { set(name, value); }

    // False, and nothing written, when there is no field of that name and type.
    bool findInt32(const char* name, int32_t* value) const { return find(name, value); }
    bool findInt64(const char* name, int64_t* value) const { return find(name, value); }
    bool findPointer(const char* name, void** value) const { return find(name, value); }

    // OK, or -ENOENT when the looper is gone or stopped: the message is dropped then.
    status_t post();

    // Posts and waits, without limit, until the handler replies. -ENOENT, and no response, when the
    // looper is gone, is not running or stops, and when the reply can no longer come. Waiting on
    // the looper's own thread would never end and aborts.
    status_t postAndAwaitResponse(sp<AMessage>* response);

    // Takes out the token to reply to; false when the sender does not wait, or it was taken before.
    bool senderAwaitsResponse(sp<AReplyToken>* replyToken);

    // Sends this message as the reply. Any thread. -EBUSY when a reply was sent already, -ENOENT
    // when nobody waits any more.
    status_t postReply(const sp<AReplyToken>& replyToken);

  private:
    friend class LooperCore;

    using Value = std::variant<int32_t, int64_t, void*>;

    void set(const char* name, Value value);
    template <typename T>
    bool find(const char* name, T* value) const;
    // The looper that it goes to; null, with a warning, when that is gone.
    sp<LooperCore> core() const;
    // Both on the looper's thread or on the thread that stops it.
    void deliver();
    void drop();

    uint32_t mWhat = 0;
    ALooper::handler_id mTarget = 0;
    wp<AHandler> mHandler;
    wp<ALooper> mLooper;
    sp<AReplyToken> mReplyToken;
    std::vector<std::pair<std::string, Value>> mFields;

    DISALLOW_EVIL_CONSTRUCTORS(AMessage);
};

#pragma GCC visibility pop

}  // namespace android
