#include <array>
#include <random>

#include <benchmark/benchmark.h>

#include "bench/plaininversemap.h"
#include "nvcode2/image/nvmakeinvcolormap.h"

namespace {

NvColorTable RandomPalette(std::uint32_t inSize) {
    std::mt19937 random(inSize);
    NvColorTable table(inSize);
    for (std::uint32_t i = 0; i < inSize; ++i) {
        const auto bits = random();
        table.SetColor(i, {static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
                           static_cast<std::uint8_t>(bits >> 16)});
    }
    return table;
}

/** Greys with a little colour, as photographs in black and white have them: many entries compete for every
 *  cell that is not grey. */
NvColorTable GreyPalette(std::uint32_t inSize) {
    std::mt19937 random(inSize);
    NvColorTable table(inSize);
    for (std::uint32_t i = 0; i < inSize; ++i) {
        const auto level = [&] { return static_cast<std::uint8_t>(i * 252 / inSize + random() % 4); };
        table.SetColor(i, {level(), level(), level()});
    }
    return table;
}

void Plain(const NvColorTable* inTable, std::uint8_t* outMap) {
    PlainInverseColorMap(*inTable, outMap);
}

template <typename MakePalette, typename MakeMap>
void Measure(benchmark::State& ioState, MakePalette inMakePalette, MakeMap inMakeMap) {
    const NvColorTable table = inMakePalette(static_cast<std::uint32_t>(ioState.range(0)));
    std::array<std::uint8_t, km_InverseColorMapSize> map{};
    for ([[maybe_unused]] auto _ : ioState) {
        inMakeMap(&table, map.data());
        benchmark::DoNotOptimize(map);
    }
}

BENCHMARK_CAPTURE(Measure, plain_scattered, RandomPalette, Plain)
    ->Arg(16)
    ->Arg(256)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Measure, scattered, RandomPalette, MakeInverseColorMap)
    ->Arg(16)
    ->Arg(256)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Measure, plain_grey, GreyPalette, Plain)->Arg(256)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Measure, grey, GreyPalette, MakeInverseColorMap)
    ->Arg(16)
    ->Arg(256)
    ->Unit(benchmark::kMicrosecond);

} // namespace
