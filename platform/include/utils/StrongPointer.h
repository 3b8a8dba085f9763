// sp<T>: a strong reference to an object that counts its references (see RefBase).
//
// One sp object may be used by one thread at a time; different sp objects that refer to the same
// object may be used by any threads.
#pragma once

#include <cstddef>
#include <utility>

namespace android {

template <typename T>
class wp;

template <typename T>
class sp {
  public:
    constexpr sp() = default;
    constexpr sp(std::nullptr_t) {}
    sp(T* other) : m_ptr(other) { acquire(); }
    template <typename U>
    sp(U* other) : m_ptr(other) {
        acquire();
    }
    sp(const sp& other) : m_ptr(other.m_ptr) { acquire(); }
    template <typename U>
    sp(const sp<U>& other) : m_ptr(other.m_ptr) {
        acquire();
    }
    sp(sp&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}
    template <typename U>
    sp(sp<U>&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}
    ~sp() {
        if (m_ptr != nullptr) m_ptr->decStrong(this);
    }

    // The old object is released last: its destructor may look at this very pointer.
    sp& operator=(const sp& other) {
        sp(other).swap(*this);
        return *this;
    }
    sp& operator=(sp&& other) noexcept {
        sp(std::move(other)).swap(*this);
        return *this;
    }
    sp& operator=(T* other) {
        sp(other).swap(*this);
        return *this;
    }
    sp& operator=(std::nullptr_t) {
        clear();
        return *this;
    }
    template <typename U>
    sp& operator=(const sp<U>& other) {
        sp(other).swap(*this);
        return *this;
    }
    template <typename U>
    sp& operator=(sp<U>&& other) {
        sp(std::move(other)).swap(*this);
        return *this;
    }

    void clear() { sp().swap(*this); }
    void swap(sp& other) noexcept { std::swap(m_ptr, other.m_ptr); }

    T& operator*() const { return *m_ptr; }
    T* operator->() const { return m_ptr; }
    T* get() const { return m_ptr; }
    explicit operator bool() const { return m_ptr != nullptr; }

    // Takes over a reference that the caller has already counted.
    void set_pointer(T* ptr) { m_ptr = ptr; }

  private:
    template <typename U>
    friend class sp;
    template <typename U>
    friend class wp;

    void acquire() {
        if (m_ptr != nullptr) m_ptr->incStrong(this);
    }

    T* m_ptr = nullptr;
};

template <typename T, typename U>
bool operator==(const sp<T>& a, const sp<U>& b) {
    return a.get() == b.get();
}
template <typename T, typename U>
bool operator!=(const sp<T>& a, const sp<U>& b) {
    return a.get() != b.get();
}
template <typename T>
bool operator==(const sp<T>& a, std::nullptr_t) {
    return a.get() == nullptr;
}
template <typename T>
bool operator!=(const sp<T>& a, std::nullptr_t) {
    return a.get() != nullptr;
}

}  // namespace android
