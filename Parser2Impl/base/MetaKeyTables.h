#pragma once

#include <stddef.h>
#include <stdint.h>

namespace orvel {

// One row of a key table: the framework's name of an entry and the key that addresses it here.
struct MetaKeyRow {
    const char* name;
    uint32_t key;
};

// A fixed table of rows. Some rows repeat an earlier pair, and some names are reached by two keys;
// a key means the first row that holds it. Constant after compilation: any thread.
class MetaKeyTable {
  public:
    template <size_t kCount>
    constexpr explicit MetaKeyTable(const MetaKeyRow (&rows)[kCount])
        : mBegin(rows), mEnd(rows + kCount) {}

    constexpr const MetaKeyRow* begin() const { return mBegin; }
    constexpr const MetaKeyRow* end() const { return mEnd; }

    // The framework's name of the key, a constant; null when the table does not hold the key.
    constexpr const char* findName(uint32_t key) const {
        for (const MetaKeyRow& row : *this) {
            if (row.key == key) return row.name;
        }
        return nullptr;
    }

  private:
    const MetaKeyRow* mBegin;
    const MetaKeyRow* mEnd;
};

// One table for each type of entry; bytes have two, of which the first is searched first.
extern const MetaKeyTable kCStringKeys;
extern const MetaKeyTable kFloatKeys;
extern const MetaKeyTable kInt64Keys;
extern const MetaKeyTable kInt32Keys;
extern const MetaKeyTable kCsdKeys;
extern const MetaKeyTable kBufferKeys;
extern const MetaKeyTable kRectKeys;
extern const MetaKeyTable kPointerKeys;

}  // namespace orvel
