#pragma once

#include "support/SyntheticFiles.h"

// Changes to a file that ffmpeg made in the MP4 family (ISO/IEC 14496-12), with its movie box
// behind the media data: what stands there can grow, and no chunk offset changes.
namespace orvel::test {

/** Offset of the nth four-character code `type` in the movie box; the box's size is in the four
 * bytes before it, its contents are in those behind it. Throws std::out_of_range. */
size_t boxType(const Bytes& file, const std::string& type, int nth = 0);
uint32_t be32(const Bytes& file, size_t at);
void putBe32(Bytes& file, size_t at, uint32_t value);
/** Overwrites the first occurrence of `old`, which must be there, with as many bytes. */
void replace(Bytes& file, const Bytes& old, const Bytes& bytes);
/** Puts bytes at the end of the last box of the path, in the nth track. Only for a movie at the
 * end. */
void append(Bytes& file, const std::vector<const char*>& path, int nth, const Bytes& bytes);
/** Gives track `nth` a second sample description. */
void addSampleDescription(Bytes& file, int nth, const Bytes& entry);

}  // namespace orvel::test
