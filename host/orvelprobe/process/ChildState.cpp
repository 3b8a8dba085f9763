#include "process/ChildState.h"

#include <sys/mman.h>

#include <cerrno>
#include <iterator>
#include <new>
#include <system_error>

#include "Words.h"

namespace orvel::probe {

std::string ChildState::whereabouts() const {
    static constexpr const char* kSteps[] = {
            "before it began",
            "while the plug-in was loaded",
            "while the plug-in sniffed the file",
            "while the plug-in sniffed it once more, with every container enabled",
            "while the extractor was created",
            "while the formats were fetched",
            "while the tracks were started",
            "while reading",
            "while seeking",
            "while the result was written",
            "while tracks and extractor were closed",
            "after its work was done"};
    static_assert(std::size(kSteps) == static_cast<size_t>(Step::Done) + 1);
    const std::string text = kSteps[static_cast<size_t>(step.load())];
    if (step != Step::Read && step != Step::Seek) return text;
    if (samples == 0) return text + ", before the first sample";
    return text + ", after " + countText(samples, "sample") + " (the last: track " +
           std::to_string(track) + " at " + secondsText(timeUs) + ")";
}

SharedChildState makeSharedChildState() {
    void* memory = mmap(nullptr, sizeof(ChildState), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    return SharedChildState(new (memory) ChildState);
}

void Unmap::operator()(ChildState* state) const {
    munmap(state, sizeof(ChildState));
}

}  // namespace orvel::probe
