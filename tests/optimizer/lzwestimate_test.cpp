// The estimate is the encoder's own count of bits, whatever the frame.

#include <gtest/gtest.h>

#include "nvcode2/nvfile.h"
#include "nvcode2/nvfilewriter.h"
#include "nvcode2/nvinterlace.h"
#include "nvcode2/nvlzwencoder.h"
#include "tests/support/codeof.h"
#include "tests/support/randomgif.h"
#include "tests/support/swapreference.h"
#include "tests/support/testfolder.h"
#include "win/pvlzwestimate.h"

namespace {

struct Frame {
    std::vector<std::uint8_t> mPixels;
    std::uint32_t mWidth;
    std::uint32_t mHeight;
    std::uint32_t mColors;
    bool mInterlaced;
};

/** What the program's encoder makes of a frame. */
std::string Encode(const Frame& inFrame, std::uint8_t inMinimumCodeSize) {
    const TestFolder folder;
    const std::string path = folder / "data";
    NvFile file(path.c_str());
    file.Open(NvFile::km_WritePerm);
    NvFileWriter writer(file);
    LZWEncoder encoder(writer);
    encoder.Begin(inMinimumCodeSize);
    NvForEachRowInFileOrder(inFrame.mHeight, inFrame.mInterlaced, [&](std::uint32_t y) {
        encoder.EncodeRows(&inFrame.mPixels[std::size_t{y} * inFrame.mWidth], inFrame.mWidth, 1, 0);
    });
    encoder.End();
    writer.Flush();
    file.Close();
    return ReadTestFile(path);
}

std::uint64_t Estimate(PvLZWEstimator& ioEstimator, const Frame& inFrame) {
    return ioEstimator.EstimateLZWSize(inFrame.mPixels.data(), inFrame.mWidth, inFrame.mHeight,
                                       inFrame.mWidth, inFrame.mColors, inFrame.mInterlaced);
}

TEST(LZWEstimate, EqualsTheEncodersBitsOnEveryKindOfFrame) {
    PvLZWEstimator estimator; // one for all, as the program uses it
    TestRandom random(1);
    for (std::uint8_t bits = 1; bits <= 8; ++bits)
        for (std::uint32_t texture = 0; texture < km_TextureCount; ++texture)
            for (const std::uint32_t limit : {8u, 60u, 150u}) {
                Frame frame{{}, 1 + random.Below(limit), 1 + random.Below(limit), 0, random.Chance(50)};
                frame.mColors =
                    bits == 1 ? 1 + random.Below(2) : (1U << (bits - 1)) + 1 + random.Below(1U << (bits - 1));
                frame.mPixels = RandomPixels(random, static_cast<TestTexture>(texture), frame.mWidth,
                                             frame.mHeight, frame.mColors);
                EXPECT_EQ(Estimate(estimator, frame), CountLZWBits(Encode(frame, bits)))
                    << frame.mColors << " colours, texture " << texture << ", " << frame.mWidth << " x "
                    << frame.mHeight;
            }
}

TEST(LZWEstimate, EqualsTheEncodersBitsAroundAFullTable) {
    // Noise of 256 colours fills the table every 3,838 strings, a few more pixels, where one pixel decides on
    // a clear.
    PvLZWEstimator estimator;
    TestRandom random(2);
    const auto pixels = RandomPixels(random, TestTexture::km_Noise, 8200, 1, 256);
    SwapReference reference;
    reference.mHeight = 1;
    reference.mColors.resize(256);
    for (const std::uint32_t start : {3850u, 7750u})
        for (std::uint32_t width = start; width < start + 250; ++width) {
            const Frame frame{pixels, width, 1, 256, false};
            reference.mWidth = width;
            reference.mPixels.assign(pixels.begin(), pixels.begin() + width);
            ASSERT_EQ(Estimate(estimator, frame), reference.Estimate()) << width;
        }
    const Frame whole{pixels, 8200, 1, 256, false};
    EXPECT_EQ(Estimate(estimator, whole), CountLZWBits(Encode(whole, 8)));
}

TEST(LZWEstimate, RowsMayLieApart) {
    PvLZWEstimator estimator;
    const std::vector<std::uint8_t> apart = {0, 1, 9, 9, 1, 0, 9, 9, 0, 1, 9, 9};
    const std::vector<std::uint8_t> together = {0, 1, 1, 0, 0, 1};
    EXPECT_EQ(estimator.EstimateLZWSize(apart.data(), 2, 3, 4, 2, false),
              estimator.EstimateLZWSize(together.data(), 2, 3, 2, 2, false));
}

TEST(LZWEstimate, AColourCountThatNoTableHasIsAnError) {
    PvLZWEstimator estimator;
    const std::uint8_t pixel = 0;
    for (const std::uint32_t count : {0u, 257u})
        EXPECT_EQ(CodeOf([&] { estimator.EstimateLZWSize(&pixel, 1, 1, 1, count, false); }), 21u);
}

} // namespace
