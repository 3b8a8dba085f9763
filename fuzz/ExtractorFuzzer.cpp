// The public door: any bytes as a file behind a source of any temper, and any legal use of the
// extractor that comes of it.
#include <media/MediaExtractorPluginApi.h>

#include <cstring>

extern "C" {
#include <libavutil/mem.h>
}

#include "FuzzInput.h"
#include "support/ExtractorScript.h"

using namespace orvel;

extern "C" android::ExtractorDef GETEXTRACTORDEF();

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const host::Plugin* const plugin = new host::Plugin("linked", GETEXTRACTORDEF);
    // A track run of an MP4 (ISO/IEC 14496-12, 8.8.8) may claim any number of samples, for which
    // the library reserves 24 bytes each: known, and of no more use here.
    av_max_alloc(256 << 20);
    test::ScriptHeader header;
    uint8_t bytes[sizeof(header)];
    fuzz::Input input(data, size);
    for (uint8_t& byte : bytes)
        byte = input.byte();
    std::memcpy(&header, bytes, sizeof(header));
    const auto file = input.rest();
    test::runScript(*plugin, header, file.get(), input.restSize());
    return 0;
}
