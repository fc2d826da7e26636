// What all images with pixels share, and masks.

#include "nvcode2/image/nvbuffer.h"
#include "nvcode2/image/nvrealimage.h"
#include "tests/image/images.h"

namespace {

using testing::Each;
using testing::ElementsAre;

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

TEST(RealImage, MisuseIsOurMistake) {
    NvBuffer buffer;
    EXPECT_EQ(CodeOf([&] { buffer.Lock(); }), 27u);
    EXPECT_FALSE(buffer.IsLocked()) << "a failed lock does not count";
    NvRealImage image = MakeImage(100, 100, 8, 1);
    EXPECT_DEATH(image.AssertLocked(), "mBufferPtr->IsLocked..");
    EXPECT_DEATH(image.PasteImage(MakeImage(10, 10, 8, 1), {91, 90}), "<= GetWidth");
    EXPECT_DEATH(image.CopyRegion({-1, 0, 2, 2}), "inSourceRect.left >= 0");
    EXPECT_EQ(CodeOf([&] { image.Invert(); }), 37u) << "what a class of images lacks is refused";

    // Writing beside the caller's pixels: before a row, above the first, beyond the end.
    const NvBitmapImage mask(2, 1, 0, 1);
    std::uint8_t pixels[6] = {};
    for (const auto& [point, rowBytes] :
         {std::pair<NvPoint, std::uint32_t>{{-1, 0}, 6}, {{0, -1}, 6}, {{0, 0}, 5}}) {
        EXPECT_DEATH(mask.WriteMasked({0, 0, 2, 1}, pixels, 6, {pixels, rowBytes, point, {}}), "HasRoomFor");
        const NvRect dest{point.h, point.v, point.h + 2, point.v + 1};
        EXPECT_DEATH(mask.ReadRGBAt({0, 0, 2, 1}, pixels, rowBytes, dest, {}), "HasRoomFor");
    }
}

TEST(BitmapImage, PolarityAndFillDecideOnEveryBit) {
    for (const std::uint8_t polarity : {std::uint8_t{0}, std::uint8_t{1}}) {
        for (const std::uint32_t fill : {0u, 1u}) {
            const NvBitmapImage mask(9, 2, polarity, fill);
            EXPECT_THAT(BytesOf(mask), Each(polarity != fill ? 0xFF : 0x00)) << +polarity << ", " << fill;
            EXPECT_EQ(IsSet(mask, 8, 1), fill == 1);
        }
    }
    EXPECT_THAT(BytesOf(NvBitmapImage(9, 2, 0, 2)), Each(0)) << "2 is no fill value";
    NvBitmapImage mask(4, 1, 1);
    SetBytes(mask, {0b0011'0000});
    NvBitmapImage other(4, 1);
    SetBytes(other, {0b0101'0000});
    mask.Combine(other, NvMaskRule::km_OnlyThis); // the first two pixels of this, the second of the other
    EXPECT_TRUE(IsSet(mask, 0, 0));
    EXPECT_FALSE(IsSet(mask, 1, 0) || IsSet(mask, 2, 0));
    std::uint8_t colors[6] = {};
    mask.ReadRGB({0, 0, 2, 1}, colors, 6, {});
    EXPECT_THAT(colors, ElementsAre(255, 255, 255, 0, 0, 0));
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
