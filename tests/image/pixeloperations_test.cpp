// Operations on raw pixels: resampling, other layouts, mirroring.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "nvcode2/base/nvprogressindicator.h"
#include "nvcode2/image/nvblit.h"
#include "nvcode2/image/nvflip.h"
#include "nvcode2/image/nvimage.h"
#include "nvcode2/image/nvmakeinvcolormap.h"
#include "nvcode2/image/nvresize.h"
#include "nvcode2/image/nvrgbimage.h"
#include "tests/image/images.h"
#include "tests/support/codeof.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

struct Size {
    std::uint32_t width, height;
};

Bytes Resize(const Bytes& inPixels, Size inSize, Size inNewSize, std::uint32_t inChannels) {
    Bytes result(std::size_t{inNewSize.width} * inNewSize.height * inChannels, 77);
    NvResizeChannels(inPixels.data(), result.data(), inChannels, inChannels, inChannels,
                     inSize.width * inChannels, inNewSize.width * inChannels, inSize.width, inSize.height,
                     inNewSize.width, inNewSize.height);
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

TEST(Resize, FlatStaysFlatAndTheSameSizeTheSame) {
    for (const auto& [size, newSize] : std::vector<std::pair<Size, Size>>{
             {{301, 7}, {300, 5}}, {{1, 1}, {2000, 3}}, {{2, 3}, {999, 1}}, {{1021, 2}, {7, 1000}}}) {
        for (const std::uint8_t level : {std::uint8_t{1}, std::uint8_t{128}, std::uint8_t{255}}) {
            const Bytes flat(std::size_t{size.width} * size.height * 3, level);
            EXPECT_THAT(Resize(flat, size, newSize, 3), Each(level));
        }
    }
    const Bytes pixels{1, 200, 3, 4, 50, 6};
    EXPECT_EQ(Resize(pixels, {3, 2}, {3, 2}, 1), pixels);
    EXPECT_THAT(Resize({0, 10, 20, 30}, {4, 1}, {2, 1}, 1), ElementsAre(5, 25));
    EXPECT_THAT(Resize({0, 90}, {2, 1}, {3, 1}, 1), ElementsAre(0, 45, 90));
}

TEST(Resize, TouchesTheResampledChannelsOnly) {
    const Bytes rgba{10, 20, 30, 40};
    Bytes out(5, 77);
    NvResizeRGB(rgba.data(), out.data(), 4, 5, 4, 5, 1, 1, 1, 1);
    EXPECT_THAT(out, ElementsAre(10, 20, 30, 77, 77));
    NvResizeChannels(rgba.data(), out.data(), 4, 5, 1, 4, 5, 1, 1, 0, 1);
    EXPECT_THAT(out, ElementsAre(10, 20, 30, 77, 77)) << "no output pixel";
    EXPECT_DEATH(NvResizeRGB(rgba.data(), out.data(), 2, 3, 4, 5, 1, 1, 1, 1),
                 "inChannels >= 3 && outChannels >= 3");
    EXPECT_DEATH(NvResizeChannels(rgba.data(), out.data(), 4, 2, 3, 4, 5, 1, 1, 1, 1),
                 "calcChannels <= inChannels && calcChannels <= outChannels");
    EXPECT_DEATH(NvResizeChannels(nullptr, out.data(), 1, 1, 1, 1, 1, 1, 1, 1, 1), "inPixelPtr");
    EXPECT_DEATH(NvResizeChannels(rgba.data(), out.data(), 1, 1, 1, 0, 1, 1, 1, 1, 1),
                 "inRowBytes .. !.inWidth && inHeight .");
}

TEST(Resize, IndicesAverageTheirColours) {
    const NvIndexedImage image =
        MakeIndexedRow({0, 2, 1, 1}, MakeTable({km_Black, km_Red, km_White, {128, 128, 128}}));
    const auto half = image.NewResizedImage(2, 1, nullptr);
    EXPECT_THAT(BytesOf(static_cast<const NvIndexedImage&>(*half)), ElementsAre(3, 1));
    const auto doubled = image.NewResizedImage(8, 1, nullptr);
    EXPECT_THAT(BytesOf(static_cast<const NvIndexedImage&>(*doubled)), ElementsAre(0, 0, 2, 2, 1, 1, 1, 1));
}

class StopAfter : public NvProgressIndicator {
public:
    explicit StopAfter(std::uint32_t inSteps) : mSteps(inSteps) {}
    bool Progress(std::uint32_t inDone, std::uint32_t inTotal) override {
        mTotal = inTotal;
        mLast = inDone;
        return inDone < mSteps;
    }
    std::uint32_t mSteps;
    std::uint32_t mLast = 0;
    std::uint32_t mTotal = 0;
};

TEST(Resize, ReportsItsRowsAndCanBeStopped) {
    const NvRGBImage image(10, 10);
    StopAfter never(1000);
    EXPECT_NE(image.NewResizedImage(200, 30, &never), nullptr);
    EXPECT_EQ(never.mLast, never.mTotal);
    StopAfter early(7);
    EXPECT_EQ(CodeOf([&] { image.NewResizedImage(200, 30, &early); }), 3u);
    EXPECT_EQ(early.mLast, 7u);
    EXPECT_FALSE(image.IsLocked());
}

TEST(Blit, Converts555WithItsBlueRule) {
    constexpr struct {
        unsigned pixel;
        std::uint8_t red, green, blue;
    } km_Cases[] = {
        {0x7FFF, 255, 255, 255}, {0x001F, 0, 0, 0xFF}, {0x0010, 0, 0, 0x80}, {0x0013, 0, 0, 0x9B},
        {0x4000, 0x84, 0, 0},    {0x0200, 0, 0x84, 0}, {0x8000, 0, 0, 0},    {0x0001, 0, 0, 9},
    };
    for (const auto& test : km_Cases) {
        const Bytes source{static_cast<std::uint8_t>(test.pixel), static_cast<std::uint8_t>(test.pixel >> 8)};
        Bytes dest(4, 77);
        NvConvert555ToRGB(source.data(), 2, dest.data(), 4, 1, 1, 4);
        EXPECT_THAT(dest, ElementsAre(test.red, test.green, test.blue, 77)) << std::hex << test.pixel;
    }
    EXPECT_DEATH(NvConvert555ToRGB(nullptr, 0, nullptr, 0, 0, 0, 2), "outPixelBytes >= 3");
}

/** A converter of rows, and two rows of its source and result with a byte between the rows. */
struct RowCase {
    const char* what;
    std::function<void(const std::uint8_t*, std::uint32_t, std::uint8_t*, std::uint32_t, std::uint32_t,
                       std::uint32_t)>
        convert;
    std::uint32_t width, sourceRowBytes, destRowBytes;
    Bytes source, expected;
};

const RowCase km_RowCases[] = {
    {"4 bytes to 3",
     NvConvert4BytesTo3,
     2,
     9,
     7,
     {1, 2, 3, 4, 5, 6, 7, 8, 0, 11, 12, 13, 14, 15, 16, 17, 18, 0},
     {1, 2, 3, 5, 6, 7, 77, 11, 12, 13, 15, 16, 17, 77}},
    {"16 bits to 8",
     NvConvert16BitTo8,
     2,
     5,
     3,
     {0xFF, 1, 0xFF, 2, 0, 0xFF, 3, 0xFF, 4, 0},
     {1, 2, 77, 3, 4, 77}},
    {"4 bits to 8", NvConvert4BitTo8, 3, 3, 4, {0x12, 0x3F, 0, 0xAB, 0xCF, 0}, {1, 2, 3, 77, 10, 11, 12, 77}},
};

TEST(Blit, ConvertsRowsAndNothingBesideThem) {
    for (const RowCase& test : km_RowCases) {
        Bytes dest(test.expected.size(), 77);
        test.convert(test.source.data(), test.sourceRowBytes, dest.data(), test.destRowBytes, test.width, 2);
        EXPECT_EQ(dest, test.expected) << test.what;
        test.convert(nullptr, 0, nullptr, 0, 0, 5);
        test.convert(nullptr, 1, nullptr, 1, 5, 0);
        EXPECT_DEATH(test.convert(nullptr, 1, nullptr, 1, 1, 1), "inSrcPtr && inDstPtr") << test.what;
        EXPECT_DEATH(test.convert(dest.data(), 0, dest.data(), 1, 1, 1), "inSrcRowBytes && inDstRowBytes");
    }
}

TEST(Blit, ConvertsRunsOfSamples) {
    const Bytes nibbles{0x12, 0x3F};
    std::vector<std::uint16_t> words(4, 777);
    NvConvert4BitTo16(nibbles.data(), words.data(), 3);
    EXPECT_THAT(words, ElementsAre(1, 2, 3, 777));

    const Bytes planes{1, 2, 3, 11, 12, 13, 21, 22, 23};
    Bytes rgb(9);
    NvInterleavePlanes(planes.data(), rgb.data(), 3);
    EXPECT_THAT(rgb, ElementsAre(1, 11, 21, 2, 12, 22, 3, 13, 23));
}

TEST(Blit, ClosesTheGapsOfDroppedChannels) {
    Bytes pixels{1, 2, 3, 4, 5, 6, 7, 8};
    NvKeepChannels(pixels.data(), 2, 4, 3);
    pixels.resize(6);
    EXPECT_THAT(pixels, ElementsAre(1, 2, 3, 5, 6, 7));
    NvKeepChannels(pixels.data(), 2, 3, 3);
    NvKeepChannels(pixels.data(), 2, 3, 9);
    EXPECT_THAT(pixels, ElementsAre(1, 2, 3, 5, 6, 7)) << "there are no more to drop";

    struct {
        std::uint32_t channel;
        Bytes expected;
    } const km_Cases[] = {{0, {2, 3, 5, 6}}, {1, {1, 3, 4, 6}}, {2, {1, 2, 4, 5}}};
    for (const auto& test : km_Cases) {
        Bytes rgb{1, 2, 3, 4, 5, 6};
        NvDropChannel(rgb.data(), 2, 3, test.channel);
        rgb.resize(4);
        EXPECT_EQ(rgb, test.expected) << test.channel;
    }
}

TEST(Blit, ChangesRowsInPlace) {
    Bytes pixels{1, 2, 3, 4, 99, 5, 6, 7, 8, 99};
    NvSwapChannels(pixels.data(), 5, 2, 2, 2, 0, 1);
    EXPECT_THAT(pixels, ElementsAre(2, 1, 4, 3, 99, 6, 5, 8, 7, 99));
    NvInvert(pixels.data(), 5, 4, 2);
    EXPECT_THAT(pixels, ElementsAre(253, 254, 251, 252, 99, 249, 250, 247, 248, 99));
    EXPECT_DEATH(NvSwapChannels(pixels.data(), 5, 2, 2, 2, 0, 2), "inChannelB < inChannels");
}

TEST(Blit, CopiesChannelsBetweenPixelsOfDifferentSize) {
    const Bytes rgb{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}; // 2 x 2
    const NvRect all{0, 0, 2, 2};
    Bytes two(8);
    NvCopyFromChannels(rgb.data(), 6, all, 3, 1, two.data(), 4, all, 2, 8);
    EXPECT_THAT(two, ElementsAre(2, 3, 5, 6, 8, 9, 11, 12));

    Bytes wide(12, 77);
    NvCopyIntoChannels(two.data(), 4, {1, 0, 2, 2}, 2, wide.data(), 6, {0, 0, 1, 2}, 3, 1, 8);
    EXPECT_THAT(wide, ElementsAre(77, 5, 6, 77, 77, 77, 77, 11, 12, 77, 77, 77));

    Bytes words(4);
    NvCopyFromChannels(rgb.data(), 8, {1, 0, 2, 1}, 2, 1, words.data(), 4, {1, 0, 2, 1}, 1, 16);
    EXPECT_THAT(words, ElementsAre(0, 0, 7, 8)) << "channels of two bytes";

    EXPECT_DEATH(NvCopyFromChannels(rgb.data(), 6, all, 3, 2, two.data(), 4, all, 2, 8),
                 "inDstChannels . inSrcIndex. <= inSrcChannels");
    EXPECT_DEATH(NvCopyIntoChannels(two.data(), 4, all, 2, wide.data(), 6, all, 3, 2, 8),
                 "inSrcChannels . inDstIndex. <= inDstChannels");
    EXPECT_DEATH(NvCopyRect(rgb.data(), 6, all, two.data(), 4, {0, 0, 1, 2}, 1, 8),
                 "inSrcRect.right - inSrcRect.left. == .inDstRect.right - inDstRect.left");
}

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
