// The quantizer: exact where it can be, near where it must, and the same on every run.

#include "nvcode2/quant/nvquantoctree.h"
#include "nvcode2/quant/nvquantremap.h"
#include "nvcode2/quant/nvquantselector.h"
#include "tests/image/images.h"

namespace {

using testing::ElementsAre;

struct WeightedColor {
    NvColor mColor;
    std::uint64_t mPixels;
};

NvColorTable Quantize(const std::vector<WeightedColor>& inColors, std::uint32_t inSize) {
    NvQuantOctree octree(inSize);
    for (const auto& [color, pixels] : inColors)
        octree.AddColor(color, pixels);
    return octree.MakeTable();
}

/** Colours anywhere, or close to a few centres as in drawn pictures. */
std::vector<WeightedColor> RandomColors(std::size_t inCount, bool inClustered, std::mt19937& ioRandom) {
    const NvColorTable centres = RandomTable(20, ioRandom);
    std::map<std::uint32_t, WeightedColor> colors;
    while (colors.size() < inCount) {
        NvColor color = RandomColor(ioRandom);
        if (inClustered) {
            const NvColor& centre = centres.GetColor(RandomBelow(ioRandom, 20));
            for (const auto channel : {&NvColor::red, &NvColor::green, &NvColor::blue})
                color.*channel =
                    static_cast<std::uint8_t>(std::clamp(centre.*channel + color.*channel % 41 - 20, 0, 255));
        }
        colors[NvPackColor(color)] = {color, 1 + RandomBelow(ioRandom, inClustered ? 1000 : 3)};
    }
    std::vector<WeightedColor> list;
    for (const auto& [key, color] : colors)
        list.push_back(color);
    return list;
}

/** Mean squared distance to the nearest entry. */
double ErrorOf(const std::vector<WeightedColor>& inColors, const NvColorTable& inTable) {
    double error = 0;
    double sum = 0;
    for (const auto& [color, pixels] : inColors) {
        const NvColor& nearest = inTable.GetColor(inTable.FindClosestColor(NvPackColor(color), -1));
        error += static_cast<double>(pixels) * NvColorTable::ColorDistance(&nearest, &color);
        sum += static_cast<double>(pixels);
    }
    return error / sum;
}

TEST(Octree, ColoursThatFitAreExactTheMostFrequentFirst) {
    EXPECT_THAT(ColorsOf(Quantize({{km_Red, 5}, {km_Green, 9}, {km_Blue, 1}, {km_Red, 6}}, 3)),
                ElementsAre(km_Red, km_Green, km_Blue));
    EXPECT_EQ(Quantize({{km_Red, 0}}, 16).GetSize(), 0u) << "no pixels, no colour";
    std::mt19937 random(1);
    const std::vector<WeightedColor> colors = RandomColors(250, false, random);
    EXPECT_EQ(ErrorOf(colors, Quantize(colors, 256)), 0.0);
}

TEST(Octree, GivesUpWhatCostsLeast) {
    // The two dark greys are a small step for many pixels, white a large one for few, red for a single one.
    EXPECT_THAT(ColorsOf(Quantize({{{0, 0, 0}, 1000}, {km_White, 5}, {{2, 2, 2}, 1000}}, 2)),
                ElementsAre(NvColor{1, 1, 1}, km_White));
    EXPECT_THAT(ColorsOf(Quantize({{{10, 0, 0}, 1}, {{20, 0, 0}, 3}, {km_Blue, 9}}, 2)),
                ElementsAre(km_Blue, NvColor{18, 0, 0}));
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

TEST(Selector, KeepsTheEntriesWhoseLossWouldCostMost) {
    const NvColorTable shared =
        MakeTable({{0, 0, 0}, {100, 100, 100}, {110, 110, 110}, {200, 200, 200}, {255, 255, 255}});
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

TEST(Remap, TakesTheNearestFlaggedEntryTheLowestOfEquals) {
    const NvColorTable target = MakeTable({{10, 0, 0}, {30, 0, 0}, {20, 0, 0}, {20, 0, 0}});
    const NvColorTable colors = MakeTable({{20, 0, 0}, {26, 0, 0}, {26, 0, 0}});
    const std::uint32_t histogram[] = {1, 1, 0};
    const NvIndexMap free = NvMakeRemap(colors, histogram, target, nullptr);
    EXPECT_EQ(free[0], 2);
    EXPECT_EQ(free[1], 1);
    EXPECT_EQ(free[2], 0) << "no pixels";
    const NvColorFlags flags{true, true, false, false};
    EXPECT_EQ(NvMakeRemap(colors, histogram, target, &flags)[0], 0);
}

} // namespace
