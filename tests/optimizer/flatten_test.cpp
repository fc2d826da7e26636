// Reading frames for the first pass: those that put back what they covered become such that do not, those
// that are cleared for nothing stay, and nobody sees it.

#include "nvcode2/gif/nvgifframereader.h"
#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/frames/pvframestream.h"
#include "wnatom/wnsystem.h"

namespace {

/** @return the animation as it is read and the error that was told */
std::pair<TestGIF, double> Stream(const TestGIF& inGIF) {
    const TestFolder folder;
    NvGIFFrameReader reader(WriteTestFile(folder / "test.gif", EncodeGIF(inGIF)).c_str(),
                            WnGetUsualMemoryLimit());
    PvFrameStream stream(reader, false);
    TestAnimation animation(reader.ShareGlobalInfo(), reader.GetScreenWidth(), reader.GetScreenHeight());
    while (std::unique_ptr<NvGIFFrame> frame = stream.Next())
        animation.mFrames.push_back(std::move(frame));
    return {Describe(animation), stream.GetFlattenError()};
}

std::vector<std::uint32_t> DisposalsOf(const TestGIF& inGIF) {
    std::vector<std::uint32_t> disposals;
    for (const TestFrame& frame : inGIF.mFrames)
        disposals.push_back(frame.mDisposal);
    return disposals;
}

TEST(Flatten, DisposalsBecomeSimplerAndTheSameIsShown) {
    const auto clearing = [](const char* inRows, std::uint32_t inLeft = 0) {
        return WithDisposal(Picture(inRows, inLeft), 2);
    };
    const TestFrame base = Picture("0000 1111");
    const struct {
        const char* mName;
        TestGIF mGIF;
        std::vector<std::uint32_t> mDisposals;
    } cases[] = {
        {"one over a background",
         Movie({base, WithDisposal(Picture("2", 1), 3), Picture("3", 2)}),
         {1, 1, 1}},
        {"several after each other, in both spellings",
         Movie({base, WithDisposal(Picture("2 3", 0), 3), WithDisposal(Picture("4", 3, 1), 4),
                WithDisposal(Picture("5"), 3), Picture("66")}),
         {1, 1, 1, 1, 1}},
        {"over nothing, so that pixels vanish again",
         Movie({WithDisposal(Picture("222"), 3), WithDisposal(Picture("3", 1, 1), 3), Picture("4")}),
         {2, 2, 1}},
        {"with clearing frames in between",
         Movie({base, WithDisposal(Picture("22", 1), 2), WithDisposal(Picture("33", 2), 3),
                Picture("4.4", 0, 1)}),
         {1, 2, 2, 1}},
        {"the first and only frame", Movie({WithDisposal(Picture(".2"), 3)}), {1}},
        {"a frame that draws nothing", Movie({WithDisposal(Picture(".."), 3), Picture("0")}), {1, 1}},
        // frames to be cleared stay where the next one draws over them
        {"all of it", Movie({clearing(".0."), clearing("000"), Picture("1")}), {1, 2, 0}},
        {"not all of it", Movie({clearing("000"), Picture("0.0")}), {2, 0}},
        {"the next one lies elsewhere", Movie({clearing("00"), Picture("00", 1)}), {2, 0}},
        {"an earlier frame would show again",
         Movie({Picture("1111"), clearing("..0."), Picture("0", 2)}),
         {0, 2, 0}},
        {"a frame left in place is there for the next one",
         Movie({clearing("11"), clearing("1."), Picture("1")}),
         {2, 1, 0}},
        {"the last one", Movie({Picture("0"), clearing("1")}), {0, 2}},
    };
    for (const auto& [name, gif, disposals] : cases) {
        SCOPED_TRACE(name);
        const auto [flat, error] = Stream(gif);
        ExpectTheSameIsShown(gif, flat);
        EXPECT_EQ(DisposalsOf(flat), disposals);
        EXPECT_EQ(error, 0.0);
    }
}

TEST(Flatten, RandomAnimationsShowTheSame) {
    int restoring = 0;
    for (std::uint32_t seed = 0; seed < 300; ++seed) {
        TestGIF gif = RandomGIF(seed);
        gif.mFrames.back().mDelivered.reset();
        const bool restores = std::ranges::any_of(DisposalsOf(gif), [](auto d) { return d == 3 || d == 4; });
        if (!restores || std::ranges::any_of(gif.mFrames, [&](const TestFrame& inFrame) {
                return inFrame.mDelivered || gif.TableOf(inFrame).size() > 64 ||
                       std::ranges::max(inFrame.mPixels) >= gif.TableOf(inFrame).size();
            }))
            continue;
        ++restoring;
        SCOPED_TRACE(seed);
        const auto [flat, error] = Stream(gif);
        const TestComparison comparison = CompareGIFs(gif, flat);
        EXPECT_EQ(comparison.mDifference, "");
        EXPECT_LE(comparison.mWorstMean, error + 1e-9);
        for (const std::uint32_t disposal : DisposalsOf(flat))
            EXPECT_TRUE(disposal == 1 || disposal == 2);
    }
    EXPECT_GT(restoring, 15);
}

TEST(Flatten, ACanvasOfTooManyColoursIsQuantizedAndTheErrorTold) {
    TestGIF gif;
    gif.mWidth = 20;
    gif.mHeight = 20;
    TestRandom random(1);
    for (std::uint32_t i = 0; i < 2; ++i) {
        TestFrame frame = Paint(20, 10, [](auto x, auto y) { return y * 20 + x; });
        frame.mTop = 10 * i;
        for (std::uint32_t at = 0; at < 200; ++at)
            frame.mLocalTable.push_back(random.Below(0x1000000));
        frame.mDisposal = 3 * i;
        gif.mFrames.push_back(frame);
    }
    for (const bool hasHole : {false, true}) {
        if (hasHole)
            gif.mFrames[0].mTransparent = 5;
        const auto [flat, error] = Stream(gif);
        const TestComparison comparison = CompareGIFs(gif, flat);
        EXPECT_EQ(comparison.mDifference, "");
        EXPECT_GT(error, 0.0);
        EXPECT_NEAR(comparison.mWorstMean, error, 1e-9);
        EXPECT_LE(flat.mFrames[1].mLocalTable.size(), 256u);
    }
}

} // namespace
