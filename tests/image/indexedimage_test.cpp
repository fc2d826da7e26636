#include "nvcode2/image/nvindexedimage.h"

#include "tests/image/images.h"

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
            const NvPixelLock bits(mask); // rows of whole bytes are counted in another way
            for (const auto& [row, byte] : {std::pair{1u, 0xFF}, {2u, 0}, {3u, 0xFE}, {4u, 1}})
                std::fill(bits.Row(row), bits.Row(row + 1), static_cast<std::uint8_t>(byte));
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

TEST(IndexedImage, MergesAndRemapsColours) {
    const auto red = [](std::uint8_t inLevel) { return NvColor{inLevel, 0, 0}; };
    NvIndexedImage image =
        MakeIndexedRow({0, 1, 2, 3, 4, 5}, MakeTable({red(0), red(5), red(10), red(14), km_Blue, red(10)}));
    std::vector<std::uint32_t> counts{9, 9, 9, 1, 9, 9};
    std::uint32_t source = 99;
    std::uint32_t dest = 99;
    EXPECT_EQ(image.ChooseColorToMerge(counts.data(), 6, source, dest), 5u);
    EXPECT_EQ(source, 2u) << "a colour that is there twice costs nothing";
    image.MergeSimilarColors(6); // 5 joins 0, 10 is kept, 14 joins 10
    EXPECT_THAT(ColorsOf(image.GetColorTable()), ElementsAre(red(0), red(10), km_Blue));
    EXPECT_THAT(BytesOf(image), ElementsAre(0, 0, 1, 1, 2, 1));
    image.ReplaceIndex(1, 2);
    std::array<std::uint8_t, 256> map{};
    map[2] = 200;
    image.RemapIndices(map.data());
    EXPECT_THAT(BytesOf(image), ElementsAre(0, 0, 200, 200, 200, 200));
}

TEST(IndexedImage, RefusesTablesThatItsPixelsCannotReach) {
    NvIndexedImage large(2, 2, NvColorTable(300));
    const NvIndexedImage without(2, 2, NvColorTable());
    std::uint32_t counts[1] = {};
    std::uint32_t source, dest;
    EXPECT_EQ(CodeOf([&] { large.RemoveUnusedColors(); }), 27u);
    EXPECT_EQ(CodeOf([&] { large.MergeSimilarColors(3); }), 27u);
    EXPECT_EQ(CodeOf([&] { large.ReplaceIndex(299, 1); }), 27u);
    EXPECT_EQ(CodeOf([&] { without.ChooseColorToMerge(counts, 1, source, dest); }), 27u);
    EXPECT_EQ(CodeOf([&] { NvColorTable().FindClosestOtherColor(0); }), 27u);
}

} // namespace
