// The public door: any bytes as a file behind a source of any temper, and any legal use of the
// extractor that comes of it.
#include <media/MediaExtractorPluginApi.h>
#include <standin/LooperControl.h>

#include <cstring>

#include "FuzzInput.h"
#include "support/ExtractorScript.h"

using namespace orvel;

extern "C" android::ExtractorDef GETEXTRACTORDEF();

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const host::Plugin* const plugin = new host::Plugin("linked", GETEXTRACTORDEF);
    test::ScriptHeader header;
    uint8_t bytes[sizeof(header)];
    fuzz::Input input(data, size);
    for (uint8_t& byte : bytes)
        byte = input.byte();
    std::memcpy(&header, bytes, sizeof(header));
    const auto file = input.rest();
    test::runScript(*plugin, header, file.get(), input.restSize());
    // A reader that was released on its own thread is part of this run: the leak check comes next.
    standin::waitForLooperThreads();
    return 0;
}
