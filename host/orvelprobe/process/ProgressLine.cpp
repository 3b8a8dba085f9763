#include "process/ProgressLine.h"

#include <sys/ioctl.h>

#include <algorithm>
#include <cstdio>

#include "Words.h"

namespace orvel::probe {

void ProgressLine::draw(const std::string& file, size_t index, size_t files,
                        const ChildState* state) {
    constexpr auto kAppearsAfter = std::chrono::milliseconds(500);
    constexpr size_t kBarColumns = 24;
    if (!mEnabled || std::chrono::steady_clock::now() - mSince < kAppearsAfter) return;
    std::string text;
    if (files > 1) text += std::to_string(index + 1) + "/" + std::to_string(files) + " ";
    if (state && state->samples > 0) {
        if (const int64_t duration = state->durationUs; duration > 0) {
            const double share = static_cast<double>(state->timeUs) / static_cast<double>(duration);
            const auto full = static_cast<size_t>(std::clamp(share, 0.0, 1.0) * kBarColumns);
            text += "[" + std::string(full, '#') + std::string(kBarColumns - full, '.') + "] ";
        }
        text += durationText(state->timeUs) + " " + sizeText(state->bytes) + " ";
    }
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 8;
    text = printable(text + printable(file), (known ? size.ws_col : 80) - 4);
    fprintf(stderr, "\r\033[K%s", text.c_str());
    fflush(stderr);
    mShown = true;
}

void ProgressLine::clear() {
    if (mShown) fputs("\r\033[K", stderr);
    fflush(stderr);
    mShown = false;
}

}  // namespace orvel::probe
