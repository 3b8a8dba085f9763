#include "support/SyntheticFiles.h"

#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <random>

namespace orvel::test {

namespace {

Bytes text(const std::string& characters) {
    return {characters.begin(), characters.end()};
}
// Numbers in either byte order, one behind the other.
Bytes big(size_t width, std::initializer_list<uint64_t> values) {
    Bytes bytes;
    for (uint64_t value : values) {
        for (size_t i = width; i > 0; --i)
            bytes.push_back(static_cast<uint8_t>(value >> 8 * (i - 1)));
    }
    return bytes;
}
Bytes little(size_t width, std::initializer_list<uint64_t> values) {
    Bytes bytes;
    for (uint64_t value : values) {
        const Bytes number = big(width, {value});
        bytes.insert(bytes.end(), number.rbegin(), number.rend());
    }
    return bytes;
}
Bytes noise(size_t count) {
    std::minstd_rand random;
    Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random() >> 8); });
    return bytes;
}
// An IFF chunk.
Bytes chunk(const std::string& name, const Bytes& contents) {
    return text(name) + big(8, {contents.size()}) + contents;
}

}  // namespace

std::string mediaPath(const std::string& name) {
    return ORVEL_MEDIA_DIR "/" + name;
}

Bytes mediaBytes(const std::string& name) {
    std::ifstream file(mediaPath(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Sony's DSF File Format Specification 1.01: DSD chunk, fmt chunk, data chunk.
Bytes dsfFile() {
    constexpr uint64_t kData = 86 * 4096;
    return text("DSD ") + little(8, {28, 28 + 52 + 12 + kData, 0}) + text("fmt ") +
           little(8, {52}) + little(4, {1, 0, 1, 1, 2822400, 1}) + little(8, {kData * 8}) +
           little(4, {4096, 0}) + text("data") + little(8, {12 + kData}) + noise(kData);
}

// Philips' DSDIFF 1.5: form chunk with format version, properties and sound data.
Bytes dffFile() {
    const Bytes properties = text("SND ") + chunk("FS  ", big(4, {2822400})) +
                             chunk("CHNL", big(2, {2}) + text("SLFTSRGT")) +
                             chunk("CMPR", text("DSD ") + text("\x0enot compressed") + Bytes{0});
    return chunk("FRM8", text("DSD ") + chunk("FVER", big(4, {0x01050000})) +
                                 chunk("PROP", properties) + chunk("DSD ", noise(65536)));
}

// Descriptor, header and seek table of Monkey's Audio 3.98 and later.
Bytes apeFile(uint32_t frames) {
    constexpr uint32_t kFrameBytes = 4096;
    constexpr uint32_t kDescriptor = 52;
    constexpr uint32_t kHeader = 24;
    Bytes file = text("MAC ") + little(2, {3990, 0}) +
                 little(4, {kDescriptor, kHeader, frames * 4, 0, frames * kFrameBytes, 0, 0}) +
                 Bytes(16) + little(2, {1000, 32}) + little(4, {73728, 73728, frames}) +
                 little(2, {16, 2}) + little(4, {44100});
    for (uint32_t i = 0; i < frames; ++i)
        file = file + little(4, {kDescriptor + kHeader + frames * 4 + i * kFrameBytes});
    return file + noise(frames * kFrameBytes);
}

// ID3v2.4.0, 3.1: the size is a 28-bit number, seven bits a byte.
Bytes id3Tag(size_t contentSize) {
    Bytes tag = {'I', 'D', '3', 4, 0, 0};
    for (int shift = 21; shift >= 0; shift -= 7) {
        tag.push_back(static_cast<uint8_t>((contentSize >> shift) & 0x7f));
    }
    tag.resize(tag.size() + contentSize);
    return tag;
}

// ID3v2.4.0, 4.2.6: a frame's size is coded as that of the tag; 3: UTF-8.
Bytes id3Tag(const std::vector<std::pair<std::string, std::string>>& texts) {
    Bytes frames;
    for (const auto& [name, value] : texts) {
        const Bytes content = Bytes{3} + text(name) + Bytes{0} + text(value);
        const Bytes size = id3Tag(content.size());
        frames = frames + text("TXXX") + Bytes(size.begin() + 6, size.begin() + 10) + big(2, {0}) +
                 content;
    }
    Bytes tag = id3Tag(frames.size());
    std::copy(frames.begin(), frames.end(), tag.begin() + 10);
    return tag;
}

Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes truncated(Bytes bytes, size_t size) {
    if (bytes.size() > size) bytes.resize(size);
    return bytes;
}

}  // namespace orvel::test
