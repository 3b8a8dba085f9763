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
// a key means the first row that holds it. Look-ups run for every sample, so a small hash table,
// made by the compiler from the rows, stands beside them. Constant after compilation: any thread.
class MetaKeyTable {
  public:
    // slots: as many as slotMask + 1, a power of two above count; each the number of a row plus
    // one, or 0. They hold the first row of every key, at the slot its key hashes to or the next
    // free one after it, round the end.
    constexpr MetaKeyTable(const MetaKeyRow* rows, size_t count, const uint8_t* slots,
                           size_t slotMask)
        : mRows(rows), mCount(count), mSlots(slots), mSlotMask(slotMask) {}

    // The framework's name of the key, a constant; null when the table does not hold the key.
    const char* findName(uint32_t key) const {
        for (size_t slot = hash(key) & mSlotMask; mSlots[slot] != 0;
             slot = (slot + 1) & mSlotMask) {
            const MetaKeyRow& row = mRows[mSlots[slot] - 1];
            if (row.key == key) return row.name;
        }
        return nullptr;
    }

    const MetaKeyRow* begin() const { return mRows; }
    const MetaKeyRow* end() const { return mRows + mCount; }

    static constexpr size_t hash(uint32_t key) {
        // The middle of the product depends on all four characters; 64 bits hold all of it.
        return static_cast<size_t>((key * uint64_t{0x9E3779B1}) >> 28);
    }

  private:
    const MetaKeyRow* mRows;
    size_t mCount;
    const uint8_t* mSlots;
    size_t mSlotMask;
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
