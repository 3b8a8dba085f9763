#include <cstring>
#include <string>

#include "extract_forms.h"

namespace orvel::probe {
namespace {

constexpr uint8_t kStartCode[] = {0, 0, 0, 1};

bool hasStartCode(const uint8_t* data, size_t size) {
    return (size > 3 && memcmp(data, kStartCode, 4) == 0) ||
           (size > 2 && memcmp(data, kStartCode + 1, 3) == 0);
}

// Walks a configuration record; every step is checked against its end.
class RecordReader {
  public:
    RecordReader(const uint8_t* data, size_t size) : mData(data), mLeft(size) {}
    uint8_t byte() { return *skip(1); }
    size_t big16() {
        const uint8_t* field = skip(2);
        return static_cast<size_t>(field[0] << 8 | field[1]);
    }
    const uint8_t* skip(size_t count) {
        if (count > mLeft) throw ExtractError("its decoder configuration record is cut off");
        const uint8_t* at = mData;
        mData += count;
        mLeft -= count;
        return at;
    }

  private:
    const uint8_t* mData;
    size_t mLeft;
};

class StartCodeWriter : public SampleWriter {
  public:
    StartCodeWriter(const FormatReport& format, bool isHevc, const std::string& path)
        : mFile(path) {
        const auto* record = format.find<host::FormatBytes>(isHevc ? "csd-hevc" : "csd-avc");
        const auto* raw = format.find<host::FormatBytes>("raw-codec-specific-data");
        if (record) {
            // The plug-in delivers such a track with start codes.
            writeParameterSets(*record, isHevc);
        } else if (raw && hasStartCode(raw->data(), raw->size())) {
            mFile.write(raw->data(), raw->size());
        } else if (raw && raw->size() > 4 && raw->front() == 1) {
            // A record whose track the plug-in does not rewrite (FLV): lengths stand before the
            // units, and no decoder would find its way without them.
            mLengthSize = writeParameterSets(*raw, isHevc);
        }
    }

    void sample(const uint8_t* data, size_t size, int64_t) override {
        if (mLengthSize == 0) return mFile.write(data, size);
        while (size > mLengthSize) {
            size_t length = 0;
            for (size_t i = 0; i < mLengthSize; i++)
                length = length << 8 | data[i];
            data += mLengthSize;
            size -= mLengthSize;
            if (length > size) throw ExtractError("a NAL unit runs past its sample");
            writeUnit(data, length);
            data += length;
            size -= length;
        }
    }
    void finish() override { mFile.close(); }
    const char* form() const override { return "start-code stream"; }

  private:
    void writeUnit(const uint8_t* data, size_t size) {
        if (size == 0) return;
        mFile.write(kStartCode, sizeof(kStartCode));
        mFile.write(data, size);
    }

    void writeUnits(RecordReader& record, size_t count) {
        for (; count > 0; count--) {
            const size_t length = record.big16();
            writeUnit(record.skip(length), length);
        }
    }

    // Returns the width of the length fields in bytes. AVC: ISO/IEC 14496-15, 5.3.3.1; HEVC:
    // 8.3.3.1.
    size_t writeParameterSets(const host::FormatBytes& bytes, bool isHevc) {
        RecordReader record(bytes.data(), bytes.size());
        size_t lengthSize = 0;
        if (isHevc) {
            record.skip(21);
            lengthSize = (record.byte() & 3u) + 1;
            for (size_t arrays = record.byte(); arrays > 0; arrays--) {
                record.skip(1);
                writeUnits(record, record.big16());
            }
        } else {
            record.skip(4);
            lengthSize = (record.byte() & 3u) + 1;
            writeUnits(record, record.byte() & 31u);  // sequence parameter sets
            writeUnits(record, record.byte());        // picture parameter sets
        }
        return lengthSize;
    }

    OutputFile mFile;
    size_t mLengthSize = 0;  // 0: the samples have start codes
};

}  // namespace

std::unique_ptr<SampleWriter> makeStartCodeWriter(const FormatReport& format, bool isHevc,
                                                  const std::string& path) {
    return std::make_unique<StartCodeWriter>(format, isHevc, path);
}

}  // namespace orvel::probe
