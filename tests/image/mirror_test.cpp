#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "nvcode2/nvflip.h"
#include "nvcode2/nvrgbimage.h"
#include "tests/image/images.h"

namespace {

using testing::ElementsAre;

using Bytes = std::vector<std::uint8_t>;

TEST(Mirror, PixelsOfEveryUnitChangePlaces) {
    std::mt19937 random(4);
    for (const std::uint32_t unit : {1u, 2u, 3u, 4u, 5u}) {
        for (std::uint32_t width = 1; width <= 9; ++width) {
            const std::uint32_t rowBytes = width * unit + 2;
            Bytes pixels(rowBytes * 3);
            for (std::uint8_t& byte : pixels)
                byte = static_cast<std::uint8_t>(random());
            Bytes expected = pixels;
            for (std::uint32_t y = 0; y < 3; ++y)
                for (std::uint32_t x = 0; x < width; ++x)
                    for (std::uint32_t c = 0; c < unit; ++c)
                        expected[y * rowBytes + x * unit + c] =
                            pixels[y * rowBytes + (width - 1 - x) * unit + c];
            Bytes mirrored = pixels;
            NvMirrorPixels(mirrored.data(), rowBytes, width, 3, unit);
            ASSERT_EQ(mirrored, expected) << unit << " bytes, width " << width;
            if (unit == 1)
                NvMirrorBytes(pixels.data(), rowBytes, width, 3);
            else if (unit == 4)
                NvMirror4BytePixels(pixels.data(), rowBytes, width, 3);
            else
                continue;
            ASSERT_EQ(pixels, expected) << unit << " bytes, width " << width;
        }
    }
    NvMirrorPixels(nullptr, 0, 0, 5, 3);
    NvMirrorRows(nullptr, 0, 5, 0);
    std::uint8_t byte = 0;
    EXPECT_DEATH(NvMirrorBytes(&byte, 0, 1, 1), "inRowBytes .. !\\(inWidth && inHeight\\)");
}

TEST(Mirror, BitsChangePlacesAtEveryWidth) {
    std::mt19937 random(6);
    for (std::uint32_t width = 1; width <= 40; ++width) {
        NvBitmapImage mask(width, 2);
        FillRandomly(mask, random);
        const std::unique_ptr<NvImage> mirror = mask.NewHorizontalMirror();
        const auto& mirrored = static_cast<const NvBitmapImage&>(*mirror);
        for (std::uint32_t y = 0; y < 2; ++y)
            for (std::uint32_t x = 0; x < width; ++x)
                ASSERT_EQ(IsSet(mirrored, x, y), IsSet(mask, width - 1 - x, y)) << "width " << width;
    }
}

TEST(Mirror, ImagesMirrorBothWays) {
    NvRGBImage image(2, 3);
    SetBytes(image, {1, 2, 3, 4, 5, 6, 11, 12, 13, 14, 15, 16, 21, 22, 23, 24, 25, 26});
    const auto across = image.NewHorizontalMirror();
    EXPECT_THAT(BytesOf(static_cast<const NvRGBImage&>(*across)),
                ElementsAre(4, 5, 6, 1, 2, 3, 14, 15, 16, 11, 12, 13, 24, 25, 26, 21, 22, 23));
    const auto down = image.NewVerticalMirror();
    EXPECT_THAT(BytesOf(static_cast<const NvRGBImage&>(*down)),
                ElementsAre(21, 22, 23, 24, 25, 26, 11, 12, 13, 14, 15, 16, 1, 2, 3, 4, 5, 6));
    const auto indices = MakeIndexedRow({1, 2, 3}, NvColorTable(4)).NewHorizontalMirror();
    EXPECT_THAT(BytesOf(static_cast<const NvIndexedImage&>(*indices)), ElementsAre(3, 2, 1));
}

} // namespace
