#pragma once

#include "Report.h"

namespace orvel::probe {

/** Why a track cannot be written out; says what to do about it where something can be done. */
class ExtractError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/**
 * Writes the samples of one track, in reading order, as a file that players and decoders open, by
 * a muxer of libavformat. Every operation throws ExtractError.
 */
class SampleWriter {
  public:
    virtual ~SampleWriter() = default;
    virtual void sample(const uint8_t* data, size_t size, int64_t timeUs, bool sync) = 0;
    /** After the last sample: completes the file. */
    virtual void finish() = 0;
    /** FFmpeg's name of what is written: "wav", "adts", "h264". */
    virtual std::string form() const = 0;
};

/**
 * Chooses by the track's format. `fd`: an open file, a pipe or a device, which stays the caller's;
 * what is in the file goes.
 */
std::unique_ptr<SampleWriter> makeSampleWriter(const Json& format, int fd);

}  // namespace orvel::probe
