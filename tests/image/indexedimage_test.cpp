#include "nvcode2/image/nvindexedimage.h"

#include <array>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "tests/image/images.h"
#include "tests/support/codeof.h"

namespace {

using testing::Each;
using testing::ElementsAre;

const NvColorTable km_Table = MakeTable({km_Black, km_Red, km_Green, km_Blue});

TEST(IndexedImage, ReadsColoursIntoAnyLayout) {
    const NvIndexedImage image = MakeIndexedRow({1, 2, 3, 9}, km_Table);
    std::array<std::uint8_t, 12> out;
    out.fill(77);
    image.ReadRGB({1, 0, 4, 1}, out.data(), 12, {4, 3, 2, 1});
    EXPECT_THAT(out, ElementsAre(77, 0, 255, 0, 77, 255, 0, 0, 77, 0, 0, 0));

    out.fill(77);
    image.ReadRGBAt({0, 0, 1, 1}, out.data(), 6, {1, 1, 2, 2}, {});
    EXPECT_THAT(out, ElementsAre(77, 77, 77, 77, 77, 77, 77, 77, 77, 255, 0, 0));
}

TEST(IndexedImage, HistogramsCountEveryPixelOfTheTable) {
    const NvIndexedImage image = MakeIndexedRow({0, 1, 1, 3, 3, 3, 250}, km_Table);
    std::array<std::uint32_t, 5> histogram{9, 9, 9, 9, 9};
    image.BuildHistogram(histogram.data());
    EXPECT_THAT(histogram, ElementsAre(1, 2, 0, 3, 9)) << "what the table lacks is not counted";
    EXPECT_EQ(NvIndexedImage::CountUsedColors(histogram.data(), 5), 4u);
    bool found = false;
    EXPECT_EQ(NvIndexedImage::FindUnusedColor(histogram.data(), 5, found), 2u);
    EXPECT_TRUE(found);
    EXPECT_EQ(NvIndexedImage::FindUnusedColor(histogram.data(), 2, found), 2u);
    EXPECT_FALSE(found);
    EXPECT_EQ(CodeOf([&] { image.BuildHistogram(nullptr); }), 27u);
}

TEST(IndexedImage, MaskedHistogramsCountSetPixelsOnly) {
    std::mt19937 random(3);
    NvColorTable table(256);
    for (std::uint32_t width = 1; width <= 40; ++width) {
        NvIndexedImage image(width, 5, table);
        FillRandomly(image, random);
        NvBitmapImage mask(width, 5, static_cast<std::uint8_t>(width % 2));
        FillRandomly(mask, random);
        {
            // rows of whole bytes are counted in another way
            const NvPixelLock bits(mask);
            std::fill(bits.Row(1), bits.Row(2), std::uint8_t{0xFF});
            std::fill(bits.Row(2), bits.Row(3), std::uint8_t{0x00});
            std::fill(bits.Row(3), bits.Row(4), std::uint8_t{0xFE});
            std::fill(bits.Row(4), bits.Row(5), std::uint8_t{0x01});
        }
        std::vector<std::uint32_t> expected(256, 0);
        for (std::uint32_t y = 0; y < 5; ++y)
            for (std::uint32_t x = 0; x < width; ++x)
                expected[image.GetPixel(x, y)] += IsSet(mask, x, y);
        std::vector<std::uint32_t> counted(256, 99);
        image.BuildMaskedHistogram(counted.data(), &mask);
        ASSERT_EQ(counted, expected) << "width " << width;
    }
}

TEST(IndexedImage, ReplacesAndRemapsIndices) {
    NvIndexedImage image = MakeIndexedRow({0, 1, 2, 1, 3}, km_Table);
    image.ReplaceIndex(1, 3);
    EXPECT_THAT(BytesOf(image), ElementsAre(0, 3, 2, 3, 3));
    std::array<std::uint8_t, 256> map{};
    map[3] = 200;
    image.RemapIndices(map.data());
    EXPECT_THAT(BytesOf(image), ElementsAre(0, 200, 0, 200, 200));
}

TEST(IndexedImage, MergesTheCheapestColour) {
    const NvIndexedImage image(1, 1, MakeTable({km_Black, {0, 0, 4}, km_Red, {255, 0, 3}, km_Green}));
    struct {
        const char* what;
        std::vector<std::uint32_t> counts;
        std::uint32_t candidates, source, dest;
    } const km_Cases[] = {
        {"few pixels, a near neighbour", {100, 3, 100, 4, 100}, 5, 3, 2},
        {"fewer pixels count when neighbours are as near", {100, 2, 100, 9, 100}, 2, 1, 0},
        {"the less used of equal costs", {16, 16, 9, 9, 1000}, 99, 2, 3},
        {"an unused one costs nothing", {5, 0, 5, 0, 0}, 5, 1, 0},
    };
    for (const auto& test : km_Cases) {
        std::vector<std::uint32_t> counts = test.counts;
        std::uint32_t source = 99;
        std::uint32_t dest = 99;
        EXPECT_EQ(image.ChooseColorToMerge(counts.data(), test.candidates, source, dest), test.dest)
            << test.what;
        EXPECT_EQ(source, test.source) << test.what;
        EXPECT_EQ(dest, test.dest) << test.what;
    }
}

TEST(IndexedImage, CompactsTablesInOrder) {
    std::array<std::uint8_t, 4> map{};
    const NvIndexedImage image(1, 1, MakeTable({km_White, km_Red, km_White, km_Blue}));
    const std::array<std::uint32_t, 4> counts{5, 0, 3, 2};
    EXPECT_THAT(ColorsOf(image.CompactTable(counts.data(), map.data())), ElementsAre(km_White, km_Blue));
    EXPECT_THAT(map, ElementsAre(0, 1, 0, 1));

    const NvIndexedImage revived(1, 1, MakeTable({km_Red, km_Red, km_Blue})); // its entries collide
    const std::array<std::uint32_t, 3> revivedCounts{0, 3, 2};
    EXPECT_THAT(ColorsOf(revived.CompactTable(revivedCounts.data(), map.data())),
                ElementsAre(km_Blue, km_Black));
    EXPECT_THAT(map, ElementsAre(0, 0, 0, 1));
}

TEST(IndexedImage, RemovingUnusedColoursKeepsThePicture) {
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        // few colours, so that repeated ones with an unused first occurrence are common
        NvColorTable table(1 + RandomBelow(random, 40));
        for (std::uint32_t i = 0; i < table.GetSize(); ++i)
            table.SetColor(i, {static_cast<std::uint8_t>(RandomBelow(random, 12)), 0, 0});
        NvIndexedImage image(7, 3, table);
        std::vector<std::uint8_t> pixels(21);
        for (std::uint8_t& pixel : pixels)
            pixel = static_cast<std::uint8_t>(RandomBelow(random, table.GetSize()));
        SetBytes(image, pixels);

        image.RemoveUnusedColors();
        const auto after = BytesOf(image);
        std::vector<std::uint32_t> used(image.GetColorTable().GetSize(), 0);
        image.BuildHistogram(used.data());
        EXPECT_THAT(used, Each(testing::Gt(0u)));
        EXPECT_TRUE(image.GetColorTable().RemoveDuplicates() == image.GetColorTable());
        for (std::size_t i = 0; i < pixels.size(); ++i)
            ASSERT_EQ(image.GetColorTable().GetColor(after[i]), table.GetColor(pixels[i]))
                << "round " << round;
    }
}

TEST(IndexedImage, SimilarColoursJoinTheEarliestKept) {
    // reds at 0, 5, 10, 14: at tolerance 6 5 joins 0, 10 is kept, 14 joins 10
    const auto red = [](std::uint8_t inLevel) { return NvColor{inLevel, 0, 0}; };
    NvIndexedImage image = MakeIndexedRow({0, 1, 2, 3, 4, 5, 5},
                                          MakeTable({red(0), red(5), red(10), red(14), km_Blue, red(10)}));
    image.MergeSimilarColors(6);
    EXPECT_THAT(ColorsOf(image.GetColorTable()), ElementsAre(red(0), red(10), km_Blue));
    EXPECT_THAT(BytesOf(image), ElementsAre(0, 0, 1, 1, 2, 1, 1));

    image = MakeIndexedRow({0, 1, 2}, MakeTable({red(0), red(10), red(1)}));
    image.MergeSimilarColors(10);
    EXPECT_EQ(image.GetColorTable().GetSize(), 2u) << "a distance equal to the tolerance is too far";
}

} // namespace
