#define LOG_TAG "RefBase"

#include <log/log.h>
#include <utils/RefBase.h>

namespace android {

// Every decrement is both release and acquire: the thread that deletes sees all writes of the
// threads that released before. (A fence after the last one would do, but the thread sanitizer does
// not see fences.)

RefBase::RefBase() : mRefs(new weakref_type) {}

RefBase::~RefBase() {
    // From here on no promotion succeeds, also for an object that never had a strong reference.
    int32_t strong = mRefs->mStrong.exchange(0, std::memory_order_acq_rel);
    LOG_ALWAYS_FATAL_IF(strong != 0 && strong != kNeverReferenced,
                        "object %p destroyed with %d strong references", this, strong);
    if (strong != 0) ALOGW("object %p never had a strong reference; hold it by sp", this);
    mRefs->decWeak(this);
}

void RefBase::incStrong(const void* /* id */) const {
    int32_t before = mRefs->mStrong.fetch_add(1, std::memory_order_relaxed);
    if (before != kNeverReferenced) {
        LOG_ALWAYS_FATAL_IF(before <= 0, "strong reference to %p after the last one", this);
        return;
    }
    mRefs->mStrong.fetch_sub(kNeverReferenced, std::memory_order_relaxed);
}

void RefBase::decStrong(const void* /* id */) const {
    int32_t before = mRefs->mStrong.fetch_sub(1, std::memory_order_acq_rel);
    LOG_ALWAYS_FATAL_IF(before <= 0 || before == kNeverReferenced,
                        "strong reference to %p released twice", this);
    if (before == 1) delete this;
}

int32_t RefBase::getStrongCount() const {
    int32_t strong = mRefs->mStrong.load(std::memory_order_relaxed);
    return strong >= kNeverReferenced ? strong - kNeverReferenced : strong;
}

RefBase::weakref_type* RefBase::createWeak(const void* id) const {
    mRefs->incWeak(id);
    return mRefs;
}

void RefBase::weakref_type::incWeak(const void* /* id */) {
    mWeak.fetch_add(1, std::memory_order_relaxed);
}

void RefBase::weakref_type::decWeak(const void* /* id */) {
    if (mWeak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

bool RefBase::weakref_type::attemptIncStrong(const void* /* id */) {
    int32_t strong = mStrong.load(std::memory_order_relaxed);
    do {
        if (strong <= 0) return false;
    } while (!mStrong.compare_exchange_weak(strong, strong + 1, std::memory_order_acq_rel,
                                            std::memory_order_relaxed));
    if (strong == kNeverReferenced) {
        mStrong.fetch_sub(kNeverReferenced, std::memory_order_relaxed);
    }
    return true;
}

}  // namespace android
