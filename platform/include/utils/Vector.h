// A growing array. Elements are copied in; growing copies them, so an address of an element is good
// until the next insertion. An index out of range aborts. Not thread-safe.
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
    static_assert(std::is_copy_assignable<T>::value, "elements are moved about by assignment");

  public:
    void clear() { mItems.clear(); }
    size_t size() const { return mItems.size(); }

    const T& operator[](size_t index) const { return mItems[checked(index, __PRETTY_FUNCTION__)]; }
    T& editItemAt(size_t index) { return mItems[checked(index, __PRETTY_FUNCTION__)]; }

    const T* begin() const { return mItems.data(); }
    const T* end() const { return mItems.data() + mItems.size(); }

    void push_back(const T& item) { mItems.push_back(item); }
    // These two return the index, or BAD_INDEX for one out of range.
    ssize_t insertAt(const T& item, size_t index) {
        if (index > size()) return BAD_INDEX;
        mItems.insert(mItems.begin() + static_cast<ptrdiff_t>(index), item);
        return static_cast<ssize_t>(index);
    }
    ssize_t removeAt(size_t index) {
        if (index >= size()) return BAD_INDEX;
        mItems.erase(mItems.begin() + static_cast<ptrdiff_t>(index));
        return static_cast<ssize_t>(index);
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
