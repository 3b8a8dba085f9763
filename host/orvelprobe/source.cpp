#include "source.h"

#include <chrono>

#include "framework/FaultSource.h"
#include "framework/FileSource.h"
#include "framework/SourceDecorators.h"

namespace orvel::probe {

// Short reads stand in front of the fault, so that only those which touch the bad byte fail.
Source::Source(const std::string& path, const SourceOptions& options) {
    add(std::make_unique<host::FileSource>(path));
    if (options.errorAt >= 0) {
        host::Fault fault;
        fault.atOffset = options.errorAt;
        add(std::make_unique<host::FaultSource>(top(), fault));
    }
    if (options.shortBytes > 0) {
        add(std::make_unique<host::ShortReadSource>(top(), options.shortBytes));
    }
    if (options.latencyUs > 0) {
        add(std::make_unique<host::DelaySource>(top(),
                                                std::chrono::microseconds(options.latencyUs)));
    }
    if (options.unknownSize) add(std::make_unique<host::UnknownSizeSource>(top()));
    auto coverage = std::make_unique<CoverageSource>(top());
    mCoverage = coverage.get();
    add(std::move(coverage));
}

Source::~Source() {
    while (!mLayers.empty())
        mLayers.pop_back();
}

host::DataSource& Source::traced(SniffTrace& trace) {
    add(std::make_unique<TracedSource>(top(), trace));
    return top();
}

int64_t Source::fileBytes() {
    off64_t size = -1;
    return mLayers.front()->getSize(&size) == android::OK ? size : -1;
}

}  // namespace orvel::probe
