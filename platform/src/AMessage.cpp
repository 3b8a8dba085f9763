#define LOG_TAG "AMessage"

#include <ctype.h>
#include <errno.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/ADebug.h>
#include <media/stagefright/foundation/AMessage.h>
#include <stdio.h>
#include <string.h>

#include <new>

#include "LooperCore.h"

namespace android {

enum class AMessage::Type : uint8_t {
    Int32,
    Int64,
    Size,
    Float,
    Double,
    Pointer,
    String,
    Object,
    Buffer,
    Message,
};

// Plain data, so that the array can grow by copying bytes; what it owns is freed by hand.
struct AMessage::Item {
    static constexpr size_t kInlineName = 24;

    const char* name() const { return longName != nullptr ? longName : shortName; }
    bool isReference() const { return type >= Type::Object; }

    void freeValue() {
        if (type == Type::String) delete value.string;
        if (isReference() && value.object != nullptr) value.object->decStrong(this);
    }

    char shortName[kInlineName];
    char* longName;
    union {
        int32_t int32;
        int64_t int64;
        size_t size;
        float float32;
        double float64;
        void* pointer;
        AString* string;
        RefBase* object;  // counted, may be null
    } value;
    Type type;
};

AMessage::AMessage() : mItems(reinterpret_cast<Item*>(mInline)) {
    static_assert(sizeof(Item) == kItemBytes, "the header reserves the room");
}

AMessage::AMessage(uint32_t what, const sp<const AHandler>& handler) : AMessage() {
    mWhat = what;
    setTarget(handler);
}

AMessage::~AMessage() {
    clear();
    if (mCapacity > kInlineItems) ::operator delete(mItems);
}

void AMessage::setTarget(const sp<const AHandler>& handler) {
    if (handler == nullptr) {
        mTarget = 0;
        mHandler.clear();
        mLooper.clear();
        return;
    }
    mTarget = handler->id();
    mHandler = handler->getHandler();
    mLooper = handler->mLooper;
}

void AMessage::clear() {
    // Taken out one by one: what goes with a reference may look at this message.
    while (mCount > 0) {
        Item item = mItems[--mCount];
        delete[] item.longName;
        item.freeValue();
    }
}

const AMessage::Item* AMessage::find(const char* name, Type type) const {
    for (uint32_t i = 0; i < mCount; ++i) {
        if (strcmp(mItems[i].name(), name) == 0) {
            return mItems[i].type == type ? &mItems[i] : nullptr;
        }
    }
    return nullptr;
}

bool AMessage::contains(const char* name) const {
    for (uint32_t i = 0; i < mCount; ++i) {
        if (strcmp(mItems[i].name(), name) == 0) return true;
    }
    return false;
}

// The item of that name with its old value freed, or a new one.
AMessage::Item& AMessage::set(const char* name, Type type) {
    for (uint32_t i = 0; i < mCount; ++i) {
        Item& item = mItems[i];
        if (strcmp(item.name(), name) != 0) continue;
        item.freeValue();
        item.type = type;
        return item;
    }
    if (mCount == mCapacity) {
        auto* items = static_cast<Item*>(::operator new(2 * mCapacity * sizeof(Item)));
        memcpy(static_cast<void*>(items), mItems, mCount * sizeof(Item));
        if (mCapacity > kInlineItems) ::operator delete(mItems);
        mItems = items;
        mCapacity *= 2;
    }
    Item& item = *new (&mItems[mCount++]) Item;
    size_t size = strlen(name) + 1;
    item.longName = size > Item::kInlineName ? new char[size] : nullptr;
    memcpy(item.longName != nullptr ? item.longName : item.shortName, name, size);
    item.type = type;
    return item;
}

void AMessage::setInt32(const char* name, int32_t value) {
    set(name, Type::Int32).value.int32 = value;
}

void AMessage::setInt64(const char* name, int64_t value) {
    set(name, Type::Int64).value.int64 = value;
}

void AMessage::setSize(const char* name, size_t value) {
    set(name, Type::Size).value.size = value;
}

void AMessage::setFloat(const char* name, float value) {
    set(name, Type::Float).value.float32 = value;
}

void AMessage::setDouble(const char* name, double value) {
    set(name, Type::Double).value.float64 = value;
}

void AMessage::setPointer(const char* name, void* value) {
    set(name, Type::Pointer).value.pointer = value;
}

void AMessage::setString(const char* name, const char* text, ssize_t length) {
    // Made before the old one is freed: the text may be part of it.
    auto* copy = new AString(text, length < 0 ? strlen(text) : static_cast<size_t>(length));
    set(name, Type::String).value.string = copy;
}

void AMessage::setString(const char* name, const AString& text) {
    setString(name, text.c_str(), static_cast<ssize_t>(text.size()));
}

void AMessage::setReference(const char* name, Type type, RefBase* object) {
    if (object != nullptr) object->incStrong(this);
    set(name, type).value.object = object;
}

void AMessage::setObject(const char* name, const sp<RefBase>& object) {
    setReference(name, Type::Object, object.get());
}

void AMessage::setBuffer(const char* name, const sp<ABuffer>& buffer) {
    setReference(name, Type::Buffer, buffer.get());
}

void AMessage::setMessage(const char* name, const sp<AMessage>& message) {
    setReference(name, Type::Message, message.get());
}

bool AMessage::findInt32(const char* name, int32_t* value) const {
    const Item* item = find(name, Type::Int32);
    if (item != nullptr) *value = item->value.int32;
    return item != nullptr;
}

bool AMessage::findInt64(const char* name, int64_t* value) const {
    const Item* item = find(name, Type::Int64);
    if (item != nullptr) *value = item->value.int64;
    return item != nullptr;
}

bool AMessage::findSize(const char* name, size_t* value) const {
    const Item* item = find(name, Type::Size);
    if (item != nullptr) *value = item->value.size;
    return item != nullptr;
}

bool AMessage::findFloat(const char* name, float* value) const {
    const Item* item = find(name, Type::Float);
    if (item != nullptr) *value = item->value.float32;
    return item != nullptr;
}

bool AMessage::findDouble(const char* name, double* value) const {
    const Item* item = find(name, Type::Double);
    if (item != nullptr) *value = item->value.float64;
    return item != nullptr;
}

bool AMessage::findPointer(const char* name, void** value) const {
    const Item* item = find(name, Type::Pointer);
    if (item != nullptr) *value = item->value.pointer;
    return item != nullptr;
}

bool AMessage::findString(const char* name, AString* text) const {
    const Item* item = find(name, Type::String);
    if (item != nullptr) *text = *item->value.string;
    return item != nullptr;
}

template <typename T>
bool AMessage::findReference(const char* name, Type type, sp<T>* object) const {
    const Item* item = find(name, type);
    if (item != nullptr) *object = static_cast<T*>(item->value.object);
    return item != nullptr;
}

bool AMessage::findObject(const char* name, sp<RefBase>* object) const {
    return findReference(name, Type::Object, object);
}

bool AMessage::findBuffer(const char* name, sp<ABuffer>* buffer) const {
    return findReference(name, Type::Buffer, buffer);
}

bool AMessage::findMessage(const char* name, sp<AMessage>* message) const {
    return findReference(name, Type::Message, message);
}

sp<AMessage> AMessage::dup() const {
    sp<AMessage> copy = new AMessage;
    copy->mWhat = mWhat;
    copy->mTarget = mTarget;
    copy->mHandler = mHandler;
    copy->mLooper = mLooper;
    copy->mReplyToken = mReplyToken;
    for (uint32_t i = 0; i < mCount; ++i) {
        const Item& item = mItems[i];
        if (item.type == Type::String) {
            copy->setString(item.name(), *item.value.string);
        } else if (item.type == Type::Message && item.value.object != nullptr) {
            copy->setMessage(item.name(), static_cast<AMessage*>(item.value.object)->dup());
        } else if (item.isReference()) {
            copy->setReference(item.name(), item.type, item.value.object);
        } else {
            copy->set(item.name(), item.type).value = item.value;
        }
    }
    return copy;
}

AString AMessage::debugString(int32_t indent) const {
    char line[160];
    AString text("AMessage(what = ");
    char code[4] = {static_cast<char>(mWhat >> 24), static_cast<char>(mWhat >> 16),
                    static_cast<char>(mWhat >> 8), static_cast<char>(mWhat)};
    bool printable = true;
    for (char c : code)
        printable = printable && isprint(static_cast<unsigned char>(c));
    if (printable) {
        snprintf(line, sizeof(line), "'%.4s'", code);
    } else {
        snprintf(line, sizeof(line), "0x%08x", mWhat);
    }
    text.append(line);
    if (mTarget != 0) {
        snprintf(line, sizeof(line), ", target = %d", mTarget);
        text.append(line);
    }
    text.append(") = {\n");
    for (uint32_t i = 0; i < mCount; ++i) {
        const Item& item = mItems[i];
        snprintf(line, sizeof(line), "%*s%.100s = ", indent + 2, "", item.name());
        text.append(line);
        switch (item.type) {
            case Type::Int32:
                snprintf(line, sizeof(line), "%d", item.value.int32);
                break;
            case Type::Int64:
                snprintf(line, sizeof(line), "%lld", static_cast<long long>(item.value.int64));
                break;
            case Type::Size:
                snprintf(line, sizeof(line), "%zu", item.value.size);
                break;
            case Type::Float:
                snprintf(line, sizeof(line), "%f", static_cast<double>(item.value.float32));
                break;
            case Type::Double:
                snprintf(line, sizeof(line), "%f", item.value.float64);
                break;
            case Type::String:
                snprintf(line, sizeof(line), "\"%.120s\"", item.value.string->c_str());
                break;
            case Type::Pointer:
            case Type::Object:
            case Type::Buffer:
            case Type::Message:
                snprintf(line, sizeof(line), "%p", item.value.pointer);
                break;
        }
        text.append(line);
        text.append("\n");
    }
    snprintf(line, sizeof(line), "%*s}", indent, "");
    text.append(line);
    return text;
}

status_t AMessage::post(int64_t delayUs) {
    sp<ALooper> looper = mLooper.promote();
    if (looper == nullptr || mTarget == 0) {
        ALOGW("failed to post message as target looper for handler %d is gone.", mTarget);
        return -ENOENT;
    }
    return looper->mCore->post(this, delayUs);
}

status_t AMessage::postAndAwaitResponse(sp<AMessage>* response) {
    sp<LooperCore> core;
    // Not kept for the wait: the looper may go meanwhile, which ends the wait.
    if (sp<ALooper> looper = mLooper.promote()) core = looper->mCore;
    if (core == nullptr || mTarget == 0) {
        ALOGW("failed to post message as target looper for handler %d is gone.", mTarget);
        return -ENOENT;
    }
    return core->postAndAwait(this, response);
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
