// A mutex and a condition whose timed waits are on the monotonic clock. On pthreads directly: the
// thread sanitizer knows these calls, but not those that the C++ library uses for a steady clock.
#pragma once

#include <pthread.h>
#include <stdint.h>
#include <time.h>

#ifdef __clang__
#define ORVEL_TSA(x) __attribute__((x))
#else
#define ORVEL_TSA(x)
#endif

namespace standin {

class ORVEL_TSA(capability("mutex")) Mutex {
  public:
    Mutex() = default;
    ~Mutex() { pthread_mutex_destroy(&mMutex); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() ORVEL_TSA(acquire_capability()) { pthread_mutex_lock(&mMutex); }
    void unlock() ORVEL_TSA(release_capability()) { pthread_mutex_unlock(&mMutex); }

  private:
    friend class Condition;
    pthread_mutex_t mMutex = PTHREAD_MUTEX_INITIALIZER;
};

// One writer or any number of readers.
class ORVEL_TSA(capability("mutex")) SharedMutex {
  public:
    SharedMutex() = default;
    ~SharedMutex() { pthread_rwlock_destroy(&mLock); }
    SharedMutex(const SharedMutex&) = delete;
    SharedMutex& operator=(const SharedMutex&) = delete;

    void lock() ORVEL_TSA(acquire_capability()) { pthread_rwlock_wrlock(&mLock); }
    void unlock() ORVEL_TSA(release_capability()) { pthread_rwlock_unlock(&mLock); }
    void lockShared() ORVEL_TSA(acquire_shared_capability()) { pthread_rwlock_rdlock(&mLock); }
    void unlockShared() ORVEL_TSA(release_shared_capability()) { pthread_rwlock_unlock(&mLock); }

  private:
    pthread_rwlock_t mLock = PTHREAD_RWLOCK_INITIALIZER;
};

// Holds a Mutex, or a SharedMutex for writing, for a scope.
template <typename MutexType>
class ORVEL_TSA(scoped_lockable) Autolock {
  public:
    explicit Autolock(MutexType& mutex) ORVEL_TSA(acquire_capability(mutex)) : mMutex(mutex) {
        mMutex.lock();
    }
    ~Autolock() ORVEL_TSA(release_capability()) { mMutex.unlock(); }
    Autolock(const Autolock&) = delete;
    Autolock& operator=(const Autolock&) = delete;

  private:
    MutexType& mMutex;
};

class ORVEL_TSA(scoped_lockable) SharedAutolock {
  public:
    explicit SharedAutolock(SharedMutex& mutex) ORVEL_TSA(acquire_shared_capability(mutex))
        : mMutex(mutex) {
        mMutex.lockShared();
    }
    ~SharedAutolock() ORVEL_TSA(release_capability()) { mMutex.unlockShared(); }
    SharedAutolock(const SharedAutolock&) = delete;
    SharedAutolock& operator=(const SharedAutolock&) = delete;

  private:
    SharedMutex& mMutex;
};

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

    void wait(Mutex& mutex) ORVEL_TSA(requires_capability(mutex)) {
        pthread_cond_wait(&mCondition, &mutex.mMutex);
    }
    // Until a time of CLOCK_MONOTONIC in microseconds, at the latest.
    void waitUntil(Mutex& mutex, int64_t timeUs) ORVEL_TSA(requires_capability(mutex)) {
        timespec time = {static_cast<time_t>(timeUs / 1000000), (timeUs % 1000000) * 1000};
        pthread_cond_timedwait(&mCondition, &mutex.mMutex, &time);
    }
    void signal() { pthread_cond_signal(&mCondition); }
    void broadcast() { pthread_cond_broadcast(&mCondition); }

  private:
    pthread_cond_t mCondition;
};

}  // namespace standin
