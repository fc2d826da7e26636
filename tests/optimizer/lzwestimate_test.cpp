// The estimate is the plain encoder's count of bits, whatever the frame.

#include <gtest/gtest.h>

#include "tests/support/codeof.h"
#include "tests/support/randomgif.h"
#include "tests/support/swapreference.h"
#include "win/pvlzwestimate.h"

namespace {

std::uint64_t Estimate(PvLZWEstimator& ioEstimator, const SwapReference& inFrame) {
    return ioEstimator.EstimateLZWSize(inFrame.mPixels.data(), inFrame.mWidth, inFrame.mHeight,
                                       inFrame.mWidth, static_cast<std::uint32_t>(inFrame.mColors.size()),
                                       inFrame.mInterlaced);
}

TEST(LZWEstimate, CountsTheBitsOfEveryKindOfFrame) {
    PvLZWEstimator estimator; // one for all, as the program uses it
    TestRandom random(1);
    for (std::uint32_t bits = 1; bits <= 8; ++bits)
        for (std::uint32_t texture = 0; texture < km_TextureCount; ++texture)
            for (const std::uint32_t limit : {8u, 60u, 150u}) {
                SwapReference frame;
                frame.mWidth = 1 + random.Below(limit);
                frame.mHeight = 1 + random.Below(limit);
                frame.mInterlaced = random.Chance(50);
                frame.mColors.resize(bits == 1 ? 1 + random.Below(2)
                                               : (1U << (bits - 1)) + 1 + random.Below(1U << (bits - 1)));
                const auto colors = static_cast<std::uint32_t>(frame.mColors.size());
                frame.mPixels = RandomPixels(random, static_cast<TestTexture>(texture), frame.mWidth,
                                             frame.mHeight, colors);
                EXPECT_EQ(Estimate(estimator, frame), frame.Estimate())
                    << colors << " colours, texture " << texture << ", " << frame.mWidth << " x "
                    << frame.mHeight;
            }
}

// Noise of 256 colours fills the table every 3,838 strings, a few more pixels, where one pixel decides on a
// clear.
TEST(LZWEstimate, CountsTheBitsAroundAFullTable) {
    PvLZWEstimator estimator;
    TestRandom random(2);
    const auto pixels = RandomPixels(random, TestTexture::km_Noise, 8200, 1, 256);
    SwapReference frame;
    frame.mHeight = 1;
    frame.mColors.resize(256);
    for (const std::uint32_t start : {3850u, 7750u})
        for (frame.mWidth = start; frame.mWidth < start + 250; ++frame.mWidth) {
            frame.mPixels.assign(pixels.begin(), pixels.begin() + frame.mWidth);
            ASSERT_EQ(Estimate(estimator, frame), frame.Estimate()) << frame.mWidth;
        }
}

TEST(LZWEstimate, RowsMayLieApartAndNoTableHasZeroOr257Colours) {
    PvLZWEstimator estimator;
    const std::vector<std::uint8_t> apart = {0, 1, 9, 9, 1, 0, 9, 9, 0, 1, 9, 9};
    const std::vector<std::uint8_t> together = {0, 1, 1, 0, 0, 1};
    EXPECT_EQ(estimator.EstimateLZWSize(apart.data(), 2, 3, 4, 2, false),
              estimator.EstimateLZWSize(together.data(), 2, 3, 2, 2, false));
    for (const std::uint32_t count : {0u, 257u})
        EXPECT_EQ(CodeOf([&] { estimator.EstimateLZWSize(apart.data(), 1, 1, 1, count, false); }), 21u);
}

} // namespace
