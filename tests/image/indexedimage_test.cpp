#include "nvcode2/image/nvindexedimage.h"

#include "tests/image/images.h"

namespace {

using testing::ElementsAre;

const NvColorTable km_Table = MakeTable({km_Black, km_Red, km_Green, km_Blue});

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

} // namespace
