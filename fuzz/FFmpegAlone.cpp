// The file of an input of fuzz_extractor, taken by libavformat alone: opened, read, sought. Not
// fuzzed itself: judge.sh asks it whether a finding is FFmpeg's own.
extern "C" {
#include <libavformat/avformat.h>
}

#include "framework/FaultSource.h"
#include "framework/MemorySource.h"
#include "support/Demuxer.h"
#include "support/ExtractorScript.h"

using namespace orvel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < sizeof(test::ScriptHeader)) return 0;
    std::vector<uint8_t> file(data + sizeof(test::ScriptHeader), data + size);
    host::MemorySource source(file);
    const auto fileSize = static_cast<int>(file.size());
    file.resize(file.size() + AVPROBE_PADDING_SIZE);
    AVProbeData probe = {"", file.data(), fileSize, nullptr};
    const AVInputFormat* format = av_probe_input_format(&probe, 1);
    if (format == nullptr) return 0;
    const std::string name = format->name;
    host::UnknownSizeSource unknown(source);
    const bool knows = (data[0] & test::ScriptHeader::kUnknownSize) == 0;
    test::Demuxer demuxer(knows ? source : static_cast<host::DataSource&>(unknown),
                          name.substr(0, name.find(',')));
    if (!demuxer.isOpen()) return 0;
    AVFormatContext* context = demuxer.context();
    AVPacket* packet = av_packet_alloc();
    // From the beginning, then from seven places inside the duration and outside, either way: no
    // more packets than the plug-in may read.
    for (int64_t place = 0; place < 15; ++place) {
        if (place > 0) {
            const int64_t time = context->duration / 6 * (place / 2 - 1);
            av_seek_frame(context, -1, time, place % 2 == 0 ? AVSEEK_FLAG_BACKWARD : 0);
        }
        for (int i = 0; i < 40 && av_read_frame(context, packet) >= 0; ++i)
            av_packet_unref(packet);
    }
    av_packet_free(&packet);
    return 0;
}
