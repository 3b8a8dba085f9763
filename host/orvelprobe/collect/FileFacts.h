#pragma once

#include "Report.h"
#include "framework/DataSource.h"

namespace orvel::probe {

/**
 * How many bytes the container says it has, at least; -1 where it does not say. RIFF, AIFF, the
 * boxes of ISO/IEC 14496-12 and Matroska (RFC 9559).
 */
int64_t claimedBytes(host::DataSource& file);

/**
 * The edit lists (ISO/IEC 14496-12, 8.6.6) of the audio and video tracks, in the form of the JSON
 * output, if they matter to who ignores them: pieces, cuts, or tracks moved against one another.
 */
Json editListsThatMatter(host::DataSource& file);

/** FFmpeg's name of the format that the first bytes are of; empty when they are of none. */
std::string foreignFormat(host::DataSource& source);

/** {"type": "video", "audio" or "other", "codec": FFmpeg's short name}. */
Json codecJson(int codecId);

}  // namespace orvel::probe
