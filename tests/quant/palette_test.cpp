#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "nvcode2/nvquantoctree.h"
#include "nvcode2/nvquantremap.h"
#include "nvcode2/nvquantselector.h"
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

TEST(Octree, KeepsFewColoursExactly) {
    std::mt19937 random(1);
    for (const std::uint32_t count : {1U, 2U, 100U, 256U}) {
        const std::vector<WeightedColor> colors = RandomColors(count, count == 100, random);
        std::vector<NvColor> palette = ColorsOf(Quantize(colors, count == 2 ? 64 : count));
        ASSERT_EQ(palette.size(), count);
        const auto pixelsOf = [&](const NvColor& inColor) {
            const auto place = std::ranges::find(colors, inColor, &WeightedColor::mColor);
            return place == colors.end() ? 0 : place->mPixels;
        };
        EXPECT_TRUE(std::ranges::is_sorted(palette, std::greater<>(), pixelsOf)) << "most pixels first";
        std::ranges::sort(palette, {}, &NvPackColor);
        EXPECT_TRUE(std::ranges::adjacent_find(palette) == palette.end());
        EXPECT_TRUE(std::ranges::all_of(palette, [&](const NvColor& c) { return pixelsOf(c) > 0; }));
    }
}

TEST(Octree, NothingInNothingOut) {
    EXPECT_EQ(Quantize({}, 128).GetSize(), 0u);
    EXPECT_EQ(Quantize({{km_Red, 0}}, 128).GetSize(), 0u);
    EXPECT_DEATH(NvQuantOctree(0), "inTableSize");
    EXPECT_DEATH(NvQuantOctree(257), "inTableSize <= 256");
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

/** Greys of the given levels. */
NvColorTable Greys(const std::vector<std::uint8_t>& inLevels) {
    NvColorTable table(static_cast<std::uint32_t>(inLevels.size()));
    for (std::uint32_t i = 0; i < table.GetSize(); ++i)
        table.SetColor(i, {inLevels[i], inLevels[i], inLevels[i]});
    return table;
}

TEST(Remap, TakesTheNearestAllowedEntry) {
    const NvColorTable target = Greys({100, 0, 20, 0, 40});
    const NvColorTable source = Greys({10, 30, 41, 99, 0});
    const std::vector<std::uint32_t> all{1, 1, 1, 1, 1};
    const auto mapped = [&](const std::vector<std::uint32_t>& inHistogram, const NvColorFlags* inFlags) {
        const NvIndexMap map = NvMakeRemap(source, inHistogram.data(), target, inFlags);
        return std::vector<int>(map.begin(), map.begin() + 5);
    };
    EXPECT_THAT(mapped(all, nullptr), ElementsAre(1, 2, 4, 0, 1)) << "the lower of two equally near";
    NvColorFlags flags{};
    flags[2] = flags[3] = true;
    EXPECT_THAT(mapped(all, &flags), ElementsAre(2, 2, 2, 2, 3));
    EXPECT_THAT(mapped({0, 1, 0, 1, 0}, nullptr), ElementsAre(0, 2, 0, 0, 0)) << "only what is used";

    NvIndexedImage image = MakeIndexedRow({4, 3, 2, 1, 0}, source);
    NvQuantRemap(image, NvMakeRemap(source, all.data(), target, nullptr), target);
    EXPECT_THAT(BytesOf(image), ElementsAre(1, 0, 4, 2, 1));
    EXPECT_TRUE(image.GetColorTable() == target);
}

std::vector<std::uint32_t> Picked(const NvColorFlags& inFlags) {
    std::vector<std::uint32_t> picked;
    for (std::uint32_t i = 0; i < inFlags.size(); ++i)
        if (inFlags[i])
            picked.push_back(i);
    return picked;
}

TEST(Selector, DropsTheCheapestEntries) {
    const NvColorTable shared = Greys({0, 10, 12, 100, 200, 201});
    const NvColorTable image = Greys({0, 11, 9, 13, 99, 190, 255});
    // Nearest: 0 -> 0; 11, 9 -> 1; 13 -> 2; 99 -> 3; 190 -> 4; 255 -> 5
    const std::vector<std::uint32_t> histogram{8, 1, 2, 4, 1, 9, 0};
    const auto pick = [&](std::uint32_t inMost) {
        return Picked(NvQuantSelector(image, histogram.data(), shared, inMost));
    };
    EXPECT_THAT(pick(6), ElementsAre(0, 1, 2, 3, 4)) << "nothing is near 201";
    EXPECT_THAT(pick(5), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(pick(4), ElementsAre(0, 2, 3, 4)) << "3 pixels by 2 levels";
    EXPECT_THAT(pick(3), ElementsAre(0, 3, 4)) << "7 pixels by 12 levels";
    EXPECT_THAT(pick(2), ElementsAre(0, 4)) << "1 pixel by 100 levels";
    EXPECT_THAT(pick(1), ElementsAre(0)) << "9 pixels, not 16";

    const std::vector<std::uint32_t> nothing(7, 0);
    EXPECT_THAT(Picked(NvQuantSelector(image, nothing.data(), shared, 120)), ElementsAre(0));
}

} // namespace
