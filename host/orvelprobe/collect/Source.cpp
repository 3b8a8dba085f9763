#include "collect/Source.h"

#include <chrono>

#include "framework/FaultSource.h"

namespace orvel::probe {

// Short reads stand in front of the fault, so that only those which touch the bad byte fail.
Source::Source(const std::string& path, const SourceOptions& options,
               host::ObservedSource::Listener listener)
    : mFile(path) {
    using namespace host;
    if (options.errorAt >= 0) add<FaultSource>(Fault::at(options.errorAt));
    if (options.shortBytes > 0) add<ShortReadSource>(options.shortBytes);
    if (options.latencyUs > 0) add<DelaySource>(std::chrono::microseconds(options.latencyUs));
    if (options.unknownSize) add<UnknownSizeSource>();
    mTop = std::make_unique<ObservedSource>(last(), std::move(listener));
}

}  // namespace orvel::probe
