#include "log_capture.h"

#include <android/log.h>
#include <standin/log_control.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "sniff_trace.h"
#include "text.h"

namespace orvel::probe {
namespace {

constexpr size_t kMaxDifferentWarnings = 64;

// Logged as warnings or errors on every ordinary run: the end of the file or of its subtitles, a
// cover that is no video track, and the picture's MIME type, which no key table holds.
constexpr const char* kRoutine[] = {
        "reach end of file",
        "subtitle index out of range!",
        "in readDataSource, end of stream",
        "This is a attached picture",
        "key is 0x616c414d",
        "Estimating duration from bitrate",
};

thread_local bool tPaused = false;

bool isRoutine(const char* text) {
    return std::any_of(std::begin(kRoutine), std::end(kRoutine),
                       [text](const char* part) { return strstr(text, part) != nullptr; });
}

}  // namespace

LogCapture::LogCapture() {
    standin::setLogHook(onLine, this, ANDROID_LOG_WARN);
}

LogCapture::~LogCapture() {
    standin::setLogHook(nullptr, nullptr);
}

void LogCapture::onLine(void* cookie, int priority, const char* tag, const char* text) {
    if (tPaused) return;
    auto* self = static_cast<LogCapture*>(cookie);
    const std::lock_guard<std::mutex> lock(self->mMutex);
    if (self->mTrace) self->mTrace->addLine(priority, tag, text);
    if (priority < ANDROID_LOG_WARN || isRoutine(text)) return;
    std::string line = std::string(tag) + ": " + text;
    const auto known = std::find_if(self->mWarnings.begin(), self->mWarnings.end(),
                                    [&line](const Warning& other) { return other.text == line; });
    if (known != self->mWarnings.end()) {
        known->count++;
    } else if (self->mWarnings.size() < kMaxDifferentWarnings) {
        self->mWarnings.push_back({std::move(line), 1});
    } else {
        self->mOtherWarnings++;
    }
}

void LogCapture::setTrace(SniffTrace* trace) {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mTrace = trace;
    }
    // FFmpeg has a line for each entry of an index, which takes longer to write than to make.
    standin::setLogHook(onLine, this, trace ? ANDROID_LOG_UNKNOWN : ANDROID_LOG_WARN);
}

LogCapture::Pause::Pause() {
    tPaused = true;
}

LogCapture::Pause::~Pause() {
    tPaused = false;
}

std::vector<std::string> LogCapture::warnings(size_t maxLines) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string> lines;
    size_t more = mOtherWarnings;
    for (const Warning& warning : mWarnings) {
        if (lines.size() < maxLines) {
            lines.push_back(warning.text);
            if (warning.count > 1) lines.back() += " (" + countText(warning.count, "time") + ")";
        } else {
            more += warning.count;
        }
    }
    if (more > 0) lines.push_back("and " + countText(more, "line") + " more");
    return lines;
}

}  // namespace orvel::probe
