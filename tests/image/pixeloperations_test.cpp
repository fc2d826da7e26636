// Resampling, and finding the nearest colours.

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

} // namespace
