// A growing array. Elements are copied in and out; growing copies them, so an address of an element
// is good until the next insertion. An index out of range aborts. Not thread-safe.
#pragma once

#include <log/log.h>
#include <stddef.h>
#include <sys/types.h>
#include <utils/Errors.h>

#include <type_traits>
#include <vector>

namespace android {

template <typename T>
class Vector {
    static_assert(!std::is_same<T, bool>::value, "elements must have addresses of their own");

  public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    void clear() { mItems.clear(); }
    size_t size() const { return mItems.size(); }
    size_t capacity() const { return mItems.capacity(); }
    bool isEmpty() const { return mItems.empty(); }
    bool empty() const { return mItems.empty(); }
    ssize_t setCapacity(size_t count) {
        mItems.reserve(count);
        return static_cast<ssize_t>(mItems.capacity());
    }
    ssize_t resize(size_t count) {
        mItems.resize(count);
        return static_cast<ssize_t>(count);
    }

    const T* array() const { return mItems.data(); }
    T* editArray() { return mItems.data(); }
    const T& operator[](size_t index) const { return mItems[checked(index, __PRETTY_FUNCTION__)]; }
    const T& itemAt(size_t index) const { return mItems[checked(index, __PRETTY_FUNCTION__)]; }
    T& editItemAt(size_t index) { return mItems[checked(index, __PRETTY_FUNCTION__)]; }
    const T& top() const { return mItems[checked(size() - 1, __PRETTY_FUNCTION__)]; }
    T& editTop() { return mItems[checked(size() - 1, __PRETTY_FUNCTION__)]; }

    iterator begin() { return mItems.data(); }
    iterator end() { return mItems.data() + mItems.size(); }
    const_iterator begin() const { return mItems.data(); }
    const_iterator end() const { return mItems.data() + mItems.size(); }

    // The insertions return the index of the (first) new element, or BAD_INDEX.
    ssize_t insertAt(const T& item, size_t index, size_t count = 1) {
        if (index > size()) return BAD_INDEX;
        mItems.insert(mItems.begin() + index, count, item);
        return static_cast<ssize_t>(index);
    }
    ssize_t insertAt(size_t index, size_t count = 1) { return insertAt(T(), index, count); }
    ssize_t add() { return insertAt(size()); }
    ssize_t add(const T& item) { return insertAt(item, size()); }
    void push() { mItems.emplace_back(); }
    void push(const T& item) { mItems.push_back(item); }
    void push_back(const T& item) { mItems.push_back(item); }
    void push_front(const T& item) { insertAt(item, 0); }
    ssize_t appendArray(const T* items, size_t count) {
        size_t index = size();
        mItems.insert(mItems.end(), items, items + count);
        return static_cast<ssize_t>(index);
    }
    ssize_t appendVector(const Vector& other) {
        std::vector<T> items(other.mItems);  // a vector may be appended to itself
        return appendArray(items.data(), items.size());
    }
    ssize_t replaceAt(const T& item, size_t index) {
        if (index >= size()) return BAD_INDEX;
        mItems[index] = item;
        return static_cast<ssize_t>(index);
    }

    ssize_t removeItemsAt(size_t index, size_t count = 1) {
        if (index > size() || count > size() - index) return BAD_VALUE;
        mItems.erase(mItems.begin() + index, mItems.begin() + index + count);
        return static_cast<ssize_t>(index);
    }
    ssize_t removeAt(size_t index) { return removeItemsAt(index); }
    void pop() {
        if (!mItems.empty()) mItems.pop_back();
    }

  private:
    size_t checked(size_t index, const char* function) const {
        LOG_ALWAYS_FATAL_IF(index >= size(), "%s: index=%zu out of range (%zu)", function, index,
                            size());
        return index;
    }

    std::vector<T> mItems;
};

}  // namespace android
