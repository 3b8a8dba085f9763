#pragma once

#include <cstdint>

#include "framework/DataSource.h"

namespace orvel::bench {

/**
 * The most bytes that a read-ahead over empty caches holds when it reads on until each kind of
 * track that the file has is full (65 audio packets, 31 video packets) or the file ends, wherever
 * in the file it begins. The file has at most one track of each kind. Throws BareError.
 */
uint64_t fullRuleBytes(host::DataSource& source, const char* demuxer);

}  // namespace orvel::bench
