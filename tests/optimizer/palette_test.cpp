// The palette: few colours stay exact, many are reduced within the limits, and no step changes what is drawn.

#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/colours/pvframecolours.h"
#include "win/optimizer/colours/pvpalette.h"
#include "win/optimizer/colours/pvsimilar.h"
#include "win/optimizer/colours/pvtableplan.h"

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

/** Has the frames show what became of their colours. */
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

/** Merges near colours of a still. */
PvFrameColours MergeSimilar(const TestGIF& inGIF, double& outError) {
    const auto animation = MakeAnimation(inGIF);
    std::vector<PvFrameColours> colours = ColoursOf(*animation);
    std::vector<std::unique_ptr<NvGIFFrame>> tried;
    tried.push_back(CloneFrame(animation->GetFrame(0)));
    outError = MergeSimilarFrameColours(colours, tried);
    return colours[0];
}

std::size_t CountColors(const TestFrame& inFrame) {
    std::set<std::uint8_t> used(inFrame.mPixels.begin(), inFrame.mPixels.end());
    if (inFrame.mTransparent >= 0)
        used.erase(static_cast<std::uint8_t>(inFrame.mTransparent));
    return used.size();
}

TEST(Palette, LimitsHoldInEveryModeAndTheErrorIsTold) {
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

TEST(Palette, ColoursThatFitStayExactAndThoseThatNoPixelShowsTakeNoRoom) {
    TestGIF gif = NoiseMovie(1, 200, 6);
    for (std::uint8_t& pixel : gif.mFrames[0].mPixels)
        pixel = static_cast<std::uint8_t>(pixel % 101);
    gif.mFrames[0].mTransparent = 100;
    const auto animation = MakeAnimation(gif);
    EXPECT_EQ(BuildPalette(*animation), 0.0);
    EXPECT_EQ(animation->mInfo->mColorTable.GetSize(), 101u) << "100 colours and a transparent entry";
    ExpectTheSameIsShown(gif, Describe(*animation));
}

TEST(Palette, NearColoursMergeIntoTheirMean) {
    TestGIF gif = Movie({Picture("0001123456..")});
    gif.mTable = {0x646464, 0x666664, 0x6A6464, 0xFF0000, 0x646464, 0xFF0008, 0x00FF00};
    gif.mTable.resize(16, 0x0000FF); // also the colour under the undrawn pixels
    double error = 0.0;
    const PvFrameColours merged = MergeSimilar(gif, error);
    EXPECT_NEAR(error, 12 / 30.0, 1e-9);
    // The most used colour leads; entries 1 and 4 are near it, entry 2 is not.
    EXPECT_THAT(std::vector(merged.mMap.begin(), merged.mMap.begin() + 7),
                testing::ElementsAre(0, 0, 1, 2, 0, 3, 4));
    EXPECT_EQ(merged.mTable.GetSize(), 5u);
    EXPECT_EQ(NvPackColor(merged.mTable.GetColor(0)), NvPackColor({101, 101, 100}));
}

TEST(Palette, ColoursFurtherApartMergeWhereThatSavesMoreThanItShows) {
    for (const std::uint32_t size : {8u, 128u}) {
        SCOPED_TRACE(size);
        TestGIF gif = Movie({Textured(TestTexture::km_Noise, size, 2, 1)});
        gif.mTable = {0x646464, 0x666666};
        double error = 0.0;
        EXPECT_EQ(MergeSimilar(gif, error).mTable.GetSize(), size == 128 ? 1u : 2u);
    }
}

// Levels that are next to each other merge unseen; four at a time, as in texture, would be bands.
TEST(Palette, SoftShadingDoesNotTurnIntoBands) {
    constexpr std::uint32_t km_Levels = 200;
    const auto countMerged = [](const auto& inLevel) {
        TestGIF gif = Movie({Paint(4 * km_Levels, 100, inLevel)});
        gif.mTable = Greys(256);
        double error = 0.0;
        return MergeSimilar(gif, error).mTable.GetSize();
    };
    EXPECT_EQ(countMerged([](std::uint32_t x, std::uint32_t) { return x / 4; }), km_Levels / 2);
    EXPECT_LT(countMerged([](std::uint32_t x, std::uint32_t y) {
                  return (x * 7919 + y * 104729 + x * y) % km_Levels;
              }),
              km_Levels / 3);
}

TEST(Palette, OneTableFitsSoManyColoursOfAllFramesAndOfEach) {
    const auto fits = [](const TestGIF& inGIF) {
        return PvFitsPalette(ColoursOf(*MakeAnimation(inGIF)), PvPaletteMode::km_Normal);
    };
    TestGIF gif = Movie({Paint(120, 1, [](std::uint32_t x, std::uint32_t) { return x; }),
                         Paint(120, 1, [](std::uint32_t x, std::uint32_t) { return x + 8; })});
    gif.mTable = Greys(256);
    EXPECT_TRUE(fits(gif)) << "128 in all, 120 each";
    gif.mFrames[1].mPixels.front() = 128;
    EXPECT_FALSE(fits(gif)) << "129 in all";
    gif.mFrames.resize(1);
    EXPECT_TRUE(fits(gif));
    gif = Movie({Paint(121, 1, [](std::uint32_t x, std::uint32_t) { return x; })});
    gif.mTable = Greys(256);
    EXPECT_FALSE(fits(gif)) << "121 in a frame";
}

TEST(Palette, ARepeatedColourGoesToItsFirstOccurrence) {
    TestGIF gif = Movie({Picture("0123456789ab"), Picture("9a9b")});
    gif.mTable[9] = gif.mTable[3];
    gif.mFrames[1].mTransparent = 11;
    const auto animation = MakeAnimation(gif);
    std::vector<PvFrameColours> colours = ColoursOf(*animation);
    NvColorTable merged = animation->mInfo->mColorTable;
    MergeDuplicateColours(colours, merged);
    UseColours(*animation, colours, merged, 16);
    EXPECT_EQ(Rows(animation->GetFrame(0)), "01234567839a");
    EXPECT_EQ(Rows(animation->GetFrame(1)), "393.");
    TestTable expected = gif.mTable;
    expected.erase(expected.begin() + 9);
    EXPECT_EQ(Describe(*animation).mTable, expected);
}

/** The animation with the tables that are planned for it. */
TestGIF WithPlannedTables(const TestAnimation& inAnimation, std::uint32_t inLimit) {
    const auto packed = inAnimation.Pack();
    PvTablePlan plan = PvPlanSharedTable(*packed, inAnimation.mInfo->mColorTable, inLimit);
    TestAnimation result(inAnimation.mInfo, inAnimation.mWidth, inAnimation.mHeight);
    result.mInfo->mColorTable = plan.mShared; // written ahead of the frames, which may add nothing to it
    for (std::uint32_t i = 0; i < packed->GetFrameCount(); ++i)
        result.mFrames.push_back(plan.MakeFrame(*packed, i));
    return Describe(result);
}

TEST(Palette, SharedTableIsOrderedByFramesThenPixelsAndUnusedColoursGo) {
    const TestGIF gif = Movie({Picture("44447"), Picture("7955555"), Picture("9.7"), Picture("7")});
    const TestGIF result = WithPlannedTables(*MakeAnimation(gif), 128);
    EXPECT_EQ(result.mTable, (TestTable{gif.mTable[7], gif.mTable[9], gif.mTable[5], gif.mTable[4]}));
    EXPECT_EQ(CompareGIFs(gif, result).mDiffering, 0u);
    EXPECT_EQ(result.mFrames[2].mTransparent, 2) << "the lowest free index";
}

TEST(Palette, UndrawnPixelsGetAnEntryMoreOrThatOfTheCheapestColour) {
    const TestGIF gif = Movie({Picture("0112"), Picture("0.12")});
    const TestGIF larger = WithPlannedTables(*MakeAnimation(gif), 128);
    EXPECT_EQ(larger.mTable.size(), 4u);
    EXPECT_EQ(larger.mFrames[1].mTransparent, 3);
    EXPECT_EQ(CompareGIFs(gif, larger).mDiffering, 0u);
    EXPECT_EQ(WithPlannedTables(*MakeAnimation(gif), 3).mTable.size(), 3u);
}

TEST(Palette, BackgroundIsTheNearestEntryTheLowestOfEquals) {
    const struct {
        TestTable mTable;
        NvColor mBackground;
        std::uint8_t mIndex;
        TestTable mResult;
    } cases[] = {
        {{0x000000, 0xFF0000, 0xFF0000}, {250, 0, 0}, 1, {0x000000, 0xFF0000, 0xFF0000}},
        {{0x000004, 0x000000}, {0, 0, 2}, 0, {0x000004, 0x000000}},
        {{}, {1, 2, 3}, 0, {0x010203, 0x010203}},
    };
    for (const auto& [table, background, index, result] : cases) {
        TestGIF gif = Movie({Picture("0")});
        gif.mFrames[0].mLocalTable = Greys(2);
        gif.mTable = table;
        gif.mBackground = 77;
        const auto animation = MakeAnimation(gif);
        RestoreBackgroundIndex(*animation->mInfo, background);
        const TestGIF described = Describe(*animation);
        EXPECT_EQ(described.mTable, result);
        EXPECT_EQ(described.mBackground, index);
    }
}

} // namespace
