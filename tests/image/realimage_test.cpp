#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "nvcode2/gif/nvgifinfo.h"
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
    EXPECT_EQ(CodeOf([] { NvAlignedRowBytes(8, 1, 0xFFFFFFFFu); }), 2u);
    EXPECT_DEATH(NvPackedRowBytes(4, 1, 1),
                 "inChannelDepth == 1 .. inChannelDepth == 8 .. inChannelDepth == 16");
}

TEST(RealImage, StartsZeroedAndSetSizeKeepsPixelsOnlyAtTheSameSize) {
    NvRealImage image = MakeImage(5, 3, 8, 3, &NvAlignedRowBytes);
    EXPECT_EQ(image.GetRowBytes(), 16u);
    EXPECT_EQ(BytesOf(image), std::vector<std::uint8_t>(48, 0));
    SetBytes(image, {1, 2, 3, 4});
    const auto bytes = BytesOf(image);
    image.SetSize(5, 3);
    EXPECT_EQ(BytesOf(image), bytes);
    image.SetSize(40, 5);
    EXPECT_EQ(image.GetWidth(), 40u);
    EXPECT_EQ(BytesOf(image).size(), 600u);
}

TEST(RealImage, ASizeThatFitsNoBufferChangesNothing) {
    NvRealImage image = MakeImage(2, 1, 16, 3);
    SetBytes(image, {1, 2, 3});
    const auto bytes = BytesOf(image);
    EXPECT_EQ(CodeOf([&] { image.SetSize(0x10000, 0x10000); }), 2u) << "too many bytes";
    EXPECT_EQ(CodeOf([&] { image.SetSize(0xFFFFFFFF, 1); }), 2u) << "too many in a row";
    EXPECT_EQ(image.GetWidth(), 2u);
    EXPECT_EQ(BytesOf(image), bytes);
    EXPECT_EQ(CodeOf([] { MakeImage(0xFFFFFFFF, 0xFFFFFFFF, 8, 4); }), 2u);
    EXPECT_EQ(CodeOf([] { NvBitmapImage(0x80000000, 1); }), 2u) << "no rectangle is that wide";
}

TEST(RealImage, PixelsAreTouchedUnderALockOnly) {
    NvRealImage image = MakeImage(2, 2, 8, 1);
    EXPECT_DEATH(image.AssertLocked(), "mBufferPtr && mBufferPtr->IsAllocated.. && mBufferPtr->IsLocked..");
    {
        const NvConstPixelLock reader(image);
        EXPECT_TRUE(image.IsLocked());
        EXPECT_EQ(reader.Row(1), reader.Row(0) + 2);
    }
    EXPECT_FALSE(image.IsLocked());
}

TEST(RealImage, FormatInformationIsOwnedClonedAndHandedOver) {
    NvRealImage image = MakeImage(1, 1, 8, 1);
    NvRealImage other = MakeImage(1, 1, 8, 1);
    EXPECT_EQ(image.GetFormatInfo(), nullptr);
    image.SetFormatInfo(std::make_unique<NvGIFFrameInfo>());
    image.SetFormatInfo(std::make_unique<NvGIFFrameInfo>());
    static_cast<NvGIFFrameInfo*>(image.GetFormatInfo())->mDelay = 7;
    other.CopyFormatInfo(image);
    const NvImgFmtFrameInfo* const info = other.GetFormatInfo();
    EXPECT_NE(info, image.GetFormatInfo());
    EXPECT_EQ(static_cast<const NvGIFFrameInfo*>(info)->mDelay, 7);

    NvRealImage taker = MakeImage(1, 1, 8, 1);
    other.HandOverFormatInfo(taker);
    EXPECT_EQ(taker.GetFormatInfo(), info);
    EXPECT_EQ(other.GetFormatInfo(), nullptr);

    taker.CopyFormatInfo(other);
    EXPECT_EQ(taker.GetFormatInfo(), nullptr) << "having none is copied as well";
    EXPECT_NE(image.DetachFormatInfo(), nullptr);
    EXPECT_EQ(image.GetFormatInfo(), nullptr);
}

TEST(RealImage, ABlankImageHasTheShapeAndPackedRows) {
    NvRealImage image = MakeImage(5, 5, 16, 3, &NvAlignedRowBytes);
    std::mt19937 random(1);
    FillRandomly(image, random);
    const auto blank = image.NewBlankImage({2, 1, 5, 3});
    const auto& real = static_cast<const NvRealImage&>(*blank);
    EXPECT_EQ(real.GetChannelDepth(), 16);
    EXPECT_EQ(real.GetNumChannels(), 3);
    EXPECT_EQ(BytesOf(real), std::vector<std::uint8_t>(3 * 6 * 2, 0));
}

TEST(RealImage, CopiedAndPastedRegionsHoldExactlyTheirPixels) {
    std::mt19937 random(20);
    const auto below = [&](std::uint32_t inLimit) {
        return static_cast<std::int32_t>(RandomBelow(random, inLimit));
    };
    for (const auto& [depth, channels] :
         std::vector<std::pair<std::uint16_t, std::uint16_t>>{{1, 1}, {1, 3}, {8, 1}, {8, 3}, {16, 2}}) {
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

TEST(RealImage, PastesFitOrFail) {
    NvRealImage image = MakeImage(100, 100, 8, 1);
    const NvRealImage small = MakeImage(10, 10, 8, 1);
    image.PasteImage(small, {90, 90});
    const char* const fit = "inTopLeft.h . inImage->GetWidth.. <= GetWidth";
    EXPECT_DEATH(image.PasteImage(small, {91, 90}), fit);
    EXPECT_DEATH(image.PasteImage(small, {90, 91}), fit);
    EXPECT_DEATH(image.PasteImage(small, {-1, 0}), fit);
    EXPECT_DEATH(image.PasteImage(MakeImage(10, 10, 8, 3), {0, 0}), "GetNumChannels.. == GetNumChannels");
    EXPECT_DEATH(image.PasteImage(NvBitmapImage(2, 2), {0, 0}), "GetImageType.. == inImage->GetImageType");
}

TEST(RealImage, WhatAClassLacksIsRefused) {
    NvRealImage image = MakeImage(1, 1, 8, 1);
    std::uint8_t data[3];
    const NvRect all{0, 0, 1, 1};
    EXPECT_EQ(CodeOf([&] { image.Clone(); }), 37u);
    EXPECT_EQ(CodeOf([&] { image.Invert(); }), 37u);
    EXPECT_EQ(CodeOf([&] { image.NewResizedImage(2, 2, nullptr); }), 37u);
    NvRect bounds;
    EXPECT_DEATH(image.ReadRGB(all, data, 3, {}), "\"0\"");
    EXPECT_DEATH(image.FindContentBounds(bounds), "\"0\"");
    EXPECT_DEATH(image.Combine(NvBitmapImage(1, 1), NvMaskRule::km_Both), "\"0\"");
    EXPECT_DEATH(image.MapToTable(nullptr, nullptr), "\"0\"");
}

TEST(Buffer, HoldsMemoryThatDoesNotMoveBetweenAllocateAndFree) {
    NvBuffer buffer;
    EXPECT_FALSE(buffer.IsAllocated());
    buffer.Allocate(100);
    EXPECT_EQ(buffer.GetSize(), 100u);
    EXPECT_FALSE(buffer.Clone()->IsAllocated());
    std::uint8_t* const outer = buffer.Lock();
    {
        const NvBufferLocker inner(buffer);
        EXPECT_EQ(inner.Get(), outer);
    }
    EXPECT_TRUE(buffer.IsLocked());
    buffer.Unlock();
    EXPECT_FALSE(buffer.IsLocked());
    buffer.Free();
    EXPECT_FALSE(buffer.IsAllocated());
    EXPECT_EQ(buffer.GetSize(), 0u);

    buffer.Allocate(0);
    const NvBufferLocker nothing(buffer);
    ASSERT_NE(nothing.Get(), nullptr);
    *nothing.Get() = 1;
}

TEST(Buffer, MisuseIsOurMistake) {
    NvBuffer buffer;
    EXPECT_EQ(CodeOf([&] { buffer.Lock(); }), 27u);
    EXPECT_FALSE(buffer.IsLocked()) << "a failed lock does not count";
    EXPECT_DEATH(buffer.Free(), "mAllocatedFlag");
    buffer.Allocate(8);
    EXPECT_DEATH(buffer.Unlock(), "mLockCount");
    EXPECT_DEATH(buffer.Allocate(8), "!mAllocatedFlag");
    const NvBufferLocker locker(buffer);
    EXPECT_DEATH(buffer.Free(), "mLockCount == 0");
}

} // namespace
