// The two passes: what they replace, when the backup is made, and that nothing stops them halfway.

#include "nvcode2/gif/nvgiffile.h"
#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/** Pixels may change places unseen, and that saves so much that there are two passes. */
TestGIF Grainy() {
    TestGIF gif = Movie({Textured(TestTexture::km_Noise, 30, 2, 4)});
    gif.mTable = EquallyBright(16);
    return gif;
}

/** Only the second pass can shrink it: flattened, its last frame would have to show the noise again. */
TestGIF OnlyToBeCropped() {
    TestGIF gif = Movie({Textured(TestTexture::km_Noise, 30, 15, 3),
                         Textured(TestTexture::km_Sparse, 30, 1, 4), Picture("3", 7, 7)});
    gif.mFrames[1].mDisposal = 3;
    gif.mFrames[1].mTransparent = 15;
    for (std::size_t i = 0; i < 300; ++i)
        gif.mFrames[1].mPixels[i] = 15;
    return gif;
}

class PassesTest : public OptimizerTest {
protected:
    void ExpectNothingLeftOver() {
        EXPECT_THAT(Names("pictures"), ElementsAre("test.gif"));
        EXPECT_THAT(Names("scratch"), IsEmpty());
    }
};

/** Checks the file when the second pass begins and when a backup is requested. */
class WatchingHost : public TestHost {
public:
    explicit WatchingHost(std::string inPath) : mPath(std::move(inPath)) {}

    void BackupFile(const char* inPath) override {
        mBackupAt = mProgress.back();
        TestHost::BackupFile(inPath);
    }
    bool ReportProgress(double inFraction) override {
        if (inFraction >= km_SecondPass && mSizeBetween == 0)
            mSizeBetween = std::filesystem::file_size(mPath);
        return TestHost::ReportProgress(inFraction);
    }

    static constexpr double km_SecondPass = PvProgress::km_FirstPassChecked;
    std::string mPath;
    double mBackupAt = 0.0;
    std::uintmax_t mSizeBetween = 0;
};

TEST_F(PassesTest, WhenBothPassesReplaceThereIsOneBackupOfTheOriginal) {
    const TestGIF gif = Grainy();
    WatchingHost host(Write(gif));
    const std::string original = EncodeGIF(gif);
    PvOptimizer optimizer(host);
    const std::uint32_t size =
        optimizer.OptimizeGIFFile(host.mPath.c_str(), static_cast<std::uint32_t>(original.size()));
    EXPECT_LT(host.mSizeBetween, original.size());
    EXPECT_LT(size, host.mSizeBetween);
    EXPECT_THAT(host.mBackups, ElementsAre(original));
    EXPECT_TRUE(std::ranges::is_sorted(host.mProgress)) << "progress never goes back";
    EXPECT_LT(host.mProgress.back(), 1.0);
}

TEST_F(PassesTest, TheSecondPassAloneMayReplaceAndMakesTheBackupThen) {
    const TestGIF gif = OnlyToBeCropped();
    WatchingHost host(Write(gif));
    const std::string original = EncodeGIF(gif);
    PvOptimizer optimizer(host);
    EXPECT_LT(optimizer.OptimizeGIFFile(host.mPath.c_str(), static_cast<std::uint32_t>(original.size())),
              original.size());
    EXPECT_EQ(host.mSizeBetween, original.size());
    EXPECT_THAT(host.mBackups, ElementsAre(original));
    EXPECT_GE(host.mBackupAt, WatchingHost::km_SecondPass);
    const TestGIF result = ReadGIF(host.mPath);
    EXPECT_EQ(CompareGIFs(gif, result).mDifference, "");
    EXPECT_EQ(result.mFrames[1].mDisposal, 3u) << "what restores goes on restoring";
}

TEST_F(PassesTest, ASmallChangeBecomesASmallFrameOfNarrowCodes) {
    TestGIF gif;
    gif.mWidth = gif.mHeight = 40;
    gif.mTable = Greys(128);
    gif.mBackground = 70;
    gif.mFrames = {Textured(TestTexture::km_Gradient, 40, 100, 1),
                   Textured(TestTexture::km_Gradient, 40, 100, 1)};
    for (const std::size_t at : {410, 411, 450, 451})
        gif.mFrames[1].mPixels[at] = 90; // light, where the picture is dark
    const std::string path = Write(gif);
    Optimize(path);

    const TestGIF result = ReadGIF(path);
    EXPECT_EQ(CompareGIFs(gif, result).mDifference, "");
    const TestFrame& change = result.mFrames[1];
    EXPECT_EQ(std::to_string(change.mLeft) + "," + std::to_string(change.mTop), "10,10");
    EXPECT_EQ(std::to_string(change.mWidth) + "x" + std::to_string(change.mHeight), "2x2");
    EXPECT_EQ(change.mPixels, std::vector<std::uint8_t>(4, change.mPixels[0]));
    EXPECT_EQ(result.mTable.at(result.mBackground), gif.mTable[70]);

    NvGIFFile file;
    file.Open(NvFileLocator(path.c_str()), NvFile::km_ReadPerm);
    const auto info = file.ReadFrameInfo(1);
    EXPECT_EQ(static_cast<const NvGIFFrameInfo&>(*info).mMinimumCodeSize, 2)
        << "a colour that both frames use stands at the front of the table";
}

TEST_F(PassesTest, StoppedAtAnyMomentTheFileIsTheOriginalOrAWholeResult) {
    const TestGIF gif = Grainy();
    const std::string original = EncodeGIF(gif);
    Optimize(Write(gif));
    const std::size_t reports = mHost.mProgress.size();
    EXPECT_GT(reports, 5u);
    std::size_t cancelled = 0;
    for (std::size_t at = 0; at < reports; ++at) {
        SCOPED_TRACE(at);
        mHost = TestHost();
        mHost.mStopAt = at;
        const std::string path = Write(gif);
        const std::uint32_t code = CodeOf([&] { Optimize(path); });
        EXPECT_EQ(mHost.mProgress.size(), at + 1) << "it stops at once";
        if (code == NvErrorCode::km_Cancelled) {
            ++cancelled;
            EXPECT_EQ(ReadTestFile(path), original);
            EXPECT_THAT(mHost.mBackups, IsEmpty());
        } else {
            EXPECT_EQ(code, 0u) << "the first pass has replaced it already";
            EXPECT_LT(ReadTestFile(path).size(), original.size());
            EXPECT_EQ(CompareGIFs(gif, ReadGIF(path)).mDifference, "");
            EXPECT_GE(mHost.mProgress.back(), 0.75);
        }
        ExpectNothingLeftOver();
    }
    EXPECT_GT(cancelled, reports / 2);
    EXPECT_LT(cancelled, reports);
}

constexpr std::uint32_t km_Seeds = 250;

using WholeRun = OptimizerTest;

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
    PvOptimizer usedBefore(mHost, mSettings);
    for (std::uint32_t seed = 1000; seed < 1000 + km_Seeds / 4; ++seed) {
        SCOPED_TRACE(seed);
        const std::string path = Write(RandomGIF(seed));
        const std::string again = Write(RandomGIF(seed), "pictures/again.gif");
        const std::uint32_t size = Optimize(path);
        const auto originalSize = static_cast<std::uint32_t>(std::filesystem::file_size(again));
        EXPECT_EQ(usedBefore.OptimizeGIFFile(again.c_str(), originalSize), size);
        EXPECT_EQ(ReadTestFile(path), ReadTestFile(again));
        EXPECT_LE(Optimize(path), size);
        EXPECT_EQ(mOutcome.mGateReason, "");
    }
}

} // namespace
