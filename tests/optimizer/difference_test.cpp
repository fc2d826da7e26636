// Differencing: what the screen shows already is not drawn again, within the tolerance and not a level more.

#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/colours/pvpalette.h"
#include "win/optimizer/frames/pvdifference.h"

namespace {

/** Entry 0 is grey 100; 1 to 3 are as far from it as still counts as the same, 4 and 5 a level further; 6 is
 *  22 levels from 1 and 50 from 0; 9 is far from all others. */
const TestTable km_Colors = {0x646464, 0x806464, 0x646480, 0x484848, 0x816464,
                             0x646447, 0x966464, 0x636464, 0x000000, 0xFFFFFF};

void DifferenceFrames(const TestAnimation& inAnimation, std::uint32_t inTolerance,
                      bool inGuardsTears = false) {
    PvDifferencer differencer(inAnimation.mWidth, inAnimation.mHeight, inTolerance, 128, inGuardsTears);
    for (const auto& frame : inAnimation.mFrames) {
        differencer.Difference(*frame);
        frame->UpdateTransparency(inAnimation.GetSharedTableOf(*frame), 128);
    }
}

std::unique_ptr<TestAnimation> Difference(const std::vector<TestFrame>& inFrames) {
    TestGIF gif = Movie(inFrames);
    gif.mTable = km_Colors;
    gif.mTable.resize(16);
    auto animation = MakeAnimation(gif);
    DifferenceFrames(*animation, km_DifferenceTolerance);
    EXPECT_EQ(CompareGIFs(gif, Describe(*animation)).mDifference, "");
    return animation;
}

TEST(Difference, PixelsThatHardlyChangeAreNotDrawnAgain) {
    const struct {
        const char* mName;
        const char* mBefore;
        const char* mNow;
        const char* mExpected;
    } cases[] = {
        {"the same", "000000000", "000000000", "........."},
        {"28 levels away in one channel", "0000", "1212", "...."},
        {"28 in all, darker", "0000", "3333", "...."},
        {"29 away", "0000", "4545", "4545"},
        {"nothing below", "0..0", "0000", ".00."},
        {"undrawn pixels stay undrawn", "0000", "9..9", "9..9"},
        {"a run of one is drawn after all", "000", "909", "909"},
        {"of two", "0000", "9009", "9009"},
        {"but not of three", "00000", "90009", "9...9"},
        {"a run at the end stays", "0000", "9900", "99.."},
        {"runs go on over the end of a row", "000 000", "990 099", "990 099"},
        {"over two of them", "000 000 000", "990 000 099", "99. ... .99"},
        {"the first pixel is never drawn again", "000", "099", ".99"},
        {"nor with its neighbour, who is", "0000", "0099", ".099"},
        {"a run that holds an undrawn pixel", "0000", "9.09", "9.09"},
        {"one that ends with it", "0000", "90.9", "9..9"},
    };
    for (const auto& [name, before, now, expected] : cases) {
        SCOPED_TRACE(name);
        const auto animation = Difference({Picture(before), Picture(now)});
        EXPECT_EQ(Rows(animation->GetFrame(0)), before) << "there is nothing below the first frame";
        EXPECT_EQ(Rows(animation->GetFrame(1)), expected);
    }
}

TEST(Difference, ErrorsNeverAddUpBeyondTheTolerance) {
    for (const int tolerance : {0, 8, 28}) {
        std::size_t differing = 0;
        for (std::uint32_t seed = 0; seed < 200; ++seed) {
            SCOPED_TRACE(seed);
            TestRandom random(seed);
            TestGIF gif;
            gif.mWidth = 1 + random.Below(30);
            gif.mHeight = 1 + random.Below(20);
            gif.mTable = Greys(2 + random.Below(119));
            const auto colors = static_cast<std::uint32_t>(gif.mTable.size());
            for (std::uint32_t i = 0; i < 6; ++i) {
                TestFrame frame;
                frame.mWidth = 1 + random.Below(gif.mWidth);
                frame.mHeight = 1 + random.Below(gif.mHeight);
                frame.mLeft = random.Below(gif.mWidth - frame.mWidth + 1);
                frame.mTop = random.Below(gif.mHeight - frame.mHeight + 1);
                frame.mPixels = RandomPixels(random, static_cast<TestTexture>(random.Below(km_TextureCount)),
                                             frame.mWidth, frame.mHeight, colors);
                frame.mTransparent = random.Chance(50) ? static_cast<int>(random.Below(colors)) : -1;
                frame.mDisposal = random.Below(3);
                gif.mFrames.push_back(frame);
            }
            const auto animation = MakeAnimation(gif);
            DifferenceFrames(*animation, static_cast<std::uint32_t>(tolerance));
            const TestComparison comparison = CompareGIFs(gif, Describe(*animation));
            EXPECT_EQ(comparison.mDifference, "");
            EXPECT_LE(comparison.mWorstChannel, tolerance);
            differing += comparison.mDiffering;
        }
        EXPECT_EQ(differing > 0, tolerance > 0);
    }
}

/** How many pixels of the second of two frames of 30 x 30 greys are drawn under the tear guard. */
template <typename Picture>
std::size_t CountDrawn(Picture inBefore, Picture inNow) {
    TestGIF gif;
    gif.mWidth = gif.mHeight = 30;
    gif.mTable = Greys(256);
    gif.mFrames = {Paint(30, 30, inBefore), Paint(30, 30, inNow)};
    const auto animation = MakeAnimation(gif);
    DifferenceFrames(*animation, km_DifferenceTolerance, true);
    const std::string rows = Rows(animation->GetFrame(1));
    return 30 * 30 + 29 - static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), [](char inPixel) {
               return inPixel == '.' || inPixel == ' ';
           }));
}

TEST(Difference, NothingOfWhatMovedStaysBehind) {
    // A dark square, its rim no further from the ground than the tolerance, uncovers the ground.
    for (const std::uint32_t top : {0u, 11u}) {
        const auto square = [top](std::uint32_t inDark, std::uint32_t inRim) {
            return [=](std::uint32_t x, std::uint32_t y) {
                const bool isInside = x >= 12 && x < 18 && y > top && y < top + 7;
                const bool isRim = !isInside && x >= 11 && x < 19 && y >= top && y < top + 8;
                return isInside ? inDark : isRim ? inRim : 200u;
            };
        };
        EXPECT_EQ(CountDrawn(square(20, 175), square(200, 200)), 8u * 8u);
    }
}

TEST(Difference, AnAreaThatIsMerelyLateStays) {
    const auto block = [](std::uint32_t inGrey) {
        return [=](std::uint32_t x, std::uint32_t y) {
            return x >= 8 && x < 24 && y >= 8 && y < 24 ? inGrey : 100u;
        };
    };
    EXPECT_EQ(CountDrawn(block(150), block(178)), 0u);
    EXPECT_EQ(CountDrawn(block(150), block(179)), 16u * 16u);
}

} // namespace
