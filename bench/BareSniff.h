#pragma once

#include "framework/DataSource.h"

namespace orvel::bench {

/**
 * What a decision about a source costs at least: the same probes in the same order over the same
 * bytes, and for the containers that are looked into (MP4, Matroska) the opening of the file.
 * Returns the demuxer of the best score; null when no score is high enough.
 */
const char* bareSniff(host::DataSource& source);

}  // namespace orvel::bench
