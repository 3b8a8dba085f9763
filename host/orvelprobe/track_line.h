// What matters of a format for its kind, in one line.
#pragma once

#include <string>

#include "report.h"

namespace orvel::probe {

// "1920x1080, rotated 90, 30 fps, csd-avc 46 B (4-byte lengths), eng, 1:02.400" without the MIME
// type, which stands in a column of its own.
std::string trackLine(const FormatReport& format);

// The picture format by its first bytes: "JPEG", "PNG", ... or "picture".
const char* pictureKind(const host::FormatBytes& bytes);

}  // namespace orvel::probe
