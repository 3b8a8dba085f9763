#pragma once

#include <string>

namespace orvel::bench {

/**
 * Copies the packets of `input`, a file with one video and one audio stream, into a Matroska file
 * in which every audio packet lies 40 s behind the pictures of its time: the worst that a read by
 * time meets, which no ordinary muxing command writes. Throws std::runtime_error.
 */
void writeLateAudio(const std::string& input, const std::string& output);

}  // namespace orvel::bench
