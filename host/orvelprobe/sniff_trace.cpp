#include "sniff_trace.h"

#include <cstring>
#include <utility>

namespace orvel::probe {
namespace {

// A source that gives a byte a read makes millions of events.
constexpr size_t kMaxEvents = 20000;

// The tags under which the decision itself is logged, in a few dozen lines at most.
bool tellsTheDecision(const char* tag) {
    return strcmp(tag, "FFmpegObject") == 0 || strcmp(tag, "Parser2Creater") == 0;
}

}  // namespace

void SniffTrace::add(TraceEvent event, bool always) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mDone) return;
    if (always || mReport.events.size() < kMaxEvents) {
        mReport.events.push_back(std::move(event));
    } else {
        mReport.omitted++;
    }
}

void SniffTrace::addRead(off64_t offset, size_t length, ssize_t result) {
    TraceEvent event;
    event.kind = TraceEvent::Kind::Read;
    event.offset = offset;
    event.length = length;
    event.result = result;
    add(std::move(event), false);
}

void SniffTrace::addSizeQuery(off64_t size) {
    TraceEvent event;
    event.kind = TraceEvent::Kind::Size;
    event.result = size;
    add(std::move(event), false);
}

void SniffTrace::addLine(int priority, const char* tag, const char* text) {
    TraceEvent event;
    event.kind = TraceEvent::Kind::Line;
    event.priority = priority;
    event.tag = tag;
    event.text = text;
    add(std::move(event), tellsTheDecision(tag));
}

ExplainReport SniffTrace::take() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mDone = true;
    return std::move(mReport);
}

ssize_t TracedSource::readAt(off64_t offset, void* data, size_t size) {
    const ssize_t result = inner().readAt(offset, data, size);
    mTrace.addRead(offset, size, result);
    return result;
}

android::status_t TracedSource::getSize(off64_t* size) {
    const android::status_t status = inner().getSize(size);
    mTrace.addSizeQuery(*size);
    return status;
}

}  // namespace orvel::probe
