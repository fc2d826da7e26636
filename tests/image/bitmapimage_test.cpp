#include "nvcode2/image/nvbitmapimage.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>

#include <gmock/gmock.h>

#include "tests/image/images.h"
#include "tests/support/codeof.h"

namespace {

using testing::Each;
using testing::ElementsAre;

TEST(BitmapImage, TheTopBitIsTheLeftmostPixel) {
    std::array<std::uint8_t, 4> bytes{};
    NvBitmapImage::SetBit(bytes.data(), 2, 0, 0, 1);
    NvBitmapImage::SetBit(bytes.data(), 2, 9, 1, 1);
    EXPECT_THAT(bytes, ElementsAre(0x80, 0, 0, 0x40));
    EXPECT_EQ(NvBitmapImage::GetBit(bytes.data(), 2, 9, 1), 1u);
}

TEST(BitmapImage, ErasesToWhatPolarityAndFillSay) {
    for (const std::uint8_t polarity : {std::uint8_t{0}, std::uint8_t{1}}) {
        for (const std::uint32_t fill : {0u, 1u}) {
            const NvBitmapImage mask(9, 2, polarity, fill);
            EXPECT_THAT(BytesOf(mask), Each(polarity != fill ? 0xFF : 0x00)) << +polarity << ", " << fill;
            EXPECT_EQ(IsSet(mask, 8, 1), fill == 1);
        }
    }
    EXPECT_EQ(CodeOf([] { NvBitmapImage(1, 1, 2); }), 21u);
}

TEST(BitmapImage, SetPixelsReadWhite) {
    NvBitmapImage mask(3, 1);
    SetBytes(mask, {0xA0});
    std::array<std::uint8_t, 6> out{};
    mask.ReadRGB({1, 0, 3, 1}, out.data(), 6, {});
    EXPECT_THAT(out, ElementsAre(0, 0, 0, 255, 255, 255));
    mask.SetPolarity(1);
    const auto copy = mask.CopyRegion({1, 0, 3, 1});
    static_cast<const NvBitmapImage&>(*copy).ReadRGB({0, 0, 2, 1}, out.data(), 6, {});
    EXPECT_THAT(out, ElementsAre(255, 255, 255, 0, 0, 0)) << "a copy keeps the polarity";
}

TEST(BitmapImage, FindsTheBoundsOfContent) {
    NvRect bounds{9, 9, 9, 9};
    EXPECT_FALSE(NvBitmapImage(20, 5).FindContentBounds(bounds));
    EXPECT_EQ(bounds, NvRect());
    EXPECT_TRUE(NvBitmapImage(20, 5, 1, 1).FindContentBounds(bounds));
    EXPECT_EQ(bounds, (NvRect{0, 0, 20, 5})) << "without the padding of the rows";

    std::mt19937 random(31);
    for (int round = 0; round < 300; ++round) {
        const std::uint32_t width = 1 + RandomBelow(random, 30);
        NvIndexedImage image(width, 6, NvColorTable(8));
        image.SetFillIndex(7);
        image.Erase();
        NvRect expected;
        for (std::uint32_t pixels = 1 + RandomBelow(random, 3); pixels > 0; --pixels) {
            const auto x = static_cast<std::int32_t>(RandomBelow(random, width));
            const auto y = static_cast<std::int32_t>(RandomBelow(random, 6));
            NvPixelLock(image).Row(static_cast<std::uint32_t>(y))[x] = 3;
            if (expected.IsEmpty())
                expected = {x, y, x + 1, y + 1};
            expected = {std::min(expected.left, x), std::min(expected.top, y),
                        std::max(expected.right, x + 1), std::max(expected.bottom, y + 1)};
        }
        EXPECT_TRUE(image.FindContentBounds(bounds));
        ASSERT_EQ(bounds, expected) << "round " << round;
        NvBitmapImage mask = image.MakeMask(7);
        EXPECT_TRUE(mask.FindContentBounds(bounds));
        ASSERT_EQ(bounds, expected) << "mask, round " << round;
    }
}

TEST(BitmapImage, CombinesMasksOfAnyPolarity) {
    struct {
        NvMaskRule rule;
        std::uint8_t expected;
    } const km_Cases[] = {
        {NvMaskRule::km_Both, 0b0100}, {NvMaskRule::km_Either, 0b1101}, {NvMaskRule::km_OnlyThis, 0b1000}};
    for (const auto& test : km_Cases) {
        for (int polarities = 0; polarities < 4; ++polarities) {
            const auto make = [](std::uint8_t inSet, bool inFlipped) {
                NvBitmapImage mask(4, 1, inFlipped ? 1 : 0);
                SetBytes(mask, {static_cast<std::uint8_t>((inFlipped ? ~inSet : inSet) << 4)});
                return mask;
            };
            NvBitmapImage mask = make(0b1100, polarities & 1);
            mask.Combine(make(0b0101, polarities & 2), test.rule);
            for (std::uint32_t x = 0; x < 4; ++x)
                EXPECT_EQ(IsSet(mask, x, 0), (test.expected >> (3 - x) & 1) == 1)
                    << polarities << " at " << x;
        }
    }
}

} // namespace
