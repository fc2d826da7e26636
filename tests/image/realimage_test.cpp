#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "nvcode2/image/nvbuffer.h"
#include "nvcode2/image/nvrealimage.h"
#include "tests/image/images.h"
#include "tests/support/codeof.h"

namespace {

NvRealImage MakeImage(std::uint32_t inWidth, std::uint32_t inHeight, std::uint16_t inDepth,
                      std::uint16_t inChannels, NvRowBytesProc inRowBytes = &NvPackedRowBytes) {
    return {inWidth, inHeight, inDepth, inChannels, inRowBytes, nullptr, NvImage::km_RGBImage};
}

/** One bit of a row, the leftmost first: what every depth comes down to. */
bool BitAt(const NvRealImage& inImage, std::uint32_t inRow, std::size_t inBit) {
    const NvConstPixelLock pixels(inImage);
    return pixels.Row(inRow)[inBit / 8] >> (7 - inBit % 8) & 1;
}

TEST(RowBytes, PackedAndAligned) {
    constexpr struct {
        std::uint16_t depth, channels;
        std::uint32_t width, packed, aligned;
    } km_Cases[] = {
        {1, 1, 9, 2, 4},   {1, 1, 8, 1, 4},  {1, 3, 3, 2, 4}, {8, 3, 5, 15, 16},
        {8, 4, 5, 20, 20}, {16, 1, 3, 6, 8}, {8, 1, 0, 0, 0},
    };
    for (const auto& test : km_Cases) {
        EXPECT_EQ(NvPackedRowBytes(test.depth, test.channels, test.width), test.packed) << test.width;
        EXPECT_EQ(NvAlignedRowBytes(test.depth, test.channels, test.width), test.aligned) << test.width;
    }
    EXPECT_EQ(CodeOf([] { NvPackedRowBytes(16, 3, 0x80000000u); }), 2u);
}

TEST(RealImage, ASizeThatFitsNoBufferChangesNothing) {
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
            const std::uint32_t height = 1 + RandomBelow(random, 4);
            NvRealImage source = MakeImage(width, height, depth, channels, &NvAlignedRowBytes);
            FillRandomly(source, random);
            const std::int32_t left = below(width);
            const std::int32_t top = below(height);
            const NvRect rect{left, top, left + 1 + below(width - static_cast<std::uint32_t>(left)),
                              static_cast<std::int32_t>(height)};
            const auto copy = source.CopyRegion(rect);

            NvRealImage dest =
                MakeImage(copy->GetWidth() + RandomBelow(random, 20), copy->GetHeight() + 1, depth, channels);
            FillRandomly(dest, random);
            NvRealImage before = MakeImage(dest.GetWidth(), dest.GetHeight(), depth, channels);
            SetBytes(before, BytesOf(dest));
            const NvPoint at{below(dest.GetWidth() - copy->GetWidth() + 1), below(2)};
            dest.PasteImage(*copy, at);

            const int pixelBits = depth * channels;
            std::size_t wrongBits = 0;
            for (std::uint32_t y = 0; y < dest.GetHeight(); ++y) {
                for (std::uint32_t bit = 0; bit < dest.GetRowBytes() * 8; ++bit) {
                    const std::int32_t h = static_cast<std::int32_t>(bit) / pixelBits - at.h + rect.left;
                    const std::int32_t v = static_cast<std::int32_t>(y) - at.v + rect.top;
                    const bool inside = h >= rect.left && h < rect.right && v >= rect.top && v < rect.bottom;
                    const auto sourceBit = h * pixelBits + static_cast<std::int32_t>(bit) % pixelBits;
                    const bool expected = inside ? BitAt(source, static_cast<std::uint32_t>(v),
                                                         static_cast<std::uint32_t>(sourceBit))
                                                 : BitAt(before, y, bit);
                    wrongBits += BitAt(dest, y, bit) != expected;
                }
            }
            ASSERT_EQ(wrongBits, 0u) << depth << " bits, " << channels << " channels, round " << round;
        }
    }
}

TEST(RealImage, MisuseIsOurMistake) {
    NvBuffer buffer;
    EXPECT_EQ(CodeOf([&] { buffer.Lock(); }), 27u);
    EXPECT_FALSE(buffer.IsLocked()) << "a failed lock does not count";
    EXPECT_DEATH(buffer.Free(), "mAllocatedFlag");
    NvRealImage image = MakeImage(100, 100, 8, 1);
    EXPECT_DEATH(image.AssertLocked(), "mBufferPtr->IsLocked..");
    EXPECT_DEATH(image.PasteImage(MakeImage(10, 10, 8, 1), {91, 90}), "<= GetWidth");
    EXPECT_DEATH(image.CopyRegion({-1, 0, 2, 2}), "inSourceRect.left >= 0");
    EXPECT_EQ(CodeOf([&] { image.Invert(); }), 37u) << "what a class of images lacks is refused";
}

} // namespace
