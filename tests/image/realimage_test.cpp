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

TEST(RealImage, CopiedAndPastedRegionsHoldExactlyTheirPixels) {
    std::mt19937 random(20);
    const auto below = [&](std::uint32_t inLimit) {
        return static_cast<std::int32_t>(RandomBelow(random, inLimit));
    };
    for (const auto& [depth, channels] :
         std::vector<std::pair<std::uint16_t, std::uint16_t>>{{1, 1}, {8, 3}, {16, 2}}) {
        for (int round = 0; round < 100; ++round) {
            const std::uint32_t width = 1 + RandomBelow(random, 40);
            NvRealImage source = MakeImage(width, 4, depth, channels, &NvAlignedRowBytes);
            FillRandomly(source, random);
            const std::int32_t left = below(width);
            const std::int32_t top = below(4);
            const NvRect rect{left, top, left + 1 + below(width - static_cast<std::uint32_t>(left)), 4};
            const auto copy = source.CopyRegion(rect);
            NvRealImage dest = MakeImage(copy->GetWidth() + RandomBelow(random, 20), 5, depth, channels);
            FillRandomly(dest, random);
            const auto from = BytesOf(source), before = BytesOf(dest);
            const NvPoint at{below(dest.GetWidth() - copy->GetWidth() + 1), below(2)};
            dest.PasteImage(*copy, at);
            const auto after = BytesOf(dest);

            // every depth comes down to bits, the leftmost first
            const auto bitOf = [](const std::vector<std::uint8_t>& inBytes, std::size_t inBit) {
                return inBytes[inBit / 8] >> (7 - inBit % 8) & 1;
            };
            const std::size_t pixelBits = std::size_t{depth} * channels;
            for (std::size_t bit = 0; bit < before.size() * 8; ++bit) {
                const std::size_t rowBits = std::size_t{dest.GetRowBytes()} * 8;
                const NvPoint pixel{static_cast<std::int32_t>(bit % rowBits / pixelBits) - at.h + left,
                                    static_cast<std::int32_t>(bit / rowBits) - at.v + top};
                const bool isInside =
                    pixel.h >= left && pixel.h < rect.right && pixel.v >= top && pixel.v < 4;
                const std::size_t sourceBit = static_cast<std::size_t>(pixel.v) * source.GetRowBytes() * 8 +
                                              static_cast<std::size_t>(pixel.h) * pixelBits +
                                              bit % rowBits % pixelBits;
                ASSERT_EQ(bitOf(after, bit), isInside ? bitOf(from, sourceBit) : bitOf(before, bit))
                    << depth << " bits, " << channels << " channels, round " << round;
            }
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
