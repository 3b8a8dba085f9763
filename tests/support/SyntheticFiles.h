#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orvel::test {

using Bytes = std::vector<uint8_t>;

/** The path of a file that media.txt names. */
std::string mediaPath(const std::string& name);
/** Its bytes; empty, and a test failure at the caller's, when there is none. */
Bytes mediaBytes(const std::string& name);

// --- What the ffmpeg command cannot make. Enough to be recognised and opened; the sound is noise.

/** DSD Stream File: one second of mono 2.8 MHz in blocks of 4096 bytes. */
Bytes dsfFile();
/** DSDIFF (DFF), uncompressed. */
Bytes dffFile();
/** Monkey's Audio 3.99 with `frames` frames, whose contents no decoder would accept. */
Bytes apeFile(uint32_t frames);

/** An ID3v2.4 tag of `contentSize` bytes of padding. */
Bytes id3Tag(size_t contentSize);
/** The same with texts under names of one's own, which libavformat takes as they are. */
Bytes id3Tag(const std::vector<std::pair<std::string, std::string>>& texts);
Bytes operator+(Bytes first, const Bytes& second);
/** The first `size` bytes. */
Bytes truncated(Bytes bytes, size_t size);

}  // namespace orvel::test
