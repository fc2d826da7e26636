#include "nvcode2/nvresize.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "nvcode2/nvmakeinvcolormap.h"
#include "nvcode2/nvprogressindicator.h"
#include "nvcode2/nvrgbimage.h"
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

} // namespace
