#include "container_names.h"

namespace orvel::probe {
namespace {

struct Row {
    uint32_t bit;
    const char* name;
};
constexpr Row kContainers[] = {
        {0x1, "MP4"},
        {0x2, "RealMedia"},
        {0x4, "Matroska"},
        {0x8, "AVI"},
        {0x10, "MP3"},
        {0x20, "AC-3"},
        {0x40, "FLV"},
        {0x80, "DTS"},
        {0x100, "AIFF"},
        {0x200, "FLAC"},
        {0x400, "Monkey's Audio"},
        {0x800, "ASF"},
        {0x1000, "DSF"},
        {0x2000, "DFF"},
        {0x4000, "WAV"},
};

constexpr uint32_t allBits() {
    uint32_t bits = 0;
    for (const Row& row : kContainers)
        bits |= row.bit;
    return bits;
}
static_assert(allBits() == kAllContainers);

}  // namespace

const char* containerName(uint32_t bit) {
    for (const Row& row : kContainers) {
        if (row.bit == bit) return row.name;
    }
    return nullptr;
}

}  // namespace orvel::probe
