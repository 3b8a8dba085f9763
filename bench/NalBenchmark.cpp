// NAL rewriting against the least that any rewriting must do: one copy of the packet.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "ffmpeg/NalConverter.h"

namespace {

// A packet of about 64 KiB of units of unitSize bytes, with length fields of the given width.
std::vector<uint8_t> makePacket(size_t lengthSize, size_t unitSize) {
    std::vector<uint8_t> packet;
    while (packet.size() < 65536) {
        for (size_t i = lengthSize; i-- > 0;) {
            packet.push_back(static_cast<uint8_t>(i < sizeof(size_t) ? unitSize >> (8 * i) : 0));
        }
        packet.insert(packet.end(), unitSize, 0x5a);
    }
    return packet;
}

void convert(benchmark::State& state) {
    const auto lengthSize = static_cast<size_t>(state.range(0));
    const auto packet = makePacket(lengthSize, static_cast<size_t>(state.range(1)));
    std::vector<uint8_t> out(5 * packet.size());
    for (auto _ : state) {
        const auto result = orvel::convertNalUnits(packet.data(), packet.size(), lengthSize,
                                                   out.data(), out.size());
        if (result.status != orvel::NalStatus::Ok) state.SkipWithError("malformed");
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * packet.size()));
}

void reference(benchmark::State& state) {
    const auto packet =
            makePacket(static_cast<size_t>(state.range(0)), static_cast<size_t>(state.range(1)));
    std::vector<uint8_t> out(packet.size());
    for (auto _ : state) {
        memcpy(out.data(), packet.data(), packet.size());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * packet.size()));
}

BENCHMARK(convert)->Name("nal/convert")->ArgsProduct({{2, 4}, {100, 1500, 30000}});
BENCHMARK(reference)->Name("nal/plain-copy")->Args({4, 30000});

}  // namespace
