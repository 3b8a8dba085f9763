#include <cstring>

#include "extract_forms.h"

namespace orvel::probe {
namespace {

class PlainWriter : public SampleWriter {
  public:
    PlainWriter(const FormatReport& format, const std::string& path) : mFile(path) {
        // MPEG-4 and MPEG-2 video headers are units of the stream itself (ISO/IEC 14496-2, 6.2.1);
        // containers that keep them apart leave a stream that no decoder can begin.
        const auto* headers = format.find<host::FormatBytes>("raw-codec-specific-data");
        if (headers && headers->size() > 3 && memcmp(headers->data(), "\0\0\1", 3) == 0) {
            mFile.write(headers->data(), headers->size());
        }
    }
    void sample(const uint8_t* data, size_t size, int64_t) override { mFile.write(data, size); }
    void finish() override { mFile.close(); }
    const char* form() const override { return "plain stream"; }

  private:
    OutputFile mFile;
};

class IvfWriter : public SampleWriter {
  public:
    IvfWriter(const FormatReport& format, const char* fourcc, const std::string& path)
        : mFile(path) {
        uint8_t header[32] = {'D', 'K', 'I', 'F', 0, 0, sizeof(header)};
        memcpy(header + 8, fourcc, 4);
        putLittleEndian<2>(header + 12, static_cast<uint32_t>(format.int32("width")));
        putLittleEndian<2>(header + 14, static_cast<uint32_t>(format.int32("height")));
        putLittleEndian<4>(header + 16, 1000000);  // times in microseconds
        putLittleEndian<4>(header + 20, 1);
        mFile.write(header, sizeof(header));
    }
    void sample(const uint8_t* data, size_t size, int64_t timeUs) override {
        uint8_t header[12];
        putLittleEndian<4>(header, size);
        putLittleEndian<8>(header + 4, static_cast<uint64_t>(timeUs));
        mFile.write(header, sizeof(header));
        mFile.write(data, size);
        mFrames++;
    }
    void finish() override {
        uint8_t frames[4];
        putLittleEndian<4>(frames, mFrames);
        mFile.patch(24, frames, sizeof(frames));
        mFile.close();
    }
    const char* form() const override { return "IVF"; }

  private:
    OutputFile mFile;
    uint32_t mFrames = 0;
};

}  // namespace

std::unique_ptr<SampleWriter> makePlainWriter(const FormatReport& format, const std::string& path) {
    return std::make_unique<PlainWriter>(format, path);
}

std::unique_ptr<SampleWriter> makeIvfWriter(const FormatReport& format, const char* fourcc,
                                            const std::string& path) {
    return std::make_unique<IvfWriter>(format, fourcc, path);
}

}  // namespace orvel::probe
