// Samples of a track as a file that a player or a decoder opens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "report.h"

namespace orvel::probe {

// Why a track cannot be written out; says what to do about it where something can be done.
class ExtractError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Takes the samples of one track in reading order. Every operation throws ExtractError.
class SampleWriter {
  public:
    virtual ~SampleWriter() = default;
    virtual void sample(const uint8_t* data, size_t size, int64_t timeUs) = 0;
    // After the last sample: completes what a header has to know, and closes the file.
    virtual void finish() = 0;
    // "WAV", "start-code stream", ...
    virtual const char* form() const = 0;
};

// Chooses by the track's MIME type and creates the file.
std::unique_ptr<SampleWriter> makeSampleWriter(const FormatReport& format, const std::string& path);

// Writes `size` bytes as the whole content of `path`.
void writeFile(const std::string& path, const void* data, size_t size);

}  // namespace orvel::probe
