#include "support/SyntheticFiles.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace orvel::test {

namespace {

// Appends fields to a file in one byte order.
class Writer {
  public:
    explicit Writer(bool bigEndian) : mBigEndian(bigEndian) {}

    Writer& text(const char* characters) {
        while (*characters)
            mBytes.push_back(static_cast<uint8_t>(*characters++));
        return *this;
    }
    Writer& u16(uint64_t value) { return number(value, 2); }
    Writer& u32(uint64_t value) { return number(value, 4); }
    Writer& u64(uint64_t value) { return number(value, 8); }
    Writer& noise(size_t count) {
        uint64_t state = 1;
        for (size_t i = 0; i < count; ++i) {
            state = (state * 1664525 + 1013904223) & 0xFFFFFFFF;
            mBytes.push_back(static_cast<uint8_t>(state >> 24));
        }
        return *this;
    }
    Writer& append(const Bytes& bytes) {
        mBytes.insert(mBytes.end(), bytes.begin(), bytes.end());
        return *this;
    }
    // An IFF chunk: name, size, contents.
    Writer& chunk(const char* name, const Bytes& contents) {
        return text(name).u64(contents.size()).append(contents);
    }
    const Bytes& bytes() const { return mBytes; }

  private:
    Writer& number(uint64_t value, int width) {
        for (int i = 0; i < width; ++i) {
            const int shift = 8 * (mBigEndian ? width - 1 - i : i);
            mBytes.push_back(static_cast<uint8_t>(value >> shift));
        }
        return *this;
    }

    const bool mBigEndian;
    Bytes mBytes;
};

Writer little() {
    return Writer(false);
}
Writer big() {
    return Writer(true);
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
    constexpr uint64_t kTotal = 28 + 52 + 12 + kData;
    Writer file = little();
    file.text("DSD ").u64(28).u64(kTotal).u64(0);
    file.text("fmt ").u64(52).u32(1).u32(0).u32(1).u32(1).u32(2822400).u32(1);
    file.u64(kData * 8).u32(4096).u32(0);
    file.text("data").u64(12 + kData).noise(kData);
    return file.bytes();
}

// Philips' DSDIFF 1.5: form chunk with format version, properties and sound data.
Bytes dffFile() {
    Writer properties = big();
    properties.text("SND ");
    properties.chunk("FS  ", big().u32(2822400).bytes());
    properties.chunk("CHNL", big().u16(2).text("SLFTSRGT").bytes());
    properties.chunk("CMPR", big().text("DSD ").text("\x0enot compressed").append({0}).bytes());
    Writer form = big();
    form.text("DSD ");
    form.chunk("FVER", big().u32(0x01050000).bytes());
    form.chunk("PROP", properties.bytes());
    form.chunk("DSD ", big().noise(65536).bytes());
    return big().chunk("FRM8", form.bytes()).bytes();
}

// Descriptor, header and seek table of Monkey's Audio 3.98 and later.
Bytes apeFile(uint32_t frames) {
    constexpr uint32_t kFrameBytes = 4096;
    constexpr uint32_t kDescriptor = 52;
    constexpr uint32_t kHeader = 24;
    Writer file = little();
    file.text("MAC ").u16(3990).u16(0).u32(kDescriptor).u32(kHeader);
    file.u32(frames * 4).u32(0).u32(frames * kFrameBytes).u32(0).u32(0).append(Bytes(16));
    file.u16(1000).u16(32).u32(73728).u32(73728).u32(frames).u16(16).u16(2).u32(44100);
    const uint32_t first = kDescriptor + kHeader + frames * 4;
    for (uint32_t i = 0; i < frames; ++i)
        file.u32(first + i * kFrameBytes);
    file.noise(frames * kFrameBytes);
    return file.bytes();
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
    Writer frames = big();
    for (const auto& [name, text] : texts) {
        Bytes content = {3};
        content.insert(content.end(), name.begin(), name.end());
        content.push_back(0);
        content.insert(content.end(), text.begin(), text.end());
        const Bytes size = id3Tag(content.size());
        frames.text("TXXX").append({size[6], size[7], size[8], size[9]}).u16(0).append(content);
    }
    Bytes tag = id3Tag(frames.bytes().size());
    std::copy(frames.bytes().begin(), frames.bytes().end(), tag.begin() + 10);
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
