// What a plug-in read and logged while it decided about a file, in the order in which it happened.
#pragma once

#include <mutex>
#include <vector>

#include "framework/SourceDecorators.h"
#include "report.h"

namespace orvel::probe {

// Grows from construction until take(). Any thread. Bounded: beyond a limit events are only
// counted, except the lines that tell the plug-in's decision.
class SniffTrace {
  public:
    void addRead(off64_t offset, size_t length, ssize_t result);
    void addSizeQuery(off64_t size);
    void addLine(int priority, const char* tag, const char* text);

    ExplainReport take();

  private:
    void add(TraceEvent event, bool always);

    std::mutex mMutex;
    ExplainReport mReport;  // guarded by mMutex
    bool mDone = false;     // guarded by mMutex
};

// Notes down what the source is asked and answers. As long-lived as what is made over it; the trace
// has to live as long.
class TracedSource final : public host::SourceDecorator {
  public:
    TracedSource(host::DataSource& inner, SniffTrace& trace)
        : SourceDecorator(inner), mTrace(trace) {}
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;

  private:
    SniffTrace& mTrace;
};

}  // namespace orvel::probe
