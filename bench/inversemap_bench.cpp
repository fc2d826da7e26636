#include <array>
#include <random>

#include <benchmark/benchmark.h>

#include "nvcode2/nvmakeinvcolormap.h"
#include "tests/support/plaininversemap.h"

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

template <typename MakeMap>
void Measure(benchmark::State& ioState, MakeMap inMakeMap) {
    const NvColorTable table = RandomPalette(static_cast<std::uint32_t>(ioState.range(0)));
    std::array<std::uint8_t, km_InverseColorMapSize> map{};
    for ([[maybe_unused]] auto _ : ioState) {
        inMakeMap(table, map.data());
        benchmark::DoNotOptimize(map);
    }
}

void InverseMapPlain(benchmark::State& ioState) {
    Measure(ioState, PlainInverseColorMap);
}
void InverseMap(benchmark::State& ioState) {
    Measure(ioState,
            [](const NvColorTable& inTable, std::uint8_t* outMap) { MakeInverseColorMap(&inTable, outMap); });
}

BENCHMARK(InverseMapPlain)->Arg(16)->Arg(256)->Unit(benchmark::kMicrosecond);
BENCHMARK(InverseMap)->Arg(16)->Arg(256)->Unit(benchmark::kMicrosecond);

} // namespace
