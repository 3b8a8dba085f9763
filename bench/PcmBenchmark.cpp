// PCM conversion, each width next to the plain per-sample loop, over one packet of 64 KiB at an odd
// address, as packets may be.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "ffmpeg/PcmConverter.h"

namespace {

constexpr size_t kPacketSize = 65536;

using Loop = void (*)(uint8_t* dst, const uint8_t* src, size_t size);

void plain8(uint8_t* dst, const uint8_t* src, size_t size) {
    auto* out = reinterpret_cast<int16_t*>(dst);
    for (size_t i = size; i-- > 0;)
        out[i] = static_cast<int16_t>((src[i] << 8) ^ 0x8000);
}

void plain16(uint8_t* dst, const uint8_t* src, size_t size) {
    auto* out = reinterpret_cast<int16_t*>(dst);
    for (size_t i = 0; i < size / 2; ++i) {
        out[i] = static_cast<int16_t>(src[2 * i] << 8 | src[2 * i + 1]);
    }
}

void plain24(uint8_t* dst, const uint8_t* src, size_t size) {
    for (size_t i = 0; i + 2 < size; i += 3) {
        dst[i] = src[i + 2];
        dst[i + 1] = src[i + 1];
        dst[i + 2] = src[i];
    }
}

// WAV is the container of the 8-bit row, AIFF of the others, as only they are converted.
template <int32_t bits>
void converted(uint8_t* dst, const uint8_t* src, size_t size) {
    orvel::convertPcm(dst, 2 * kPacketSize, src, size, bits, bits != 8);
}

void run(benchmark::State& state, Loop loop) {
    std::vector<uint8_t> in(kPacketSize + 1, 0x5a);
    std::vector<uint8_t> out(2 * kPacketSize);
    for (auto _ : state) {
        loop(out.data(), in.data() + 1, kPacketSize);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kPacketSize));
}

BENCHMARK_CAPTURE(run, u8, converted<8>)->Name("pcm/8/convert");
BENCHMARK_CAPTURE(run, u8_plain, plain8)->Name("pcm/8/plain-loop");
BENCHMARK_CAPTURE(run, s16be, converted<16>)->Name("pcm/16/convert");
BENCHMARK_CAPTURE(run, s16be_plain, plain16)->Name("pcm/16/plain-loop");
BENCHMARK_CAPTURE(run, s24be, converted<24>)->Name("pcm/24/convert");
BENCHMARK_CAPTURE(run, s24be_plain, plain24)->Name("pcm/24/plain-loop");

}  // namespace
