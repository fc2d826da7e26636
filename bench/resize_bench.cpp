#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "nvcode2/image/nvresize.h"

namespace {

/** RGB pixels from one size to another. */
void ResizeRGB(benchmark::State& ioState, std::uint32_t inWidth, std::uint32_t inHeight,
               std::uint32_t outWidth, std::uint32_t outHeight) {
    std::mt19937 random(1);
    std::vector<std::uint8_t> source(std::size_t{inWidth} * inHeight * 3);
    for (std::uint8_t& byte : source)
        byte = static_cast<std::uint8_t>(random());
    std::vector<std::uint8_t> dest(std::size_t{outWidth} * outHeight * 3);
    for ([[maybe_unused]] auto _ : ioState) {
        NvResizeRGB({source.data(), inWidth * 3, inWidth, inHeight, 3},
                    {dest.data(), outWidth * 3, outWidth, outHeight, 3});
        benchmark::DoNotOptimize(dest.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK_CAPTURE(ResizeRGB, reduce_by_4, 1024, 768, 256, 192)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResizeRGB, enlarge_by_4, 256, 192, 1024, 768)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResizeRGB, reduce_unevenly, 1024, 768, 259, 193)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResizeRGB, enlarge_unevenly, 259, 193, 1024, 768)->Unit(benchmark::kMillisecond);

} // namespace
