#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "nvcode2/nvquantoctree.h"
#include "tests/image/images.h"

namespace {

using testing::ElementsAre;

struct WeightedColor {
    NvColor mColor;
    std::uint32_t mPixels;
};

NvColorTable Quantize(const std::vector<WeightedColor>& inColors, std::uint32_t inSize) {
    NvQuantOctree octree(inSize);
    for (const WeightedColor& color : inColors)
        octree.AddColor(color.mColor, color.mPixels);
    return octree.MakeTable();
}

/** Distinct colours: anywhere, or close to a few centres as in drawn pictures. */
std::vector<WeightedColor> RandomColors(std::size_t inCount, bool inClustered, std::mt19937& ioRandom) {
    std::vector<NvColor> centres;
    for (int i = 0; i < 20; ++i)
        centres.push_back(RandomColor(ioRandom));
    std::map<std::uint32_t, WeightedColor> colors;
    while (colors.size() < inCount) {
        NvColor color = RandomColor(ioRandom);
        if (inClustered) {
            const NvColor& centre = centres[RandomBelow(ioRandom, 20)];
            const auto near = [](std::uint8_t inCentre, std::uint8_t inOffset) {
                return static_cast<std::uint8_t>(std::clamp(inCentre + inOffset % 41 - 20, 0, 255));
            };
            color = {near(centre.red, color.red), near(centre.green, color.green),
                     near(centre.blue, color.blue)};
        }
        const std::uint32_t pixels = 1 + RandomBelow(ioRandom, inClustered ? 1000 : 3);
        colors[NvPackColor(color)] = {color, pixels};
    }
    std::vector<WeightedColor> list;
    for (const auto& [key, color] : colors)
        list.push_back(color);
    std::ranges::shuffle(list, ioRandom);
    return list;
}

/** Squared error of showing every colour in its nearest entry. */
double ErrorOf(const std::vector<WeightedColor>& inColors, const NvColorTable& inTable) {
    double error = 0;
    for (const WeightedColor& color : inColors) {
        std::uint32_t least = std::numeric_limits<std::uint32_t>::max();
        for (const NvColor& entry : ColorsOf(inTable))
            least = std::min(least, NvColorTable::ColorDistance(&entry, &color.mColor));
        error += static_cast<double>(least) * color.mPixels;
    }
    return error;
}

TEST(Octree, GivesUpWhatCostsLeast) {
    // The two dark greys are a small step for many pixels, white a large one for few, red for a single one.
    EXPECT_THAT(ColorsOf(Quantize({{{0, 0, 0}, 1000}, {km_White, 5}, {{2, 2, 2}, 1000}}, 2)),
                ElementsAre(NvColor{1, 1, 1}, km_White));
    EXPECT_THAT(ColorsOf(Quantize({{{10, 0, 0}, 1}, {{20, 0, 0}, 3}, {km_Blue, 9}}, 2)),
                ElementsAre(km_Blue, NvColor{18, 0, 0}));
    EXPECT_THAT(ColorsOf(Quantize({{km_Black, 1}, {km_White, 3}}, 1)), ElementsAre(NvColor{191, 191, 191}));
}

TEST(Octree, IsTheSameInAnyOrderAndSmallEnough) {
    std::mt19937 random(2);
    std::vector<WeightedColor> lattice; // of equal steps and weights, where many choices are equally good
    for (std::uint32_t i = 0; i < 4096; ++i)
        lattice.push_back({{static_cast<std::uint8_t>(i << 4), static_cast<std::uint8_t>(i & 0xF0),
                            static_cast<std::uint8_t>(i >> 8 << 4)},
                           2});
    for (const std::uint32_t size : {1U, 2U, 3U, 64U, 128U, 256U})
        for (const int kind : {0, 1, 2}) {
            std::vector<WeightedColor> colors = kind == 2 ? lattice : RandomColors(3000, kind == 1, random);
            const NvColorTable table = Quantize(colors, size);
            EXPECT_EQ(table.GetSize(), size);
            for (std::size_t i = 0; i < 500; ++i) // some in two parts
                if (colors[i].mPixels > 1) {
                    --colors[i].mPixels;
                    colors.push_back({colors[i].mColor, 1});
                }
            std::ranges::shuffle(colors, random);
            EXPECT_TRUE(Quantize(colors, size) == table) << size;
        }
}

TEST(Octree, IsBetterThanTheMostPopularColours) {
    std::mt19937 random(3);
    for (const bool clustered : {false, true})
        for (const std::uint32_t count : {300U, 1500U, 5000U}) {
            std::vector<WeightedColor> colors = RandomColors(count, clustered, random);
            const double error = ErrorOf(colors, Quantize(colors, 128));
            std::vector<WeightedColor> popular = colors;
            std::ranges::sort(popular, std::greater<>(), &WeightedColor::mPixels);
            NvColorTable table(128);
            for (std::uint32_t i = 0; i < 128; ++i)
                table.SetColor(i, popular[i].mColor);
            EXPECT_LT(error, ErrorOf(colors, table) * 0.75) << count;
        }
}

} // namespace
