#include "progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "text.h"

namespace orvel::probe {
namespace {

constexpr auto kAppearsAfter = std::chrono::milliseconds(500);
constexpr auto kRedrawnAfter = std::chrono::milliseconds(100);
constexpr size_t kBarColumns = 24;

size_t terminalColumns() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string bar(double fraction) {
    const auto full = static_cast<size_t>(std::clamp(fraction, 0.0, 1.0) * kBarColumns);
    return "[" + std::string(full, '#') + std::string(kBarColumns - full, '.') + "] ";
}

}  // namespace

ProgressLine::ProgressLine(bool enabled)
    : mEnabled(enabled && isatty(STDERR_FILENO)), mSince(std::chrono::steady_clock::now()) {}

void ProgressLine::draw(const std::string& file, size_t index, size_t files,
                        const ChildState* state) {
    if (!mEnabled) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - mSince < (mAppeared ? kRedrawnAfter : kAppearsAfter)) return;
    mSince = now;
    mAppeared = true;
    std::string text;
    if (files > 1) text += std::to_string(index + 1) + "/" + std::to_string(files) + " ";
    if (state && state->samples > 0) {
        const int64_t duration = state->durationUs;
        if (duration > 0) {
            text += bar(static_cast<double>(state->timeUs) / static_cast<double>(duration));
        }
        text += durationText(state->timeUs) + " " + sizeText(state->bytes) + " ";
    }
    text += printable(file);
    const size_t room = terminalColumns() - 1;
    fprintf(stderr, "\r\033[K%s", printable(text, room > 4 ? room - 3 : room).c_str());
    fflush(stderr);
    mShown = true;
}

void ProgressLine::clear() {
    if (!mShown) return;
    fputs("\r\033[K", stderr);
    fflush(stderr);
    mShown = false;
}

}  // namespace orvel::probe
