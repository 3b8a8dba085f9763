#include "support/Mp4Edit.h"

#include <algorithm>
#include <stdexcept>

namespace orvel::test {

size_t boxType(const Bytes& file, const std::string& type, int nth) {
    const std::string moov = "moov";
    auto at = std::find_end(file.begin(), file.end(), moov.begin(), moov.end());
    if (type != moov) {
        do {
            if (at != file.end()) at = std::search(at + 1, file.end(), type.begin(), type.end());
        } while (nth-- > 0);
    }
    if (at == file.end()) throw std::out_of_range("no box " + type);
    return static_cast<size_t>(at - file.begin());
}

uint32_t be32(const Bytes& file, size_t at) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i)
        value = value << 8 | file.at(at + i);
    return value;
}

void putBe32(Bytes& file, size_t at, uint32_t value) {
    for (size_t i = 0; i < 4; ++i)
        file.at(at + i) = static_cast<uint8_t>(value >> (24 - 8 * i));
}

void replace(Bytes& file, const Bytes& old, const Bytes& bytes) {
    const auto at = std::search(file.begin(), file.end(), old.begin(), old.end());
    if (at == file.end() || old.size() != bytes.size()) throw std::out_of_range("nothing replaced");
    std::copy(bytes.begin(), bytes.end(), at);
}

void append(Bytes& file, const std::vector<const char*>& path, int nth, const Bytes& bytes) {
    size_t end = 0;
    for (const char* type : path) {
        const size_t size = boxType(file, type, nth) - 4;
        end = size + be32(file, size);
        putBe32(file, size, be32(file, size) + static_cast<uint32_t>(bytes.size()));
    }
    file.insert(file.begin() + static_cast<ptrdiff_t>(end), bytes.begin(), bytes.end());
}

void addSampleDescription(Bytes& file, int nth, const Bytes& entry) {
    append(file, {"moov", "trak", "mdia", "minf", "stbl", "stsd"}, nth, entry);
    const size_t count = boxType(file, "stsd", nth) + 8;
    putBe32(file, count, be32(file, count) + 1);
}

}  // namespace orvel::test
