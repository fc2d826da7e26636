// What the eye judges by: undrawn pixels drawn unseen, structure kept, and a mode that changes nothing.

#include <cmath>

#include "nvcode2/gif/nvgifplayer.h"
#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/codes/pvfill.h"
#include "win/optimizer/codes/pvlzwestimate.h"
#include "win/optimizer/frames/pvdifference.h"
#include "win/optimizer/frames/pvload.h"
#include "win/optimizer/look/pvcanvascomparison.h"
#include "win/optimizer/look/pvlook.h"

namespace {

class LookTest : public OptimizerTest {
protected:
    static std::uint64_t BitsOf(const TestAnimation& inAnimation) {
        NvLZWStringTable strings;
        PvLZWEstimator estimator(strings);
        std::uint64_t bits = 0;
        for (const auto& frame : inAnimation.mFrames)
            bits += estimator.EstimateFrame(*frame);
        return bits;
    }

    /** How two stills of one size look beside each other. */
    static PvFrameLook Compare(const TestGIF& inFirst, const TestGIF& inSecond) {
        NvGIFPlayer first(inFirst.mWidth, inFirst.mHeight);
        NvGIFPlayer second(inFirst.mWidth, inFirst.mHeight);
        first.ShowFrame(MakeAnimation(inFirst)->GetFrame(0));
        second.ShowFrame(MakeAnimation(inSecond)->GetFrame(0));
        PvFrameLook look = PvLookMeter(inFirst.mWidth, inFirst.mHeight).Measure(first, second);
        const PvColourAllowance noAllowance;
        PvCanvasComparison comparison(inFirst.mWidth, inFirst.mHeight, noAllowance);
        for (std::uint32_t y = 0; y < inFirst.mHeight; ++y)
            comparison.Update(first, second, y, {0, inFirst.mWidth});
        comparison.MeasureErrors(look);
        return look;
    }
};

/** A still of greys, each pixel's level by inLevel(x, y). */
template <typename Level>
TestGIF GreyPicture(std::uint32_t inWidth, std::uint32_t inHeight, Level inLevel) {
    TestGIF gif = Movie({Paint(inWidth, inHeight, inLevel)});
    gif.mTable = Greys(256);
    return gif;
}

TEST_F(LookTest, UndrawnPixelsAreDrawnWhereThatIsShorterAndNobodySeesIt) {
    std::uint64_t before = 0;
    std::uint64_t after = 0;
    for (std::uint32_t seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        PvProgress progress(mHost);
        const TestAnimation animation(*LoadAnimation(Write(RandomGIF(seed)).c_str(), UINT64_MAX, progress));
        for (const auto& frame : animation.mFrames)
            PvSettleDisposal(frame->GetInfo());
        const std::vector<TestCanvas> shown = Play(Describe(animation));
        const std::uint64_t bits = BitsOf(animation);
        NvLZWStringTable strings;
        PvUndrawnFiller filler(animation.mWidth, animation.mHeight, strings);
        for (const auto& frame : animation.mFrames)
            filler.FillUndrawnPixels(*frame);
        EXPECT_EQ(Play(Describe(animation)), shown);
        EXPECT_LE(BitsOf(animation), bits);
        before += bits;
        after += BitsOf(animation);
    }
    EXPECT_LT(after, before);
}

TEST_F(LookTest, SimilarityIsOneForTheSameFollowsContrastAndPassesOverFlatShifts) {
    const TestGIF stripes =
        GreyPicture(40, 40, [](std::uint32_t x, std::uint32_t) { return x % 4 < 2 ? 100 : 140; });
    const PvFrameLook same = Compare(stripes, stripes);
    EXPECT_DOUBLE_EQ(same.mSsim, 1.0);
    EXPECT_EQ(same.mMaxError, 0u);
    EXPECT_EQ(same.mContrastWindows, 81u) << "9 by 9 windows of 8 pixels, every 4";

    // Turned into their mean the stripes lose all structure: (2 m m + C1) C2 / ((2 m m + C1) (20^2 + C2)).
    const TestGIF flat = GreyPicture(40, 40, [](std::uint32_t, std::uint32_t) { return 120; });
    const PvFrameLook lost = Compare(stripes, flat);
    EXPECT_NEAR(lost.mSsim, 58.5225 / (400.0 + 58.5225), 1e-9);
    EXPECT_EQ(lost.mMaxError, 20u);
    EXPECT_NEAR(lost.mPsnr, 10.0 * std::log10(255.0 * 255.0 / 400.0), 1e-9);

    const TestGIF lighter = GreyPicture(40, 40, [](std::uint32_t, std::uint32_t) { return 148; });
    const PvFrameLook shift = Compare(flat, lighter);
    EXPECT_EQ(shift.mContrastWindows, 0u);
    EXPECT_LT(shift.mSsim, 1.0);
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

/** Soft stripes that drift over a grey ground, a step a frame. */
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
               Paint(32, 16, [](auto x, auto y) { return y * 32 + x + (y < 8 ? 1 : 0); }),
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
