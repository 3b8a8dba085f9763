#pragma once

#include <pthread.h>
#include <stdint.h>
#include <time.h>

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
#define ORVEL_ACQUIRE(...) ORVEL_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ORVEL_RELEASE(...) ORVEL_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ORVEL_ASSERTS(...) ORVEL_THREAD_ATTRIBUTE(assert_capability(__VA_ARGS__))
#define ORVEL_NO_THREAD_SAFETY_ANALYSIS ORVEL_THREAD_ATTRIBUTE(no_thread_safety_analysis)

namespace orvel {

// Of CLOCK_MONOTONIC.
inline int64_t monotonicNs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * int64_t{1000000000} + now.tv_nsec;
}

// A pthread mutex with default attributes; not recursive.
class ORVEL_CAPABILITY("mutex") Mutex {
  public:
    Mutex() { pthread_mutex_init(&mMutex, nullptr); }
    ~Mutex() { pthread_mutex_destroy(&mMutex); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() ORVEL_ACQUIRE() { pthread_mutex_lock(&mMutex); }
    void unlock() ORVEL_RELEASE() { pthread_mutex_unlock(&mMutex); }

    pthread_mutex_t* handle() { return &mMutex; }  // for Condition

  private:
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
    void wait(Mutex& mutex) ORVEL_REQUIRES(mutex) {
        pthread_cond_wait(&mCondition, mutex.handle());
    }
    void signal() { pthread_cond_signal(&mCondition); }

  private:
    pthread_cond_t mCondition;
};

// A thread as a capability: what requires it runs on that thread alone.
class ORVEL_CAPABILITY("thread") ThreadRole {
  public:
    // Tells the analysis that the caller runs on the thread.
    void assertHere() const ORVEL_ASSERTS(this) {}
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

// What follows a read-ahead pass.
enum class AfterPass {
    Nothing,    // the chain ends
    Pass,       // the next pass, which has been asked for
    ReadFirst,  // the same, but before it a read that waited gets this pass's packet
};

// The reader's mutex; not recursive. The looper's passes take it again and again. A plain mutex
// would let them starve a thread that waits, or, if it always went first, make the two threads
// change places for each packet, at the price of two wake-ups. Here passes go before a thread that
// waits for kPassOverNs, and then it goes before the next pass. The bodies are outside clang's
// analysis, which cannot know that mHeld is the lock.
class ORVEL_CAPABILITY("mutex") ReaderMutex {
  public:
    ReaderMutex() = default;
    ReaderMutex(const ReaderMutex&) = delete;
    ReaderMutex& operator=(const ReaderMutex&) = delete;

    void lock() ORVEL_ACQUIRE() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        ScopedLock<Mutex> state(mState);
        waitUntilFree();
    }

    // For a read that waited for its packet.
    void lockAfterWait() ORVEL_ACQUIRE() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        ScopedLock<Mutex> state(mState);
        waitUntilFree();
        mReadFirst = false;
    }

    void unlock() ORVEL_RELEASE() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        // Signals under mState: after it the reader, and this mutex with it, may be gone.
        ScopedLock<Mutex> state(mState);
        mHeld = false;
        if (mWaiting > 0) {
            mFree.signal();
        } else if (mPassWaits) {
            mPassTurn.signal();
        }
    }

    // One thread at a time: the looper, for its passes alone.
    void lockForPass() ORVEL_ACQUIRE() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        ScopedLock<Mutex> state(mState);
        while (mHeld || mReadFirst || isOverdue()) {
            if (!mHeld && mWaiting > 0) mFree.signal();
            mPassWaits = true;
            mPassTurn.wait(mState);
        }
        mPassWaits = false;
        mHeld = true;
    }

    // ReadFirst promises that a read has its packet and comes with lockAfterWait, whatever the
    // looper does: the next pass waits for it.
    void unlockAfterPass(AfterPass next) ORVEL_RELEASE() ORVEL_NO_THREAD_SAFETY_ANALYSIS {
        ScopedLock<Mutex> state(mState);
        mHeld = false;
        mReadFirst = next == AfterPass::ReadFirst;
        if (mWaiting > 0 && (next != AfterPass::Pass || isOverdue())) mFree.signal();
    }

    // Takes the promise back. Looper thread, before it takes a packet out of a cache.
    void cancelReadFirst() {
        ScopedLock<Mutex> state(mState);
        mReadFirst = false;
    }

  private:
    static constexpr int64_t kPassOverNs = 1000000;

    void waitUntilFree() ORVEL_REQUIRES(mState) {
        if (mHeld) {
            if (++mWaiting == 1) mWaitingSinceNs = monotonicNs();
            while (mHeld)
                mFree.wait(mState);
            if (--mWaiting > 0) mWaitingSinceNs = monotonicNs();
        }
        mHeld = true;
    }

    bool isOverdue() const ORVEL_REQUIRES(mState) {
        return mWaiting > 0 && monotonicNs() - mWaitingSinceNs >= kPassOverNs;
    }

    Mutex mState;
    bool mHeld ORVEL_GUARDED_BY(mState) = false;
    bool mReadFirst ORVEL_GUARDED_BY(mState) = false;
    bool mPassWaits ORVEL_GUARDED_BY(mState) = false;
    int mWaiting ORVEL_GUARDED_BY(mState) = 0;  // threads that wait in lock or lockAfterWait
    int64_t mWaitingSinceNs ORVEL_GUARDED_BY(mState) = 0;  // the one that waits longest, about
    Condition mFree;                                       // for these
    Condition mPassTurn;                                   // for the looper in lockForPass
};

// Holds a ReaderMutex for a read that waited for its packet.
class ORVEL_SCOPED_CAPABILITY LockAfterWait {
  public:
    explicit LockAfterWait(ReaderMutex& mutex) ORVEL_ACQUIRE(mutex) : mMutex(mutex) {
        mMutex.lockAfterWait();
    }
    ~LockAfterWait() ORVEL_RELEASE() { mMutex.unlock(); }
    LockAfterWait(const LockAfterWait&) = delete;
    LockAfterWait& operator=(const LockAfterWait&) = delete;

  private:
    ReaderMutex& mMutex;
};

// Holds a ReaderMutex for a read-ahead pass.
class ORVEL_SCOPED_CAPABILITY PassLock {
  public:
    explicit PassLock(ReaderMutex& mutex) ORVEL_ACQUIRE(mutex) : mMutex(mutex) {
        mMutex.lockForPass();
    }
    ~PassLock() ORVEL_RELEASE() { mMutex.unlockAfterPass(mNext); }
    PassLock(const PassLock&) = delete;
    PassLock& operator=(const PassLock&) = delete;

    AfterPass next() const { return mNext; }
    void setNext(AfterPass next) { mNext = next; }

  private:
    ReaderMutex& mMutex;
    AfterPass mNext = AfterPass::Nothing;
};

}  // namespace orvel
