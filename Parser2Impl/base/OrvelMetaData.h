#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/NdkMediaFormat.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/RefBase.h>
#include <utils/String8.h>
#include <utils/StrongPointer.h>

#include "MetaKeys.h"

namespace orvel {

// The one container of metadata: file formats, track formats, start parameters and the keys of each
// sample. Entries are addressed by the four-character keys of MetaKeys.h and live in an
// AMediaFormat under the framework's key names (tables in MetaKeyTables.h); pointer entries, which
// a format cannot hold, live in a message beside it.
//
// Shared through sp<OrvelMetaData>. No lock: whoever shares a store serialises its use, the find
// operations included.
//
// Set operations return true when the entry was written, and false, with a log line, when the
// operation's table does not know the key. Find operations return false, with a log line, only when
// the table does not know the key. For a known key they return true WHETHER OR NOT there is an
// entry, and leave the caller's variables alone when there is none: preset them with the default.
//
// Virtual slots follow those of RefBase in the order written here.
class OrvelMetaData : public android::RefBase {
  public:
    OrvelMetaData();  // empty; owns a new format and a new message

    // A separate store with the same format entries. Pointer entries are not copied.
    OrvelMetaData(const OrvelMetaData& other);

    // Borrows a framework format, which must outlive the store and stays the framework's. Such a
    // store has no message: a pointer operation on it is a contract violation and aborts.
    explicit OrvelMetaData(AMediaFormat* format);

    ~OrvelMetaData() override;

    virtual void clear();               // removes every format entry; pointer entries stay
    virtual bool remove(uint32_t key);  // removes nothing, always false

    virtual bool setCString(uint32_t key, const char* value);  // copies the text
    // Knows, beside its table, kKeyIsSyncFrame (stored as 0 or 1) and kKeyIsDefault (only a value
    // other than 0, stored as 1); findInt32 knows neither.
    virtual bool setInt32(uint32_t key, int32_t value);
    virtual bool setInt64(uint32_t key, int64_t value);
    virtual bool setFloat(uint32_t key, float value);
    virtual bool setPointer(uint32_t key, void* value);  // whoever sets it keeps owning the target
    virtual bool setRect(uint32_t key, int32_t left, int32_t top, int32_t right, int32_t bottom);

    // The text is the format's own: valid until the next find of the same key, while the entry is
    // unchanged and the store lives.
    virtual bool findCString(uint32_t key, const char** value) const;
    virtual bool findInt32(uint32_t key, int32_t* value) const;
    virtual bool findInt64(uint32_t key, int64_t* value) const;
    virtual bool findFloat(uint32_t key, float* value) const;
    virtual bool findPointer(uint32_t key, void** value) const;
    virtual bool findRect(uint32_t key, int32_t* left, int32_t* top, int32_t* right,
                          int32_t* bottom) const;

    virtual bool setData(uint32_t key, uint32_t type, const void* data, size_t size);  // copies
    // *type is never written. The bytes are the format's own: valid while the entry is unchanged
    // and the store lives.
    virtual bool findData(uint32_t key, uint32_t* type, const void** data, size_t* size) const;
    virtual bool hasData(uint32_t key) const;  // always false

    virtual android::String8 toString() const;  // the format's own text form
    virtual void dumpToLog() const;             // that text as one line at info priority

    virtual AMediaFormat* getHandle() const;  // still the store's

    // Copies source's format entries into this store's format, unless both share one format.
    void copyEntriesFrom(const OrvelMetaData& source);

  private:
    OrvelMetaData& operator=(const OrvelMetaData&) = delete;

    AMediaFormat* const mFormat;
    const android::sp<android::AMessage> mMessage;  // null in a borrowing store
    const bool mOwnsFormat;
};

}  // namespace orvel
