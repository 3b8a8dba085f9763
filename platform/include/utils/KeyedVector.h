// Pairs of a key and a value, ordered by the keys' operator<. Not thread-safe.
#pragma once

#include <utils/Vector.h>

#include <algorithm>

namespace android {

template <typename KEY, typename VALUE>
class KeyedVector {
  public:
    size_t size() const { return mPairs.size(); }

    // A key that is not there aborts.
    const VALUE& valueFor(const KEY& key) const {
        return mPairs[found(key, __PRETTY_FUNCTION__)].value;
    }
    VALUE& editValueFor(const KEY& key) {
        return mPairs.editItemAt(found(key, __PRETTY_FUNCTION__)).value;
    }

    const KEY& keyAt(size_t index) const { return mPairs[index].key; }
    const VALUE& valueAt(size_t index) const { return mPairs[index].value; }
    const VALUE& operator[](size_t index) const { return valueAt(index); }

    // NAME_NOT_FOUND when the key is not there.
    ssize_t indexOfKey(const KEY& key) const {
        const size_t index = orderOf(key);
        if (index == size() || key < mPairs[index].key) return NAME_NOT_FOUND;
        return static_cast<ssize_t>(index);
    }

    // Returns the pair's index. The value of a key that is there already is replaced.
    ssize_t add(const KEY& key, const VALUE& value) {
        const ssize_t index = indexOfKey(key);
        if (index < 0) return mPairs.insertAt(Pair{key, value}, orderOf(key));
        mPairs.editItemAt(static_cast<size_t>(index)).value = value;
        return index;
    }

    // Both return the index at which the pair was, or a negative status.
    ssize_t removeItem(const KEY& key) {
        const ssize_t index = indexOfKey(key);
        return index < 0 ? index : removeItemsAt(static_cast<size_t>(index));
    }
    ssize_t removeItemsAt(size_t index) { return mPairs.removeAt(index); }

  private:
    struct Pair {
        KEY key;
        VALUE value;
    };

    size_t orderOf(const KEY& key) const {
        const Pair* place = std::lower_bound(
                mPairs.begin(), mPairs.end(), key,
                [](const Pair& pair, const KEY& wanted) { return pair.key < wanted; });
        return static_cast<size_t>(place - mPairs.begin());
    }
    size_t found(const KEY& key, const char* function) const {
        const ssize_t index = indexOfKey(key);
        LOG_ALWAYS_FATAL_IF(index < 0, "%s: key not found", function);
        return static_cast<size_t>(index);
    }

    Vector<Pair> mPairs;
};

}  // namespace android
