// The forms that extract.cpp chooses from, and the file they write to.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "extract.h"

namespace orvel::probe {

// A new file. Every operation throws ExtractError that names the path and the system's reason.
class OutputFile {
  public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const void* data, size_t size);
    // Overwrites bytes that were written before.
    void patch(uint64_t offset, const void* data, size_t size);
    void close();
    uint64_t size() const { return mSize; }

  private:
    [[noreturn]] void fail(const char* step) const;

    const std::string mPath;
    FILE* mFile;
    uint64_t mSize = 0;
};

// Little-endian fields of the headers.
template <size_t kBytes>
void putLittleEndian(uint8_t* out, uint64_t value) {
    for (size_t i = 0; i < kBytes; i++)
        out[i] = static_cast<uint8_t>(value >> (8 * i));
}

// Raw PCM as RIFF/WAVE.
std::unique_ptr<SampleWriter> makeWavWriter(const FormatReport& format, const std::string& path);
// AAC as ADTS (ISO/IEC 14496-3, 1.A.2.2).
std::unique_ptr<SampleWriter> makeAdtsWriter(const FormatReport& format, const std::string& path);
// AVC or HEVC as a byte stream (ISO/IEC 14496-10 and 23008-2, annex B).
std::unique_ptr<SampleWriter> makeStartCodeWriter(const FormatReport& format, bool isHevc,
                                                  const std::string& path);
// VP8 or VP9 as IVF: without a frame length nobody finds the frames again.
std::unique_ptr<SampleWriter> makeIvfWriter(const FormatReport& format, const char* fourcc,
                                            const std::string& path);
// The samples one after the other, behind the decoder's headers if these are part of the stream.
std::unique_ptr<SampleWriter> makePlainWriter(const FormatReport& format, const std::string& path);

}  // namespace orvel::probe
