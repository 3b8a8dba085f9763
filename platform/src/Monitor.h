// A mutex and a condition, with the attributes that clang's thread-safety analysis reads.
#pragma once

#include <pthread.h>

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

// Holds a Mutex for a scope.
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
    Condition() = default;
    ~Condition() { pthread_cond_destroy(&mCondition); }
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    void wait(Mutex& mutex) ORVEL_TSA(requires_capability(mutex)) {
        pthread_cond_wait(&mCondition, &mutex.mMutex);
    }
    void signal() { pthread_cond_signal(&mCondition); }
    void broadcast() { pthread_cond_broadcast(&mCondition); }

  private:
    pthread_cond_t mCondition = PTHREAD_COND_INITIALIZER;
};

}  // namespace standin
