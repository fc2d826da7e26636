#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "nvcode2/image/nvimageconverter.h"
#include "tests/image/images.h"
#include "tests/support/codeof.h"

namespace {

using testing::ElementsAre;

using Bytes = std::vector<std::uint8_t>;

NvRGBImage MakeRGB(std::uint32_t inWidth, std::uint32_t inHeight, const Bytes& inBytes) {
    NvRGBImage image(inWidth, inHeight);
    SetBytes(image, inBytes);
    return image;
}

TEST(Transfer, MaskedWritesChangeExactlyTheSetPixels) {
    std::mt19937 random(12);
    const NvRGBLayout km_Layouts[] = {{4, 1, 2, 3}, {3, 0, 1, 2}, {3, 2, 1, 0}, {5, 4, 0, 2}};
    for (const NvRGBLayout& layout : km_Layouts) {
        for (int round = 0; round < 20; ++round) {
            NvBitmapImage mask(21, 6, static_cast<std::uint8_t>(round % 2));
            FillRandomly(mask, random);
            const auto left = static_cast<std::int32_t>(RandomBelow(random, 10));
            const NvRect part{left, 2, left + 11, 5};
            Bytes colors(3 * 34);
            for (std::uint8_t& byte : colors)
                byte = static_cast<std::uint8_t>(random());
            const std::uint32_t rowBytes = 13 * layout.pixelBytes;
            Bytes dest(rowBytes * 5, 77);
            Bytes expected = dest;
            for (std::uint32_t y = 0; y < 3; ++y) {
                for (std::uint32_t x = 0; x < 11; ++x) {
                    if (!IsSet(mask, x + static_cast<std::uint32_t>(left), y + 2))
                        continue;
                    std::uint8_t* const pixel = &expected[(y + 2) * rowBytes + (x + 1) * layout.pixelBytes];
                    pixel[layout.redIndex] = colors[y * 34 + x * 3];
                    pixel[layout.greenIndex] = colors[y * 34 + x * 3 + 1];
                    pixel[layout.blueIndex] = colors[y * 34 + x * 3 + 2];
                }
            }
            mask.WriteMasked(part, colors.data(), 34, {dest.data(), rowBytes, {1, 2}, layout});
            ASSERT_EQ(dest, expected) << layout.pixelBytes << " bytes a pixel, round " << round;
            EXPECT_FALSE(mask.IsLocked());
        }
    }
    const NvBitmapImage mask(4, 4);
    mask.WriteMasked({0, 3, 4, 3}, nullptr, 0, {});
    mask.WriteMasked({2, 0, 2, 4}, nullptr, 0, {});
}

TEST(Transfer, BlendsRoundStepsAlikeInBothDirections) {
    const NvBitmapImage mask(1, 1, 0, 1);
    constexpr struct {
        double opacity;
        std::uint8_t dest, source, expected;
    } km_Cases[] = {
        {0.0, 10, 200, 10},  {1.0, 10, 200, 200}, {1.0, 200, 10, 10}, {0.5, 10, 13, 12},
        {0.5, 13, 10, 11},   {0.5, 0, 255, 128},  {0.5, 255, 0, 127}, {0.25, 100, 101, 100},
        {-3.0, 10, 200, 10}, {7.0, 10, 200, 200}, {0.002, 0, 255, 1}, {0.001, 0, 255, 0},
    };
    for (const auto& test : km_Cases) {
        Bytes dest{test.dest, test.source, 0};
        const Bytes color{test.source, test.source, 0};
        mask.BlendMasked({0, 0, 1, 1}, color.data(), 3, {dest.data(), 3, {0, 0}, {}}, test.opacity);
        EXPECT_THAT(dest, ElementsAre(test.expected, test.source, 0))
            << test.opacity << ": " << +test.dest << " to " << +test.source;
    }
    Bytes dest{1, 2, 3};
    NvBitmapImage(1, 1).BlendMasked({0, 0, 1, 1}, dest.data(), 3, {dest.data(), 3, {0, 0}, {}}, 1.0);
    EXPECT_EQ(CodeOf([&] { NvRGBImage(1, 1).WriteMasked({0, 0, 1, 1}, dest.data(), 3, {}); }), 37u);
    EXPECT_EQ(CodeOf([&] { NvRGBImage(1, 1).BlendMasked({0, 0, 1, 1}, dest.data(), 3, {}, 1.0); }), 37u);
}

TEST(Transfer, ReadsColoursToAPoint) {
    const NvRGBImage image = MakeRGB(2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    Bytes dest(16, 77);
    image.ReadColors({1, 0, 2, 2}, {dest.data(), 8, {1, 0}, {4, 3, 1, 0}});
    EXPECT_THAT(dest, ElementsAre(77, 77, 77, 77, 6, 5, 77, 4, 77, 77, 77, 77, 12, 11, 77, 10));

    NvBitmapImage mask(2, 2);
    SetBytes(mask, {0x80, 0xC0});
    dest.assign(16, 77);
    image.ReadMaskedColors({0, 0, 2, 2}, mask, {dest.data(), 8, {0, 0}, {4, 1, 2, 3}});
    EXPECT_THAT(dest, ElementsAre(77, 1, 2, 3, 77, 77, 77, 77, 77, 7, 8, 9, 77, 10, 11, 12));

    const char* const single = "!. .inSourceRect.left >= inSourceRect.right. .. .inSourceRect.top";
    struct {
        const char* what;
        NvRect rect;
        NvPixelTarget target;
    } const km_Bad[] = {
        {"an empty rectangle", {1, 1, 1, 2}, {dest.data(), 8, {0, 0}, {}}},
        {"beyond the image", {1, 1, 3, 2}, {dest.data(), 8, {0, 0}, {}}},
        {"beyond the row", {0, 0, 2, 2}, {dest.data(), 8, {1, 0}, {}}},
        {"channels on one byte", {0, 0, 2, 2}, {dest.data(), 8, {0, 0}, {3, 0, 1, 1}}},
        {"a channel outside the pixel", {0, 0, 2, 2}, {dest.data(), 8, {0, 0}, {3, 0, 1, 3}}},
    };
    for (const auto& test : km_Bad)
        EXPECT_DEATH(image.ReadColors(test.rect, test.target), single) << test.what;
}

TEST(Transfer, MovesSingleChannels) {
    NvRGBImage image = MakeRGB(2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    Bytes plane(4);
    image.ReadChannel(1, image.GetBounds(), plane.data(), 2);
    EXPECT_THAT(plane, ElementsAre(2, 5, 8, 11));
    image.WriteChannel(2, {1, 0, 2, 2}, plane.data(), 2);
    EXPECT_THAT(BytesOf(image), ElementsAre(1, 2, 3, 4, 5, 2, 7, 8, 9, 10, 11, 8));
    image.SwapChannels(0, 1);
    EXPECT_THAT(BytesOf(image), ElementsAre(2, 1, 3, 5, 4, 2, 8, 7, 9, 11, 10, 8));
}

TEST(Transfer, FindsTheBoundsOfContent) {
    NvRect bounds{9, 9, 9, 9};
    EXPECT_FALSE(NvBitmapImage(20, 5).FindContentBounds(bounds));
    EXPECT_EQ(bounds, NvRect());
    EXPECT_FALSE(NvIndexedImage(5, 5, NvColorTable(1)).FindContentBounds(bounds));
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
        mask.Invert();
        mask.SetPolarity(1);
        EXPECT_TRUE(mask.FindContentBounds(bounds));
        ASSERT_EQ(bounds, expected) << "inverted mask, round " << round;
    }
}

TEST(Transfer, CombinesMasksOfAnyPolarity) {
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
    EXPECT_DEATH(NvRGBImage(1, 1).Combine(NvBitmapImage(1, 1), NvMaskRule::km_Both), "\"0\"");
}

TEST(Converter, PixelsGoToTheNearestColour) {
    const NvColorTable table = MakeTable({km_Black, km_Red, km_Green, km_White});
    const NvRGBImage rgb = MakeRGB(3, 1, {255, 250, 255, 200, 0, 0, 9, 0, 0});
    const NvImageConverter converter;
    EXPECT_THAT(BytesOf(converter.ToIndexed(rgb, table)), ElementsAre(3, 1, 0));

    const NvColorTable other = MakeTable({{250, 10, 0}, {240, 240, 240}, {10, 10, 10}, {0, 240, 0}});
    const NvIndexedImage remapped = converter.ToIndexed(MakeIndexedRow({3, 1, 0, 2, 1}, table), other);
    EXPECT_THAT(BytesOf(remapped), ElementsAre(1, 0, 2, 3, 0));
    EXPECT_TRUE(remapped.GetColorTable() == other);
    const NvIndexedImage repeated = MakeIndexedRow({2, 0, 1}, MakeTable({km_Red, km_Blue, km_Red}));
    EXPECT_THAT(BytesOf(converter.ToIndexed(repeated, repeated.GetColorTable())), ElementsAre(2, 0, 1))
        << "its own palette changes nothing";

    NvBitmapImage mask(3, 1, 1);
    SetBytes(mask, {0x40});
    EXPECT_THAT(BytesOf(converter.ToIndexed(mask, MakeTable({km_Red, km_White, km_Black}))),
                ElementsAre(1, 2, 1));
    EXPECT_EQ(converter.ToIndexed(NvRGBImage(), table).GetHeight(), 0u);
}

TEST(Converter, CanBeStopped) {
    class Refuse : public NvProgressIndicator {
        bool Progress(std::uint32_t inDone, std::uint32_t /*inTotal*/) override { return inDone < 2; }
    } refuse;
    EXPECT_EQ(CodeOf([&] { NvImageConverter(&refuse).ToIndexed(NvRGBImage(2, 2), NvColorTable(1)); }), 3u);
}

} // namespace
