// The quantizer beneath the palette: exact where it can be, near where it must, and the same on every run.

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "nvcode2/nvquantoctree.h"
#include "nvcode2/nvquantremap.h"
#include "nvcode2/nvquantselector.h"
#include "tests/support/randomgif.h"

namespace {

struct WeightedColor {
    NvColor mColor;
    std::uint64_t mWeight;
};

std::vector<WeightedColor> RandomColors(std::uint32_t inCount, std::uint32_t inSeed) {
    TestRandom random(inSeed);
    std::vector<WeightedColor> colors(inCount);
    for (auto& [color, weight] : colors) {
        color = {static_cast<std::uint8_t>(random.Below(256)), static_cast<std::uint8_t>(random.Below(256)),
                 static_cast<std::uint8_t>(random.Below(256))};
        weight = 1 + random.Below(50);
    }
    return colors;
}

NvColorTable Quantize(const std::vector<WeightedColor>& inColors, std::uint32_t inSize) {
    NvQuantOctree octree(inSize);
    for (const auto& [color, weight] : inColors)
        octree.AddColor(color, weight);
    return octree.MakeTable();
}

/** Mean squared distance to the nearest entry. */
double ErrorOf(const std::vector<WeightedColor>& inColors, const NvColorTable& inTable) {
    double error = 0;
    double pixels = 0;
    for (const auto& [color, weight] : inColors) {
        const NvColor& nearest = inTable.GetColor(inTable.FindClosestColor(NvPackColor(color), -1));
        error += static_cast<double>(weight) * NvColorTable::ColorDistance(&nearest, &color);
        pixels += static_cast<double>(weight);
    }
    return error / pixels;
}

TEST(Quantizer, ColoursThatFitAreExactTheMostFrequentFirst) {
    const std::vector<WeightedColor> colors = {
        {{1, 2, 3}, 5}, {{1, 2, 4}, 9}, {{200, 0, 0}, 1}, {{1, 2, 3}, 6}};
    const NvColorTable table = Quantize(colors, 3);
    ASSERT_EQ(table.GetSize(), 3u);
    EXPECT_EQ(table.GetColor(0), (NvColor{1, 2, 3}));
    EXPECT_EQ(table.GetColor(1), (NvColor{1, 2, 4}));
    EXPECT_EQ(table.GetColor(2), (NvColor{200, 0, 0}));
    EXPECT_EQ(Quantize({}, 16).GetSize(), 0u);
    EXPECT_EQ(Quantize({{{9, 9, 9}, 0}}, 16).GetSize(), 0u) << "no pixels, no colour";
    EXPECT_EQ(ErrorOf(RandomColors(250, 1), Quantize(RandomColors(250, 1), 256)), 0.0);
}

TEST(Quantizer, TheOrderOfColoursDoesNotMatter) {
    for (const std::uint32_t count : {300u, 5000u, 200000u}) {
        std::vector<WeightedColor> colors = RandomColors(count, count);
        const NvColorTable table = Quantize(colors, 128);
        EXPECT_EQ(table.GetSize(), 128u);
        std::reverse(colors.begin(), colors.end());
        EXPECT_TRUE(Quantize(colors, 128) == table) << count;
    }
}

TEST(Quantizer, AnyNumberOfColoursGivesAUsefulPalette) {
    // What a grid of 5 x 5 x 5 colours over the cube would do; a tenth more is still as good to the eye.
    const double ofGrid = 3 * 51.2 * 51.2 / 12;
    for (const std::uint32_t count : {1000u, 100000u, 300000u}) {
        const std::vector<WeightedColor> colors = RandomColors(count, count);
        EXPECT_LT(ErrorOf(colors, Quantize(colors, 128)), 1.1 * ofGrid) << count;
    }
    EXPECT_LT(NvQuantOctree::EstimateMemory(std::numeric_limits<std::uint64_t>::max()), 256u << 20);
}

TEST(Quantizer, SelectorKeepsTheEntriesWhoseLossWouldCostMost) {
    NvColorTable shared(5);
    const std::uint8_t greys[] = {0, 100, 110, 200, 255};
    for (std::uint32_t i = 0; i < 5; ++i)
        shared.SetColor(i, {greys[i], greys[i], greys[i]});
    const std::uint32_t all[] = {10, 3, 9, 10, 0};
    const auto flagged = [&](std::uint32_t inMax) {
        const NvColorFlags flags = NvQuantSelector(shared, all, shared, inMax);
        std::string text;
        for (std::uint32_t i = 0; i < 5; ++i)
            text += flags[i] ? '1' : '0';
        return text;
    };
    EXPECT_EQ(flagged(5), "11110") << "nothing is nearest to the last";
    EXPECT_EQ(flagged(3), "10110");
    EXPECT_EQ(flagged(2), "10100") << "what 100 stood for counts for 110";
    const std::uint32_t none[] = {0, 0, 0, 0, 0};
    EXPECT_TRUE(NvQuantSelector(shared, none, shared, 2)[0]);
}

TEST(Quantizer, RemapTakesTheNearestFlaggedEntryTheLowestOfEquals) {
    NvColorTable target(4);
    target.SetColor(0, {10, 0, 0});
    target.SetColor(1, {30, 0, 0});
    target.SetColor(2, {20, 0, 0});
    target.SetColor(3, {20, 0, 0});
    NvColorTable colors(3);
    colors.SetColor(0, {20, 0, 0});
    colors.SetColor(1, {26, 0, 0});
    colors.SetColor(2, {26, 0, 0});
    const std::uint32_t histogram[] = {1, 1, 0};
    const NvIndexMap free = NvMakeRemap(colors, histogram, target, nullptr);
    EXPECT_EQ(free[0], 2);
    EXPECT_EQ(free[1], 1);
    EXPECT_EQ(free[2], 0) << "no pixels";
    const NvColorFlags flags{true, true, false, false};
    EXPECT_EQ(NvMakeRemap(colors, histogram, target, &flags)[0], 0);
}

} // namespace
