// A vector that keeps its elements in the order of their operator< and holds no two equal ones.
// Not thread-safe.
#pragma once

#include <utils/Vector.h>

#include <algorithm>

namespace android {

template <typename T>
class SortedVector {
  public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    void clear() { mItems.clear(); }
    size_t size() const { return mItems.size(); }
    size_t capacity() const { return mItems.capacity(); }
    bool isEmpty() const { return mItems.isEmpty(); }
    ssize_t setCapacity(size_t count) { return mItems.setCapacity(count); }

    const T* array() const { return mItems.array(); }
    const T& operator[](size_t index) const { return mItems[index]; }
    const T& itemAt(size_t index) const { return mItems.itemAt(index); }
    // The element's place in the order must not change.
    T& editItemAt(size_t index) { return mItems.editItemAt(index); }

    const_iterator begin() const { return mItems.begin(); }
    const_iterator end() const { return mItems.end(); }

    // NAME_NOT_FOUND when there is no such element.
    ssize_t indexOf(const T& item) const {
        size_t index = orderOf(item);
        if (index == size() || item < mItems[index]) return NAME_NOT_FOUND;
        return static_cast<ssize_t>(index);
    }
    // Where the element is, or would have to be inserted.
    size_t orderOf(const T& item) const {
        return static_cast<size_t>(std::lower_bound(begin(), end(), item) - begin());
    }

    // Returns the element's index. An equal element is replaced.
    ssize_t add(const T& item) {
        size_t index = orderOf(item);
        if (index < size() && !(item < mItems[index])) return mItems.replaceAt(item, index);
        return mItems.insertAt(item, index);
    }

    ssize_t remove(const T& item) {
        ssize_t index = indexOf(item);
        return index < 0 ? index : mItems.removeAt(static_cast<size_t>(index));
    }
    ssize_t removeItemsAt(size_t index, size_t count = 1) {
        return mItems.removeItemsAt(index, count);
    }
    ssize_t removeAt(size_t index) { return mItems.removeAt(index); }

  private:
    Vector<T> mItems;
};

}  // namespace android
