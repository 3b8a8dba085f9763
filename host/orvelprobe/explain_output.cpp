#include "explain_output.h"

#include <android/log.h>

#include <cinttypes>
#include <cstdint>

namespace orvel::probe {
namespace {

constexpr size_t kTagColumns = 16;

bool isWhole(const TraceEvent& read) {
    return read.result == static_cast<int64_t>(read.length);
}

// How many events from `first` on are whole reads of one length, each where the one before ended.
size_t runLength(const std::vector<TraceEvent>& events, size_t first) {
    size_t end = first + 1;
    while (end < events.size() && events[end].kind == TraceEvent::Kind::Read &&
           isWhole(events[end - 1]) && isWhole(events[end]) &&
           events[end].length == events[first].length &&
           events[end].offset == events[end - 1].offset + events[end - 1].result) {
        end++;
    }
    return end - first;
}

std::string resultText(const TraceEvent& read) {
    if (isWhole(read)) return "all";
    if (read.result == 0) return "none, the end";
    return read.result < 0 ? statusText(static_cast<int32_t>(read.result))
                           : std::to_string(read.result) + " bytes";
}

std::string lineText(const Page& page, const TraceEvent& event) {
    const char letter = priorityLetter(event.priority);
    std::string tag = printable(event.tag);
    if (tag.size() < kTagColumns) tag.resize(kTagColumns, ' ');
    const std::string text = std::string(1, letter) + "  " + page.paint(Colour::Dim, tag) + " ";
    const std::string said = printable(event.text);
    if (letter == 'W') return text + page.paint(Colour::Warn, said);
    return letter == 'E' || letter == 'F' ? text + page.paint(Colour::Bad, said) : text + said;
}

}  // namespace

std::string verdictText(const Report& report) {
    return (report.taken ? "taken: " : "declined: ") + report.reason;
}

char priorityLetter(int priority) {
    static constexpr char kLetters[] = "VDIWEF";
    return priority >= ANDROID_LOG_VERBOSE && priority <= ANDROID_LOG_FATAL
                   ? kLetters[priority - ANDROID_LOG_VERBOSE]
                   : '?';
}

void writeExplain(const Page& page, const Report& report) {
    const std::vector<TraceEvent>& events = report.explain->events;
    for (size_t i = 0; i < events.size();) {
        const TraceEvent& event = events[i];
        size_t used = 1;
        switch (event.kind) {
            case TraceEvent::Kind::Line:
                page.line("    " + lineText(page, event));
                break;
            case TraceEvent::Kind::Size:
                page.line("    size asked: " +
                          (event.result < 0 ? "not known" : std::to_string(event.result)));
                break;
            case TraceEvent::Kind::Read:
                used = runLength(events, i);
                page.line("    read at " + std::to_string(event.offset) + ", " +
                          std::to_string(event.length) + " bytes" +
                          (used > 1 ? ", " + std::to_string(used) + " times on end" : "") + ": " +
                          resultText(event));
                break;
        }
        i += used;
    }
    if (report.explain->omitted > 0) {
        page.line("    and " + countText(report.explain->omitted, "more step"));
    }
    page.row("verdict", page.paint(report.taken ? Colour::Good : Colour::Warn,
                                   printable(verdictText(report))));
}

}  // namespace orvel::probe
