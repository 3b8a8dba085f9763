#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <set>
#include <string>

#include "Monitor.h"

namespace {

std::atomic<const char*> gName{nullptr};  // null: not set, the name is the executable's

// Every name that was ever set is kept, once, because a caller may still hold it.
struct Names {
    standin::Mutex lock;
    std::set<std::string> kept ORVEL_TSA(guarded_by(lock));
};

}  // namespace

const char* getprogname() {
    const char* name = gName.load(std::memory_order_acquire);
    return name != nullptr ? name : program_invocation_short_name;
}

void setprogname(const char* name) {
    static Names& names = *new Names;
    const char* slash = strrchr(name, '/');
    standin::Autolock hold(names.lock);
    const char* kept = names.kept.emplace(slash != nullptr ? slash + 1 : name).first->c_str();
    gName.store(kept, std::memory_order_release);
}
