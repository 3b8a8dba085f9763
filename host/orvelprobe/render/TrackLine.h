#pragma once

#include "Report.h"

namespace orvel::probe {

/** What matters of a track's format for its kind, after the MIME type; printable. */
std::string trackLine(const Json& format);

/** "JPEG", "PNG", ... by the first bytes; "picture" for others. */
std::string pictureKind(const std::string& bytes);

}  // namespace orvel::probe
