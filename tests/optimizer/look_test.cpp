// How results look: structure is kept, and lossless runs change nothing.

#include <cmath>

#include "nvcode2/gif/nvgifplayer.h"
#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/look/pvlook.h"

namespace {

using LookTest = OptimizerTest;

/** A still of greys, each pixel's level by inLevel(x, y). */
template <typename Level>
TestGIF GreyPicture(std::uint32_t inWidth, std::uint32_t inHeight, Level inLevel) {
    TestGIF gif = Movie({Paint(inWidth, inHeight, inLevel)});
    gif.mTable = Greys(256);
    return gif;
}

TEST_F(LookTest, PixelsThatStayedAreNotMeasuredAgain) {
    for (std::uint32_t seed = 300; seed < 340; ++seed) {
        SCOPED_TRACE(seed);
        const TestGIF gif = RandomGIF(seed);
        const std::unique_ptr<TestAnimation> animation = MakeAnimation(gif);
        NvGIFPlayer player(gif.mWidth, gif.mHeight);
        const NvGIFPlayer blank(gif.mWidth, gif.mHeight);
        PvLookMeter meter(gif.mWidth, gif.mHeight);
        for (const auto& frame : animation->mFrames) {
            player.ShowFrame(*frame);
            std::vector<NvGIFPlayer::Columns> changed;
            for (std::uint32_t y = 0; y < gif.mHeight; ++y)
                changed.push_back(player.GetChangedColumns(y));
            const PvFrameLook look = meter.Measure(player, blank, changed);
            const PvFrameLook whole = PvLookMeter(gif.mWidth, gif.mHeight, true).Measure(player, blank);
            EXPECT_EQ(look.mSsim, whole.mSsim);
            EXPECT_EQ(look.mContrastWindows, whole.mContrastWindows);
        }
    }
}

/** Soft stripes that drift over a grey background, a step a frame. */
TestGIF SoftMotion() {
    TestGIF gif;
    for (std::uint32_t i = 0; i < 12; ++i) {
        const TestGIF still = GreyPicture(64, 64, [i](std::uint32_t x, std::uint32_t y) {
            return 128 + std::lround(13.0 * std::sin((x + y / 2 + 2 * i) * 0.35));
        });
        if (i == 0)
            gif = still;
        else
            gif.mFrames.push_back(still.mFrames[0]);
        gif.mFrames.back().mDelay = 5;
    }
    return gif;
}

TEST_F(LookTest, ToleranceGivesWayWhereItWouldTearAPicture) {
    const TestGIF original = SoftMotion();
    const std::string path = Write(original);
    ASSERT_LT(Optimize(path), EncodeGIF(original).size());
    EXPECT_GT(mOutcome.mWorstLook.mContrastSsim, 0.8);
    EXPECT_LT(CompareGIFs(original, ReadGIF(path)).mWorstChannel, 28) << "the whole tolerance tears it";
}

TEST_F(LookTest, LosslessChangesNoDisplayedPixel) {
    mSettings.mIsLossless = true;
    // The second frame changes in every entry there can be, and leaves none for the pixels that stay.
    TestGIF full =
        Movie({Paint(32, 16, [](auto x, auto y) { return y * 32 + x; }),
               Paint(32, 16, [](auto x, auto y) { return y * 32 + x + (y < 4 || y > 11 ? 1 : 0); }),
               Paint(32, 16, [](auto, auto) { return 7; }), Paint(32, 16, [](auto, auto) { return 7; })});
    full.mTable = Greys(256);
    std::vector<TestGIF> originals{full};
    for (std::uint32_t seed = 2000; seed < 2150; ++seed)
        originals.push_back(RandomGIF(seed));
    std::size_t smaller = 0;
    for (const TestGIF& original : originals) {
        SCOPED_TRACE(&original - originals.data());
        const std::string path = Write(original);
        const bool isSmaller = Optimize(path) < EncodeGIF(original).size();
        EXPECT_EQ(mOutcome.mGateReason, "");
        EXPECT_TRUE(isSmaller || &original != originals.data());
        if (!isSmaller)
            continue;
        ++smaller;
        ExpectTheSameIsShown(original, ReadGIF(path));
    }
    EXPECT_GT(smaller, 100u);
}

} // namespace
