// Both passes over hundreds of animations with everything the format allows, seen through giflib.

#include <set>

#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"

namespace {

constexpr std::uint32_t km_Seeds = 250;

class WholeRun : public OptimizerTest {};

std::size_t CountColors(const TestGIF& inGIF) {
    std::set<std::uint32_t> colors(inGIF.mTable.begin(), inGIF.mTable.end());
    for (const TestFrame& frame : inGIF.mFrames)
        colors.insert(frame.mLocalTable.begin(), frame.mLocalTable.end());
    return colors.size();
}

/** What may have happened to colours: nearly equal ones merged, the tolerance, pixels that changed places;
 *  with many colours the palette on top. */
void ExpectColoursWithinBounds(const TestGIF& inOriginal, const TestComparison& inComparison) {
    const bool fits = CountColors(inOriginal) <= 120;
    EXPECT_LE(inComparison.mWorstMean, fits ? 2.0 + 28.0 : 2.0 + 28.0 + 20.0);
    EXPECT_LE(inComparison.mWorstChannel, fits ? 2 + 28 + 128 : 255);
}

TEST_F(WholeRun, ResultsLookLikeTheOriginalAndAreNeverLarger) {
    std::uint32_t smaller = 0;
    for (std::uint32_t seed = 0; seed < km_Seeds; ++seed) {
        SCOPED_TRACE(seed);
        const TestGIF original = RandomGIF(seed);
        const std::string bytes = EncodeGIF(original);
        const std::string path = Write(original);
        const std::uint32_t size = Optimize(path);
        EXPECT_FALSE(mOutcome.mLoadError);
        EXPECT_EQ(mOutcome.mGateReason, "");
        EXPECT_EQ(mOutcome.mFrameCount, original.mFrames.size());
        if (size >= bytes.size()) {
            EXPECT_EQ(ReadTestFile(path), bytes);
            continue;
        }
        ++smaller;
        const TestComparison comparison = CompareGIFs(original, ReadGIF(path));
        EXPECT_EQ(comparison.mDifference, "");
        ExpectColoursWithinBounds(original, comparison);
    }
    EXPECT_GT(smaller, km_Seeds * 3 / 4);
    EXPECT_THAT(Names("pictures"), testing::ElementsAre("test.gif"));
    EXPECT_THAT(Names("scratch"), testing::IsEmpty());
}

TEST_F(WholeRun, TheSameFileGivesTheSameBytesAndASecondRunDoesNoHarm) {
    PvOptimizer usedBefore(mPrefs, mHost);
    for (std::uint32_t seed = 1000; seed < 1000 + km_Seeds / 4; ++seed) {
        SCOPED_TRACE(seed);
        const TestGIF original = RandomGIF(seed);
        const std::string path = Write(original);
        const std::string again = Write(original, "pictures/again.gif");
        const std::uint32_t size = Optimize(path);
        const auto originalSize = static_cast<std::uint32_t>(std::filesystem::file_size(again));
        EXPECT_EQ(usedBefore.OptimizeGIFFile(again.c_str(), originalSize), size);
        EXPECT_EQ(ReadTestFile(path), ReadTestFile(again));

        EXPECT_LE(Optimize(path), size);
        EXPECT_EQ(mOutcome.mGateReason, "");
        if (size == originalSize)
            continue;
        const TestComparison comparison = CompareGIFs(original, ReadGIF(path));
        EXPECT_EQ(comparison.mDifference, "");
        ExpectColoursWithinBounds(original, comparison);
    }
}

} // namespace
