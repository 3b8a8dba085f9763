#include "regression/Findings.h"
#include "support/ExtractorScript.h"
#include "support/Mp4Edit.h"

namespace orvel::test {

namespace {

struct Made {
    const char* name;
    const char* media;
    void (*change)(Bytes& file);
};

// Offsets count from the four-character code of the box; ISO/IEC 14496-12 and -15.
const Made kMade[] = {
        // The first unit reaches beyond its packet, but not beyond the buffer.
        {"mp4_unit_longer_than_its_packet", "mp4_small.mp4",
         [](Bytes& file) {
             const uint32_t packet = be32(file, boxType(file, "stco") + 12);
             putBe32(file, packet, be32(file, boxType(file, "stsz") + 16) + 100);
         }},
};

}  // namespace

std::vector<Finding> hostileMedia() {
    std::vector<Finding> findings;
    const ScriptHeader readAll;
    const auto* header = reinterpret_cast<const uint8_t*>(&readAll);
    for (const Made& made : kMade) {
        Bytes file = mediaBytes(made.media);
        made.change(file);
        findings.push_back(
                {"fuzz_extractor", made.name, Bytes(header, header + sizeof(readAll)) + file});
    }
    return findings;
}

}  // namespace orvel::test
