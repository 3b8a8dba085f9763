// A message: a code, a handler to go to, and named fields.
#pragma once

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AString.h>
#include <stddef.h>
#include <stdint.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <atomic>

namespace android {

class LooperCore;

#pragma GCC visibility push(default)

// Inside, since a class keeps the visibility of its first declaration.
struct ABuffer;

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
// for its reply has failed the handler may still be at it.
struct AMessage : public RefBase {
    AMessage();
    // A message for a handler that is not registered can be filled but not posted.
    AMessage(uint32_t what, const sp<const AHandler>& handler);

    void setWhat(uint32_t what) { mWhat = what; }
    uint32_t what() const { return mWhat; }
    void setTarget(const sp<const AHandler>& handler);

    // The last write to a name wins, whatever its type. Names are copied.
    void setInt32(const char* name, int32_t value);
    void setInt64(const char* name, int64_t value);
    void setSize(const char* name, size_t value);
    void setFloat(const char* name, float value);
    void setDouble(const char* name, double value);
    void setPointer(const char* name, void* value);
    void setString(const char* name, const char* text, ssize_t length = -1);
    void setString(const char* name, const AString& text);
    void setObject(const char* name, const sp<RefBase>& object);
    void setBuffer(const char* name, const sp<ABuffer>& buffer);
    void setMessage(const char* name, const sp<AMessage>& message);

    // False, and nothing written, when there is no field of that name and type.
    bool findInt32(const char* name, int32_t* value) const;
    bool findInt64(const char* name, int64_t* value) const;
    bool findSize(const char* name, size_t* value) const;
    bool findFloat(const char* name, float* value) const;
    bool findDouble(const char* name, double* value) const;
    bool findPointer(const char* name, void** value) const;
    bool findString(const char* name, AString* text) const;
    bool findObject(const char* name, sp<RefBase>* object) const;
    bool findBuffer(const char* name, sp<ABuffer>* buffer) const;
    bool findMessage(const char* name, sp<AMessage>* message) const;

    bool contains(const char* name) const;
    size_t countEntries() const { return mCount; }
    void clear();

    // OK, or -ENOENT when the looper is gone or stopped: the message is dropped then. A delay of
    // nothing or less means at once.
    status_t post(int64_t delayUs = 0);

    // Posts and waits, without limit, until the handler replies. -ENOENT, and no response, when the
    // looper is gone, is not running or stops, and when the reply can no longer come. Waiting on
    // the looper's own thread would never end and aborts.
    status_t postAndAwaitResponse(sp<AMessage>* response);

    // Takes out the token to reply to; false when the sender does not wait, or it was taken before.
    bool senderAwaitsResponse(sp<AReplyToken>* replyToken);

    // Sends this message as the reply. Any thread. -EBUSY when a reply was sent already, -ENOENT
    // when nobody waits any more.
    status_t postReply(const sp<AReplyToken>& replyToken);

    // The same code, target and fields; messages inside are copied, objects shared.
    sp<AMessage> dup() const;

    AString debugString(int32_t indent = 0) const;

  protected:
    ~AMessage() override;

  private:
    friend class LooperCore;

    enum class Type : uint8_t;
    struct Item;
    // Enough for every message that is posted per sample; more are kept on the heap.
    static constexpr size_t kInlineItems = 4;
    static constexpr size_t kItemBytes = 48;

    const Item* find(const char* name, Type type) const;
    Item& set(const char* name, Type type);
    void setReference(const char* name, Type type, RefBase* object);
    template <typename T>
    bool findReference(const char* name, Type type, sp<T>* object) const;
    // Both on the looper's thread or on that of who stops it.
    void deliver();
    void drop();

    uint32_t mWhat = 0;
    ALooper::handler_id mTarget = 0;
    wp<AHandler> mHandler;
    wp<ALooper> mLooper;
    sp<AReplyToken> mReplyToken;

    Item* mItems;
    uint32_t mCount = 0;
    uint32_t mCapacity = kInlineItems;
    alignas(8) unsigned char mInline[kInlineItems * kItemBytes];

    DISALLOW_EVIL_CONSTRUCTORS(AMessage);
};

#pragma GCC visibility pop

}  // namespace android
