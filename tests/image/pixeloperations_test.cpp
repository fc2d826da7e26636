// Operations on raw pixels: resampling, other layouts, mirroring, other colours.

#include "nvcode2/base/nvprogressindicator.h"
#include "nvcode2/image/nvblit.h"
#include "nvcode2/image/nvflip.h"
#include "nvcode2/image/nvimageconverter.h"
#include "nvcode2/image/nvresize.h"
#include "nvcode2/image/nvrgbimage.h"
#include "tests/image/images.h"

namespace {

using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

struct Size {
    std::uint32_t width, height;
};

Bytes Resize(const Bytes& inPixels, Size inSize, Size inNewSize, std::uint32_t inChannels) {
    Bytes result(std::size_t{inNewSize.width} * inNewSize.height * inChannels, 77);
    NvResizeChannels(
        {inPixels.data(), inSize.width * inChannels, inSize.width, inSize.height, inChannels},
        {result.data(), inNewSize.width * inChannels, inNewSize.width, inNewSize.height, inChannels},
        inChannels);
    return result;
}

/** How much of input pixel inPixel output pixel inOut covers, the axis being inSize times inNewSize long. */
std::uint64_t Overlap(std::uint64_t inPixel, std::uint64_t inOut, std::uint64_t inSize,
                      std::uint64_t inNewSize) {
    const std::uint64_t begin = std::max(inPixel * inNewSize, inOut * inSize);
    const std::uint64_t end = std::min((inPixel + 1) * inNewSize, (inOut + 1) * inSize);
    return end > begin ? end - begin : 0;
}

/** The area average of one channel of one output pixel, times the area of an output pixel. */
std::uint64_t ExactSum(const Bytes& inPixels, Size inSize, Size inNewSize, std::uint32_t inChannels,
                       std::uint32_t inX, std::uint32_t inY, std::uint32_t inChannel) {
    std::uint64_t sum = 0;
    for (std::uint32_t y = 0; y < inSize.height; ++y) {
        const std::uint64_t rowWeight = Overlap(y, inY, inSize.height, inNewSize.height);
        for (std::uint32_t x = 0; rowWeight != 0 && x < inSize.width; ++x)
            sum += rowWeight * Overlap(x, inX, inSize.width, inNewSize.width) *
                   inPixels[(std::size_t{y} * inSize.width + x) * inChannels + inChannel];
    }
    return sum;
}

TEST(Resize, IsTheAreaAverageRoundedToNearest) {
    std::mt19937 random(8);
    for (int round = 0; round < 200; ++round) {
        const Size size{1 + RandomBelow(random, 40), 1 + RandomBelow(random, 40)};
        // reaches the second strip of output columns now and then
        const Size newSize{1 + RandomBelow(random, round % 20 == 0 ? 300 : 60), 1 + RandomBelow(random, 40)};
        const std::uint32_t channels = 1 + RandomBelow(random, 5);
        Bytes pixels(std::size_t{size.width} * size.height * channels);
        for (std::uint8_t& byte : pixels)
            byte = RandomBelow(random, 2) ? static_cast<std::uint8_t>(random()) : 255;
        const Bytes result = Resize(pixels, size, newSize, channels);
        const auto area = static_cast<std::int64_t>(std::uint64_t{size.width} * size.height);
        for (std::uint32_t i = 0; i < result.size(); ++i) {
            const std::uint32_t x = i / channels % newSize.width;
            const std::uint32_t y = i / channels / newSize.width;
            const auto sum =
                static_cast<std::int64_t>(ExactSum(pixels, size, newSize, channels, x, y, i % channels));
            ASSERT_LE(2 * std::abs(result[i] * area - sum), area)
                << size.width << "x" << size.height << " to " << newSize.width << "x" << newSize.height
                << ", pixel " << x << "," << y << " channel " << i % channels;
        }
    }
}

TEST(Resize, CanBeStopped) {
    class Refuse : public NvProgressIndicator {
        bool Progress(std::uint32_t inDone, std::uint32_t /*inTotal*/) override { return inDone >= 2; }
    } refuse;
    EXPECT_EQ(CodeOf([&] { NvRGBImage(10, 10).NewResizedImage(200, 30, &refuse); }), 3u);
    EXPECT_EQ(CodeOf([&] { NvImageConverter(&refuse).ToIndexed(NvRGBImage(2, 2), NvColorTable(1)); }), 3u);
}

TEST(Blit, ConvertsOtherLayouts) {
    const Bytes fives{0xFF, 0x7F, 0x13, 0}; // white, and a blue by its own rule
    Bytes rgb(6);
    NvConvert555ToRGB(fives.data(), 4, {rgb.data(), 6, 2, 1, 3});
    EXPECT_THAT(rgb, ElementsAre(255, 255, 255, 0, 0, 0x9B));
    NvConvert4BytesTo3(Bytes{1, 2, 3, 4, 5, 6, 7, 8}.data(), 8, rgb.data(), 6, 2, 1);
    EXPECT_THAT(rgb, ElementsAre(1, 2, 3, 5, 6, 7));
    NvConvert4BitTo8(Bytes{0x12, 0x3F}.data(), 2, rgb.data(), 3, 3, 1);
    EXPECT_THAT(rgb, ElementsAre(1, 2, 3, 5, 6, 7));
    NvInterleavePlanes(Bytes{1, 2, 11, 12, 21, 22}.data(), rgb.data(), 2);
    EXPECT_THAT(rgb, ElementsAre(1, 11, 21, 2, 12, 22));
    NvSwapChannels({rgb.data(), 6, 2, 1, 3}, 0, 2);
    NvInvert(rgb.data(), 6, 2, 1);
    EXPECT_THAT(rgb, ElementsAre(234, 244, 1, 22, 12, 2));
    NvDropChannel(rgb.data(), 2, 3, 1);
    NvKeepChannels(rgb.data(), 2, 2, 1);
    EXPECT_EQ(Bytes(rgb.begin(), rgb.begin() + 2), (Bytes{234, 22}));
}

TEST(Mirror, EveryKindOfImageMirrorsBothWays) {
    std::mt19937 random(6);
    for (std::uint32_t width = 1; width <= 20; ++width) {
        NvBitmapImage mask(width, 2);
        FillRandomly(mask, random);
        const auto mirror = mask.NewHorizontalMirror();
        for (std::uint32_t x = 0; x < width; ++x)
            ASSERT_EQ(IsSet(static_cast<const NvBitmapImage&>(*mirror), x, 1), IsSet(mask, width - 1 - x, 1));
    }
    NvRGBImage image(2, 2);
    SetBytes(image, {1, 2, 3, 4, 5, 6, 11, 12, 13, 14, 15, 16});
    const auto across = image.NewHorizontalMirror();
    EXPECT_THAT(BytesOf(static_cast<const NvRGBImage&>(*across)),
                ElementsAre(4, 5, 6, 1, 2, 3, 14, 15, 16, 11, 12, 13));
    const auto down = image.NewVerticalMirror();
    EXPECT_THAT(BytesOf(static_cast<const NvRGBImage&>(*down)),
                ElementsAre(11, 12, 13, 14, 15, 16, 1, 2, 3, 4, 5, 6));
}

TEST(Converter, PixelsGoToTheNearestColour) {
    const NvColorTable table = MakeTable({km_Black, km_Red, km_Green, km_White});
    NvRGBImage rgb(3, 1);
    SetBytes(rgb, {255, 250, 255, 200, 0, 0, 9, 0, 0});
    const NvImageConverter converter;
    EXPECT_THAT(BytesOf(converter.ToIndexed(rgb, table)), ElementsAre(3, 1, 0));
    const NvColorTable other = MakeTable({{250, 10, 0}, {240, 240, 240}, {10, 10, 10}, {0, 240, 0}});
    EXPECT_THAT(BytesOf(converter.ToIndexed(MakeIndexedRow({3, 1, 0, 2, 1}, table), other)),
                ElementsAre(1, 0, 2, 3, 0));
    NvBitmapImage mask(3, 1, 1);
    SetBytes(mask, {0x40});
    EXPECT_THAT(BytesOf(converter.ToIndexed(mask, other)), ElementsAre(1, 2, 1));
}

TEST(Transfer, ReadsWritesAndBlends) {
    NvRGBImage image(2, 2);
    SetBytes(image, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    Bytes dest(16, 77);
    NvBitmapImage mask(2, 2);
    SetBytes(mask, {0x80, 0x40});
    image.ReadMaskedColors({0, 0, 2, 2}, mask, {dest.data(), 8, {0, 0}, {4, 1, 2, 3}});
    EXPECT_THAT(dest, ElementsAre(77, 1, 2, 3, 77, 77, 77, 77, 77, 77, 77, 77, 77, 10, 11, 12));
    const Bytes colors{0, 100, 255, 9, 9, 9, 9, 9, 9, 255, 10, 0};
    mask.BlendMasked({0, 0, 2, 2}, colors.data(), 6, {dest.data(), 8, {0, 0}, {4, 1, 2, 3}}, 0.5);
    EXPECT_THAT(dest, ElementsAre(77, 0, 51, 129, 77, 77, 77, 77, 77, 77, 77, 77, 77, 133, 10, 6));
    mask.WriteMasked({0, 0, 2, 2}, colors.data(), 6, {dest.data(), 8, {0, 0}, {4, 1, 2, 3}});
    EXPECT_THAT(dest, ElementsAre(77, 0, 100, 255, 77, 77, 77, 77, 77, 77, 77, 77, 77, 255, 10, 0));
    Bytes plane(4);
    image.ReadChannel(1, image.GetBounds(), plane.data(), 2);
    EXPECT_THAT(plane, ElementsAre(2, 5, 8, 11));
    image.WriteChannel(2, {1, 0, 2, 2}, plane.data(), 2);
    EXPECT_THAT(BytesOf(image), ElementsAre(1, 2, 3, 4, 5, 2, 7, 8, 9, 10, 11, 8));
    EXPECT_DEATH(image.ReadColors({1, 1, 3, 2}, {dest.data(), 8, {0, 0}, {}}), "inSourceRect.left");
}

} // namespace
