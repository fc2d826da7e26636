// What the swap search costs beside plain estimates of the whole frame for every candidate.
//
// Photograph-like frames of 2,500 to 40,000 pixels. The counters show candidates a second and pixels read per
// candidate; the plain search reads the whole frame for each.

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/quant/nvpixelpairs.h"
#include "win/optimizer/codes/pvlzwestimate.h"
#include "win/optimizer/codes/pvswapsearch.h"

namespace {

/** Soft light and shade in 64 colours, with the grain of a sensor. */
struct Photo {
    explicit Photo(std::uint32_t inSide) : mSide(inSide), mPixels(std::size_t{inSide} * inSide) {
        std::uint32_t state = 12345;
        for (std::uint32_t y = 0; y < inSide; ++y)
            for (std::uint32_t x = 0; x < inSide; ++x) {
                state = state * 1664525 + 1013904223;
                const double light = 32 + 20 * std::sin(x * 0.05) * std::cos(y * 0.04) + (state >> 30);
                mPixels[std::size_t{y} * inSide + x] = static_cast<std::uint8_t>(light);
            }
        for (std::uint32_t i = 0; i < 64; ++i)
            mColours[i] = {static_cast<std::uint8_t>(4 * i), static_cast<std::uint8_t>(3 * i),
                           static_cast<std::uint8_t>(255 - 3 * i)};
    }

    template <typename Visitor>
    void ForEachCandidate(Visitor inVisit) const {
        NvForEachPattern(mPixels.data(), mSide, mSide, mSide, [&](std::uint32_t y, std::uint32_t x) {
            if (NvIsSwappablePair(&mPixels[std::size_t{y} * mSide + x], mSide, mColours.data(),
                                  km_SpareNothing))
                inVisit(x, y);
        });
    }

    std::uint32_t mSide;
    std::vector<std::uint8_t> mPixels;
    std::array<NvColor, 64> mColours{};
};

void Incremental(benchmark::State& ioState, std::uint32_t inSide) {
    NvLZWStringTable strings;
    PvSwapSearch search(strings);
    std::uint64_t candidates = 0;
    for (auto _ : ioState) {
        Photo photo(inSide);
        search.Begin(photo.mPixels.data(), inSide, inSide, 64, false);
        photo.ForEachCandidate([&](std::uint32_t x, std::uint32_t y) {
            benchmark::DoNotOptimize(search.ExchangeIfShorter(x, y));
            ++candidates;
        });
    }
    const auto count = static_cast<double>(candidates);
    ioState.counters["candidates/s"] = {count, benchmark::Counter::kIsRate};
    ioState.counters["pixels/candidate"] = static_cast<double>(search.GetPixelSteps()) / count;
}

void Plain(benchmark::State& ioState, std::uint32_t inSide) {
    NvLZWStringTable strings;
    PvLZWEstimator estimator(strings);
    std::uint64_t candidates = 0;
    for (auto _ : ioState) {
        Photo photo(inSide);
        const auto estimate = [&] {
            return estimator.EstimateLZWSize(photo.mPixels.data(), inSide, inSide, inSide, 64, false);
        };
        std::uint64_t best = estimate();
        photo.ForEachCandidate([&](std::uint32_t x, std::uint32_t y) {
            std::uint8_t* pixel = &photo.mPixels[std::size_t{y} * inSide + x];
            std::swap(pixel[0], pixel[1]);
            const std::uint64_t size = estimate();
            if (size < best)
                best = size;
            else
                std::swap(pixel[0], pixel[1]);
            ++candidates;
        });
    }
    ioState.counters["candidates/s"] = {static_cast<double>(candidates), benchmark::Counter::kIsRate};
    ioState.counters["pixels/candidate"] = static_cast<double>(inSide) * inSide;
}

const bool km_AreRegistered = [] {
    for (const std::uint32_t side : {50U, 100U, 150U, 200U}) {
        const std::string pixels = std::to_string(side * side);
        benchmark::RegisterBenchmark(("incremental/" + pixels).c_str(), Incremental, side);
        benchmark::RegisterBenchmark(("plain/" + pixels).c_str(), Plain, side);
    }
    return true;
}();

} // namespace
