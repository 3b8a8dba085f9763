#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <mutex>
#include <set>
#include <string>

namespace {

std::atomic<const char*> gName{nullptr};  // null: not set, the name is the executable's

}  // namespace

const char* getprogname() {
    const char* name = gName.load(std::memory_order_acquire);
    return name != nullptr ? name : program_invocation_short_name;
}

void setprogname(const char* name) {
    // Every name that was ever set is kept, once, because a caller may still hold it.
    static std::mutex& lock = *new std::mutex;
    static std::set<std::string>& names = *new std::set<std::string>;
    const char* slash = strrchr(name, '/');
    std::lock_guard<std::mutex> hold(lock);
    const char* kept = names.emplace(slash != nullptr ? slash + 1 : name).first->c_str();
    gName.store(kept, std::memory_order_release);
}
