// What all images with pixels share, and masks.

#include "nvcode2/image/nvrealimage.h"
#include "tests/image/images.h"

namespace {

NvRealImage MakeImage(std::uint32_t inWidth, std::uint32_t inHeight, std::uint16_t inDepth,
                      std::uint16_t inChannels, NvRowBytesProc inRowBytes = &NvPackedRowBytes) {
    return {inWidth, inHeight, inDepth, inChannels, inRowBytes, nullptr, NvImage::km_RGBImage};
}

TEST(RealImage, SizesThatFitNoBufferChangeNothing) {
    EXPECT_EQ(NvPackedRowBytes(1, 3, 3), 2u);
    EXPECT_EQ(NvAlignedRowBytes(1, 3, 3), 4u);
    EXPECT_EQ(NvAlignedRowBytes(8, 4, 5), 20u);
    EXPECT_EQ(CodeOf([] { NvPackedRowBytes(16, 3, 0x80000000u); }), 2u);
    NvRealImage image = MakeImage(2, 1, 16, 3);
    SetBytes(image, {1, 2, 3});
    const auto bytes = BytesOf(image);
    EXPECT_EQ(CodeOf([&] { image.SetSize(0x10000, 0x10000); }), 2u) << "too many bytes";
    EXPECT_EQ(image.GetWidth(), 2u);
    EXPECT_EQ(BytesOf(image), bytes);
    EXPECT_EQ(CodeOf([] { NvBitmapImage(0x80000000, 1); }), 2u) << "no rectangle is that wide";
}

// Regions of masks begin and end inside bytes.
TEST(BitmapImage, CopiedAndPastedRegionsHoldExactlyTheirPixels) {
    std::mt19937 random(20);
    const auto below = [&](std::uint32_t inLimit) {
        return static_cast<std::int32_t>(RandomBelow(random, inLimit));
    };
    for (int round = 0; round < 300; ++round) {
        NvBitmapImage source(1 + RandomBelow(random, 40), 4);
        FillRandomly(source, random);
        const NvPoint from{below(source.GetWidth()), below(4)};
        const std::int32_t width = 1 + below(source.GetWidth() - static_cast<std::uint32_t>(from.h));
        const auto copy = source.CopyRegion({from.h, from.v, from.h + width, 4});
        NvBitmapImage dest(copy->GetWidth() + RandomBelow(random, 20), 5);
        FillRandomly(dest, random);
        const auto before = BytesOf(dest);
        const NvPoint at{below(dest.GetWidth() - copy->GetWidth() + 1), below(2)};
        dest.PasteImage(*copy, at);
        for (std::uint32_t y = 0; y < 5; ++y)
            for (std::uint32_t x = 0; x < dest.GetRowBytes() * 8; ++x) { // padding included
                const auto h = static_cast<std::int32_t>(x) - at.h, v = static_cast<std::int32_t>(y) - at.v;
                const bool isInside = h >= 0 && h < width && v >= 0 && v < 4 - from.v;
                const bool expected =
                    isInside ? IsSet(source, static_cast<std::uint32_t>(h + from.h),
                                     static_cast<std::uint32_t>(v + from.v))
                             : NvBitmapImage::GetBit(before.data(), dest.GetRowBytes(), x, y) != 0;
                ASSERT_EQ(IsSet(dest, x, y), expected) << "round " << round << ": " << x << ", " << y;
            }
    }
}

TEST(BitmapImage, FindsTheBoundsOfContent) {
    NvRect bounds{9, 9, 9, 9};
    EXPECT_FALSE(NvBitmapImage(20, 5).FindContentBounds(bounds));
    EXPECT_TRUE(NvBitmapImage(20, 5, 1, 1).FindContentBounds(bounds));
    EXPECT_EQ(bounds, (NvRect{0, 0, 20, 5})) << "without the padding of the rows";
    std::mt19937 random(31);
    for (int round = 0; round < 300; ++round) {
        const auto width = static_cast<std::int32_t>(1 + RandomBelow(random, 30));
        NvIndexedImage image(static_cast<std::uint32_t>(width), 6, NvColorTable(8));
        NvRect expected{width, 6, 0, 0};
        for (std::uint32_t pixels = 1 + RandomBelow(random, 3); pixels > 0; --pixels) {
            const auto x = static_cast<std::int32_t>(RandomBelow(random, image.GetWidth()));
            const auto y = static_cast<std::int32_t>(RandomBelow(random, 6));
            NvPixelLock(image).Row(static_cast<std::uint32_t>(y))[x] = 3;
            expected = {std::min(expected.left, x), std::min(expected.top, y),
                        std::max(expected.right, x + 1), std::max(expected.bottom, y + 1)};
        }
        EXPECT_TRUE(image.MakeMask(0).FindContentBounds(bounds));
        ASSERT_EQ(bounds, expected) << "round " << round;
    }
}

} // namespace
