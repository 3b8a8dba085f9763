// The same file offered again, with every container enabled.
#pragma once

#include <optional>
#include <string>

#include "framework/Plugin.h"
#include "log_capture.h"
#include "sniff_reason.h"

namespace orvel::probe {

// In a process of its own, since a plug-in that crashes here has not crashed over the file: nothing
// comes back then. No thread but the caller's may exist.
std::optional<WideSniff> sniffWithEveryContainer(const host::Plugin& plugin,
                                                 host::DataSource& source, int64_t fileBytes,
                                                 LogCapture& log);

}  // namespace orvel::probe
