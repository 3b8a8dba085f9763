// Reference-counted objects with strong (sp) and weak (wp) references.
//
// - The object is deleted by whichever thread drops the last strong reference. Its destructor can
//   therefore run anywhere: never drop what may be the last one while holding a lock.
// - An object that dies without ever having had a strong reference (on the stack, inside another
//   object) costs a warning in the log: hold it by sp. Making an sp to such an object is a mistake
//   that aborts.
// - Weak references never keep the object, only a small block of counters. promote() is safe from
//   any thread, also while the last strong reference goes away: it gives the object or null.
// - Derived classes may be copied; the counts are not: a copy starts with none.
// - No sp to `this` in a constructor: it would be the last one when it goes.
#pragma once

#include <stdint.h>
#include <utils/StrongPointer.h>

#include <atomic>

namespace android {

#pragma GCC visibility push(default)

class RefBase {
  public:
    // `id` names the holder; it is there for the platform's reference tracker.
    void incStrong(const void* id) const;
    void decStrong(const void* id) const;

    // For tests and logs: the number may be old by the time it is looked at.
    int32_t getStrongCount() const;

    // The counters; they outlive the object for as long as a weak reference is left.
    class weakref_type {
      public:
        void incWeak(const void* id);
        void decWeak(const void* id);
        // Adds a strong reference unless the last one is gone already.
        bool attemptIncStrong(const void* id);

      private:
        friend class RefBase;
        weakref_type() = default;
        ~weakref_type() = default;

        std::atomic<int32_t> mStrong{kNeverReferenced};
        std::atomic<int32_t> mWeak{1};  // one for the object itself
    };

    weakref_type* createWeak(const void* id) const;

    RefBase(const RefBase&) = delete;
    RefBase& operator=(const RefBase&) = delete;

  protected:
    RefBase();
    virtual ~RefBase();

  private:
    // Far above every real count, so that "never referenced" can be told from "gone".
    static constexpr int32_t kNeverReferenced = 1 << 28;

    weakref_type* const mRefs;
};

#pragma GCC visibility pop

// A weak reference. One wp object may be used by one thread at a time.
template <typename T>
class wp {
  public:
    wp() = default;
    wp(T* other) : m_ptr(other) {
        if (other != nullptr) m_refs = other->createWeak(this);
    }
    wp(const wp& other) : m_ptr(other.m_ptr), m_refs(other.m_refs) { acquire(); }
    wp(wp&& other) noexcept
        : m_ptr(std::exchange(other.m_ptr, nullptr)),
          m_refs(std::exchange(other.m_refs, nullptr)) {}
    wp(const sp<T>& other) : wp(other.get()) {}
    template <typename U>
    wp(U* other) : wp(static_cast<T*>(other)) {}
    template <typename U>
    wp(const sp<U>& other) : wp(static_cast<T*>(other.get())) {}
    template <typename U>
    wp(const wp<U>& other) : m_ptr(other.m_ptr), m_refs(other.m_refs) {
        acquire();
    }
    ~wp() {
        if (m_refs != nullptr) m_refs->decWeak(this);
    }

    // Covers every source that a constructor takes.
    wp& operator=(wp other) noexcept {
        std::swap(m_ptr, other.m_ptr);
        std::swap(m_refs, other.m_refs);
        return *this;
    }

    void clear() { *this = wp(); }

    // The object, or null when its last strong reference is gone. Any thread.
    sp<T> promote() const {
        sp<T> result;
        if (m_refs != nullptr && m_refs->attemptIncStrong(&result)) result.set_pointer(m_ptr);
        return result;
    }

    // For comparing only: the object may be gone.
    T* unsafe_get() const { return m_ptr; }

  private:
    template <typename U>
    friend class wp;

    void acquire() {
        if (m_refs != nullptr) m_refs->incWeak(this);
    }

    T* m_ptr = nullptr;
    RefBase::weakref_type* m_refs = nullptr;
};

}  // namespace android
