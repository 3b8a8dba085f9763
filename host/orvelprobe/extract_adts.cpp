#include <algorithm>
#include <iterator>

#include "extract_forms.h"

namespace orvel::probe {
namespace {

constexpr size_t kHeaderSize = 7;         // without a CRC
constexpr size_t kMaxFrameSize = 0x1FFF;  // 13 bits, header included

// ISO/IEC 14496-3, table 1.18.
constexpr uint32_t kSampleRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                     22050, 16000, 12000, 11025, 8000,  7350};

// Audio object types that matter here (ISO/IEC 14496-3, table 1.17).
constexpr uint32_t kTypeMain = 1;
constexpr uint32_t kTypeLtp = 4;
constexpr uint32_t kTypeSbr = 5;
constexpr uint32_t kTypePs = 29;

class BitReader {
  public:
    explicit BitReader(const host::FormatBytes& bytes) : mBytes(bytes) {}
    uint32_t take(size_t count) {
        uint32_t value = 0;
        for (; count > 0; count--, mPosition++) {
            if (mPosition / 8 >= mBytes.size()) {
                throw ExtractError("its AudioSpecificConfig is cut off");
            }
            value = value << 1 | ((mBytes[mPosition / 8] >> (7 - mPosition % 8)) & 1);
        }
        return value;
    }

  private:
    const host::FormatBytes& mBytes;
    size_t mPosition = 0;
};

struct AdtsConfig {
    uint32_t profile = 0;  // audio object type minus one
    uint32_t rateIndex = 0;
    uint32_t channels = 0;
};

uint32_t takeObjectType(BitReader& bits) {
    const uint32_t type = bits.take(5);
    return type == 31 ? 32 + bits.take(6) : type;
}

// The index of the rate; a rate that is spelled out is looked up.
uint32_t takeRateIndex(BitReader& bits) {
    const uint32_t index = bits.take(4);
    if (index < std::size(kSampleRates)) return index;
    if (index != 15) throw ExtractError("its sample rate index is reserved");
    const uint32_t rate = bits.take(24);
    const auto* known = std::find(std::begin(kSampleRates), std::end(kSampleRates), rate);
    if (known == std::end(kSampleRates)) {
        throw ExtractError("ADTS cannot carry a sample rate of " + std::to_string(rate) + " Hz");
    }
    return static_cast<uint32_t>(known - kSampleRates);
}

// AudioSpecificConfig and GASpecificConfig, ISO/IEC 14496-3, 1.6.2.1 and 4.4.1. SBR and PS that the
// config announces are left to the decoder to discover: ADTS describes the core only.
AdtsConfig parseConfig(const host::FormatBytes& bytes) {
    BitReader bits(bytes);
    AdtsConfig config;
    uint32_t type = takeObjectType(bits);
    config.rateIndex = takeRateIndex(bits);
    config.channels = bits.take(4);
    if (type == kTypeSbr || type == kTypePs) {
        takeRateIndex(bits);
        type = takeObjectType(bits);
    }
    if (type < kTypeMain || type > kTypeLtp) {
        throw ExtractError("ADTS cannot carry audio object type " + std::to_string(type) +
                           " (only 1 to 4: Main, LC, SSR, LTP)");
    }
    config.profile = type - 1;
    if (config.channels == 0) {
        throw ExtractError("ADTS cannot carry a channel layout from a program config element");
    }
    if (config.channels > 7) {
        throw ExtractError("ADTS cannot carry channel configuration " +
                           std::to_string(config.channels));
    }
    if (bits.take(1) != 0) throw ExtractError("ADTS cannot carry frames of 960 samples");
    return config;
}

// ISO/IEC 14496-3, 1.A.2.2: the sync word, and layer 0.
bool isAdts(const uint8_t* data, size_t size) {
    return size >= kHeaderSize && data[0] == 0xFF && (data[1] & 0xF6) == 0xF0;
}

class AdtsWriter : public SampleWriter {
  public:
    AdtsWriter(const FormatReport& format, const std::string& path)
        : mHasConfig(format.find<host::FormatBytes>("aac-codec-specific-data") != nullptr),
          mConfig(mHasConfig
                          ? parseConfig(*format.find<host::FormatBytes>("aac-codec-specific-data"))
                          : AdtsConfig()),
          mFile(path) {}

    void sample(const uint8_t* data, size_t size, int64_t) override {
        if (!mHasConfig) {
            if (!isAdts(data, size)) {
                throw ExtractError("it has neither an AudioSpecificConfig nor ADTS headers");
            }
        } else if (size > 0) {
            writeHeader(size + kHeaderSize);
        }
        mFile.write(data, size);
    }
    void finish() override { mFile.close(); }
    const char* form() const override { return "ADTS"; }

  private:
    void writeHeader(size_t length) {
        if (length > kMaxFrameSize) {
            throw ExtractError("ADTS cannot carry a sample of " +
                               std::to_string(length - kHeaderSize) + " bytes");
        }
        const uint32_t fullness = 0x7FF;  // variable bit rate
        const auto size = static_cast<uint32_t>(length);
        const uint8_t header[kHeaderSize] = {
                0xFF,
                0xF1,  // MPEG-4, layer 0, no CRC
                static_cast<uint8_t>(mConfig.profile << 6 | mConfig.rateIndex << 2 |
                                     mConfig.channels >> 2),
                static_cast<uint8_t>((mConfig.channels & 3) << 6 | size >> 11),
                static_cast<uint8_t>(size >> 3 & 0xFF),
                static_cast<uint8_t>((size & 7) << 5 | fullness >> 6),
                static_cast<uint8_t>((fullness & 0x3F) << 2),
        };
        mFile.write(header, sizeof(header));
    }

    const bool mHasConfig;
    const AdtsConfig mConfig;
    OutputFile mFile;
};

}  // namespace

std::unique_ptr<SampleWriter> makeAdtsWriter(const FormatReport& format, const std::string& path) {
    return std::make_unique<AdtsWriter>(format, path);
}

}  // namespace orvel::probe
