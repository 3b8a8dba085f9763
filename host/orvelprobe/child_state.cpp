#include "child_state.h"

#include <sys/mman.h>

#include <cerrno>
#include <new>
#include <system_error>

#include "text.h"

namespace orvel::probe {

void ChildState::setError(const std::string& text) {
    error[text.copy(error, sizeof(error) - 1)] = '\0';
}

std::string ChildState::whereabouts() const {
    switch (step.load()) {
        case Step::Start:
            return "before it began";
        case Step::LoadPlugin:
            return "while the plug-in was loaded";
        case Step::Sniff:
            return "while the plug-in sniffed the file";
        case Step::SniffAgain:
            return "while the plug-in sniffed it once more, with every container enabled";
        case Step::Create:
            return "while the extractor was created";
        case Step::Describe:
            return "while the formats were fetched";
        case Step::StartTracks:
            return "while the tracks were started";
        case Step::Output:
            return "while the result was written";
        case Step::Close:
            return "while tracks and extractor were closed";
        case Step::Done:
            return "after its work was done";
        case Step::Read:
        case Step::Seek:
            break;
    }
    std::string text = step.load() == Step::Read ? "while reading" : "while seeking";
    if (samples == 0) return text + ", before the first sample";
    return text + ", after " + countText(samples, "sample") + " (the last: track " +
           std::to_string(track) + " at " + secondsText(timeUs) + ")";
}

SharedChildState::SharedChildState() {
    void* memory = mmap(nullptr, sizeof(ChildState), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    mState = new (memory) ChildState;
}

SharedChildState::~SharedChildState() {
    if (mState) munmap(mState, sizeof(ChildState));
}

}  // namespace orvel::probe
