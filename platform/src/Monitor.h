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

class ORVEL_TSA(scoped_lockable) Autolock {
  public:
    explicit Autolock(Mutex& mutex) ORVEL_TSA(acquire_capability(mutex)) : mMutex(mutex) {
        mMutex.lock();
    }
    ~Autolock() ORVEL_TSA(release_capability()) { mMutex.unlock(); }
    Autolock(const Autolock&) = delete;
    Autolock& operator=(const Autolock&) = delete;

  private:
    Mutex& mMutex;
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
