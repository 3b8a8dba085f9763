#pragma once

#include <pthread.h>
#include <stddef.h>
#include <stdint.h>
#include <time.h>

#include <atomic>

// clang proves the locking rules that these attributes state; other compilers ignore them.
#if defined(__clang__)
#define ORVEL_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define ORVEL_THREAD_ATTRIBUTE(x)
#endif
#define ORVEL_CAPABILITY(name) ORVEL_THREAD_ATTRIBUTE(capability(name))
#define ORVEL_SCOPED_CAPABILITY ORVEL_THREAD_ATTRIBUTE(scoped_lockable)
#define ORVEL_GUARDED_BY(lock) ORVEL_THREAD_ATTRIBUTE(guarded_by(lock))
#define ORVEL_REQUIRES(...) ORVEL_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ORVEL_EXCLUDES(...) ORVEL_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ORVEL_ACQUIRE(...) ORVEL_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ORVEL_RELEASE(...) ORVEL_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ORVEL_NO_THREAD_SAFETY_ANALYSIS ORVEL_THREAD_ATTRIBUTE(no_thread_safety_analysis)

namespace orvel {

// What two threads write must not share a line with what one of them reads for each sample.
constexpr size_t kCacheLine = 64;

// What going to sleep and being woken costs, and what a woken thread takes at most until it runs,
// on usual machines.
constexpr int64_t kSleepNs = 50000;
constexpr int64_t kWakeUpNs = 200000;

// Waiting awake, for what is about to come true by another thread's doing. Where it does not (the
// other thread has no processor, or waits for the source) it gives up after longestNs, and does not
// even begin for the next waits, the more of them the oftener that happens: what cannot be had in a
// moment is slept through, and costs no processor time. Any thread.
class Spin {
  public:
    explicit Spin(int64_t longestNs = kSleepNs) : mLongestNs(longestNs) {}

    // Whether the condition came true.
    template <typename Predicate>
    bool until(Predicate condition) {
        if (condition()) return true;
        const uint32_t skips = mSkips.load(std::memory_order_relaxed);
        if (skips > 0) {
            mSkips.store(skips - 1, std::memory_order_relaxed);
            return false;
        }
        const bool came = look(condition);
        if (came) {
            mFailures.store(0, std::memory_order_relaxed);
        } else {
            const uint32_t failures = mFailures.load(std::memory_order_relaxed);
            mSkips.store((1u << failures) / 2, std::memory_order_relaxed);
            if (failures < kMostFailures) mFailures.store(failures + 1, std::memory_order_relaxed);
        }
        return came;
    }

  private:
    static constexpr uint32_t kMostFailures = 7;  // 64 waits are skipped then

    template <typename Predicate>
    bool look(Predicate condition) const {
        constexpr int kLooksPerClock = 16;  // the clock takes as long as some looks
        int64_t beginNs = 0;
        for (;;) {
            for (int i = 0; i < kLooksPerClock; ++i) {
#if defined(__x86_64__)
                __builtin_ia32_pause();
#elif defined(__aarch64__)
                asm volatile("yield");
#endif
                if (condition()) return true;
            }
            timespec now;
            clock_gettime(CLOCK_MONOTONIC, &now);
            const int64_t nowNs = now.tv_sec * int64_t{1000000000} + now.tv_nsec;
            if (beginNs == 0) beginNs = nowNs;
            if (nowNs - beginNs >= mLongestNs) return false;
        }
    }

    const int64_t mLongestNs;
    // Of successive failures, and of waits that do not even begin. Hints.
    std::atomic<uint32_t> mFailures{0};
    std::atomic<uint32_t> mSkips{0};
};

// A pthread mutex with default attributes; not recursive.
class ORVEL_CAPABILITY("mutex") Mutex {
  public:
    Mutex() { pthread_mutex_init(&mMutex, nullptr); }
    ~Mutex() { pthread_mutex_destroy(&mMutex); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() ORVEL_ACQUIRE() { pthread_mutex_lock(&mMutex); }
    void unlock() ORVEL_RELEASE() { pthread_mutex_unlock(&mMutex); }

  private:
    friend class Condition;
    pthread_mutex_t mMutex;
};

// A pthread condition on the monotonic clock. All waits are untimed.
class Condition {
  public:
    Condition() {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&mCondition, &attributes);
        pthread_condattr_destroy(&attributes);
    }
    ~Condition() { pthread_cond_destroy(&mCondition); }
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    // Spurious wake-ups happen: call it in a loop over the awaited state.
    void wait(Mutex& mutex) ORVEL_REQUIRES(mutex) { wait(&mutex.mMutex); }
    void signal() { pthread_cond_signal(&mCondition); }

  private:
    friend class ReaderMutex;
    void wait(pthread_mutex_t* mutex) { pthread_cond_wait(&mCondition, mutex); }

    pthread_cond_t mCondition;
};

// The reader's mutex: a pthread mutex with default attributes that one thread, the looper with its
// read-ahead passes, takes again and again, and that any number of framework threads take now and
// then. A plain mutex would let the looper retake it before a woken framework thread gets to run.
// Here whoever waits in lock() when lockForPass() is called is served first. The bodies are outside
// the analysis, which knows nothing of pthread_mutex_t; their attributes are what callers are held
// to.
class ORVEL_CAPABILITY("mutex") ReaderMutex {
  public:
    ReaderMutex() { pthread_mutex_init(&mMutex, nullptr); }
    ~ReaderMutex() { pthread_mutex_destroy(&mMutex); }
    ReaderMutex(const ReaderMutex&) = delete;
    ReaderMutex& operator=(const ReaderMutex&) = delete;

    void lock() ORVEL_ACQUIRE() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        if (tryLock()) return;
        mWaiting.fetch_add(1);
        if (!mLockSpin.until([this] { return tryLock(); })) {
            pthread_mutex_lock(&mMutex);
            mHeld.store(true, std::memory_order_relaxed);
        }
        mWaiting.fetch_sub(1);
    }

    // For the read-ahead pass alone, and so for one thread at a time.
    void lockForPass() ORVEL_ACQUIRE() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        if (mPassSpin.until([this] { return tryLockForPass(); })) return;
        pthread_mutex_lock(&mMutex);
        mPassWaiting = true;
        while (mWaiting.load() > 0)
            mNobodyWaits.wait(&mMutex);
        mPassWaiting = false;
        mHeld.store(true, std::memory_order_relaxed);
    }

    void unlock() ORVEL_RELEASE() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        const bool wakePass = mPassWaiting && mWaiting.load() == 0;
        // Signalled before unlocking: afterwards the reader, and this mutex with it, may be gone.
        if (wakePass) mNobodyWaits.signal();
        mHeld.store(false, std::memory_order_relaxed);
        pthread_mutex_unlock(&mMutex);
    }

  private:
    bool tryLock() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        if (mHeld.load(std::memory_order_relaxed) || pthread_mutex_trylock(&mMutex) != 0) {
            return false;
        }
        mHeld.store(true, std::memory_order_relaxed);
        return true;
    }

    bool tryLockForPass() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        if (mWaiting.load(std::memory_order_relaxed) > 0 || !tryLock()) return false;
        if (mWaiting.load() == 0) return true;
        unlock();
        return false;
    }

    // All that changes hands with the mutex lies in the mutex's own cache line.
    alignas(kCacheLine) pthread_mutex_t mMutex;
    std::atomic<int> mWaiting{0};  // threads inside lock() that do not have the mutex yet
    bool mPassWaiting = false;     // guarded by mMutex
    // The mutex is held: lets who spins look without taking its cache line from the holder. A hint.
    std::atomic<bool> mHeld{false};
    alignas(kCacheLine) Condition mNobodyWaits;  // mWaiting fell to 0 while a pass waited
    Spin mLockSpin;
    alignas(kCacheLine) Spin mPassSpin;
};

// Holds a Mutex or a ReaderMutex for a scope.
template <typename MutexType>
class ORVEL_SCOPED_CAPABILITY ScopedLock {
  public:
    explicit ScopedLock(MutexType& mutex) ORVEL_ACQUIRE(mutex) : mMutex(mutex) { mMutex.lock(); }
    ~ScopedLock() ORVEL_RELEASE() { mMutex.unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

  private:
    MutexType& mMutex;
};

// Holds a ReaderMutex for a read-ahead pass.
class ORVEL_SCOPED_CAPABILITY PassLock {
  public:
    explicit PassLock(ReaderMutex& mutex) ORVEL_ACQUIRE(mutex) : mMutex(mutex) {
        mMutex.lockForPass();
    }
    ~PassLock() ORVEL_RELEASE() { mMutex.unlock(); }
    PassLock(const PassLock&) = delete;
    PassLock& operator=(const PassLock&) = delete;

  private:
    ReaderMutex& mMutex;
};

}  // namespace orvel
