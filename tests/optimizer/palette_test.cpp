// The palette: few colours stay exact, many are reduced within the limits, and no step changes what is drawn.

#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/colours/pvframecolours.h"
#include "win/optimizer/colours/pvpalette.h"
#include "win/optimizer/colours/pvsimilar.h"

namespace {

/** Full-screen frames of noise, each over a local table of its own. */
TestGIF NoiseMovie(std::uint32_t inFrames, std::uint32_t inColors, std::uint32_t inSeed) {
    TestRandom random(inSeed);
    std::vector<TestFrame> frames;
    for (std::uint32_t i = 0; i < inFrames; ++i) {
        TestFrame frame = Paint(32, 16, [=](auto x, auto y) { return (y * 32 + x) % inColors; });
        for (std::uint32_t at = 0; at < inColors; ++at)
            frame.mLocalTable.push_back(random.Below(0x1000000));
        frames.push_back(frame);
    }
    return Movie(frames);
}

std::vector<PvFrameColours> ColoursOf(const TestAnimation& inAnimation) {
    std::vector<PvFrameColours> colours;
    for (const auto& frame : inAnimation.mFrames)
        colours.emplace_back(*frame);
    return colours;
}

/** Makes the frames show what became of their colours. */
void UseColours(const TestAnimation& inAnimation, const std::vector<PvFrameColours>& inColours,
                const NvColorTable& inShared, std::uint32_t inTableLimit) {
    inAnimation.mInfo->mHasGlobalTable = 1;
    inAnimation.mInfo->mColorTable = inShared;
    for (std::uint32_t i = 0; i < inColours.size(); ++i) {
        NvGIFFrame& frame = inAnimation.GetFrame(i);
        NvQuantRemap(frame.GetImage(), inColours[i].mMap, inShared);
        frame.GetInfo().mHasLocalTable = 0;
        frame.UpdateTransparency(&inAnimation.mInfo->mColorTable, inTableLimit);
    }
}

double BuildPalette(const TestAnimation& inAnimation, PvPaletteMode inMode = PvPaletteMode::km_Normal) {
    TestHost host;
    PvProgress progress(host);
    std::vector<PvFrameColours> colours = ColoursOf(inAnimation);
    const PvSharedPalette palette = BuildGlobalPalette(colours, inMode, progress);
    UseColours(inAnimation, colours, palette.mTable, PvPaletteLimit(inMode));
    return palette.mWorstError;
}

/** Merges near colours of a still. @return how many are left */
std::uint32_t MergeSimilar(const TestGIF& inGIF) {
    const auto animation = MakeAnimation(inGIF);
    std::vector<PvFrameColours> colours = ColoursOf(*animation);
    std::vector<std::unique_ptr<NvGIFFrame>> tried;
    tried.push_back(animation->GetFrame(0).Copy());
    MergeSimilarFrameColours(colours, tried);
    return colours[0].mTable.GetSize();
}

std::size_t CountColors(const TestFrame& inFrame) {
    std::set<std::uint8_t> used(inFrame.mPixels.begin(), inFrame.mPixels.end());
    if (inFrame.mTransparent >= 0)
        used.erase(static_cast<std::uint8_t>(inFrame.mTransparent));
    return used.size();
}

TEST(Palette, LimitsHoldInEveryModeAndTheErrorIsReported) {
    const struct {
        PvPaletteMode mMode;
        std::uint32_t mShared;
        std::uint32_t mPerFrame;
    } cases[] = {{PvPaletteMode::km_Full, 256, 256},
                 {PvPaletteMode::km_Normal, 128, 120},
                 {PvPaletteMode::km_Strong, 64, 60}};
    for (const auto& [mode, shared, perFrame] : cases)
        for (const std::uint32_t frames : {1u, 3u}) {
            const TestGIF gif = NoiseMovie(frames, 256, frames);
            const auto animation = MakeAnimation(gif);
            const double error = BuildPalette(*animation, mode);
            const TestGIF result = Describe(*animation);
            EXPECT_EQ(result.mTable.size(), shared);
            for (const TestFrame& frame : result.mFrames) {
                EXPECT_TRUE(frame.mLocalTable.empty());
                EXPECT_LE(CountColors(frame), perFrame);
            }
            EXPECT_NEAR(CompareGIFs(gif, result).mWorstMean, error, 1e-9);
            EXPECT_EQ(error == 0.0, mode == PvPaletteMode::km_Full && frames == 1);
        }
}

// Neighbouring levels merge unseen; merging four at a time, as in texture, would make bands.
TEST(Palette, SoftShadingDoesNotTurnIntoBands) {
    constexpr std::uint32_t km_Levels = 200;
    const auto countMerged = [](const auto& inLevel) {
        TestGIF gif = Movie({Paint(4 * km_Levels, 100, inLevel)});
        gif.mTable = Greys(256);
        return MergeSimilar(gif);
    };
    EXPECT_EQ(countMerged([](std::uint32_t x, std::uint32_t) { return x / 4; }), km_Levels / 2);
    EXPECT_LT(countMerged([](std::uint32_t x, std::uint32_t y) {
                  return (x * 7919 + y * 104729 + x * y) % km_Levels;
              }),
              km_Levels / 3);
}

} // namespace
