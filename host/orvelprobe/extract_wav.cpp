#include <algorithm>
#include <cstring>

#include "extract_forms.h"

namespace orvel::probe {
namespace {

// The platform's "pcm-encoding" codes; 100 is the plug-in's own for 32-bit integers.
constexpr int32_t kEncoding8Bit = 3;
constexpr int32_t kEncodingFloat = 4;
constexpr int32_t kEncoding32Bit = 100;

constexpr uint16_t kWavePcm = 1;
constexpr uint16_t kWaveFloat = 3;
constexpr size_t kHeaderSize = 44;
constexpr uint64_t kRiffSizeAt = 4;
constexpr uint64_t kDataSizeAt = 40;

// "bits-per-sample" as the plug-in delivers the samples, else what the encoding implies.
int32_t bitsPerSample(const FormatReport& format) {
    const int32_t bits = format.int32("bits-per-sample");
    if (bits > 0) return bits;
    switch (format.int32("pcm-encoding")) {
        case kEncoding8Bit:
            return 8;
        case kEncodingFloat:
        case kEncoding32Bit:
            return 32;
        default:
            return 16;
    }
}

class WavWriter : public SampleWriter {
  public:
    WavWriter(const FormatReport& format, const std::string& path)
        : mRate(format.int32("sample-rate")),
          mChannels(format.int32("channel-count")),
          mBits(bitsPerSample(format)),
          mIsFloat(format.int32("pcm-encoding") == kEncodingFloat),
          mFile(path) {
        if (mRate < 1 || mChannels < 1 || mChannels > 0xFFFF || mBits % 8 != 0 || mBits > 64) {
            throw ExtractError("WAV cannot hold " + std::to_string(mRate) + " Hz, " +
                               std::to_string(mChannels) + " channels, " + std::to_string(mBits) +
                               " bits");
        }
        const auto frame = static_cast<uint64_t>(mChannels) * static_cast<uint64_t>(mBits / 8);
        uint8_t header[kHeaderSize] = {};
        memcpy(header, "RIFF\0\0\0\0WAVEfmt ", 16);
        putLittleEndian<4>(header + 16, 16);
        putLittleEndian<2>(header + 20, mIsFloat ? kWaveFloat : kWavePcm);
        putLittleEndian<2>(header + 22, static_cast<uint64_t>(mChannels));
        putLittleEndian<4>(header + 24, static_cast<uint64_t>(mRate));
        putLittleEndian<4>(header + 28, static_cast<uint64_t>(mRate) * frame);
        putLittleEndian<2>(header + 32, frame);
        putLittleEndian<2>(header + 34, static_cast<uint64_t>(mBits));
        memcpy(header + 36, "data\0\0\0\0", 8);
        mFile.write(header, sizeof(header));
    }
    void sample(const uint8_t* data, size_t size, int64_t) override { mFile.write(data, size); }
    void finish() override {
        const uint64_t dataSize = mFile.size() - kHeaderSize;
        if (dataSize % 2 != 0) mFile.write("", 1);  // RIFF chunks have an even length
        // From 4 GiB on the fields stay at their largest value, which readers take for "to the
        // end".
        putSize(kDataSizeAt, dataSize);
        putSize(kRiffSizeAt, mFile.size() - 8);
        mFile.close();
    }
    const char* form() const override { return "WAV"; }

  private:
    void putSize(uint64_t offset, uint64_t size) {
        uint8_t field[4];
        putLittleEndian<4>(field, std::min<uint64_t>(size, UINT32_MAX));
        mFile.patch(offset, field, sizeof(field));
    }

    const int32_t mRate;
    const int32_t mChannels;
    const int32_t mBits;
    const bool mIsFloat;
    OutputFile mFile;
};

}  // namespace

std::unique_ptr<SampleWriter> makeWavWriter(const FormatReport& format, const std::string& path) {
    return std::make_unique<WavWriter>(format, path);
}

}  // namespace orvel::probe
