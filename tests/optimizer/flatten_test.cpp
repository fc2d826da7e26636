// Reading frames for the first pass: frames that restore what they covered become frames that do not, frames
// cleared without need are kept, and neither shows.

#include "nvcode2/gif/nvgifframereader.h"
#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "win/optimizer/frames/pvframestream.h"
#include "wnatom/wnsystem.h"

namespace {

/** A frame without a transparent index. */
TestFrame Solid(std::uint32_t inWidth, std::uint32_t inHeight) {
    return Paint(inWidth, inHeight, [](auto, auto) { return 1; });
}

/** @return the animation as it is read and the largest error of a channel that is reported */
std::pair<TestGIF, int> Stream(const TestGIF& inGIF) {
    const TestFolder folder;
    NvGIFFrameReader reader(WriteTestFile(folder / "test.gif", EncodeGIF(inGIF)).c_str(),
                            WnGetUsualMemoryLimit());
    PvFrameStream stream(reader, false);
    TestAnimation animation(reader.ShareGlobalInfo(), reader.GetScreenWidth(), reader.GetScreenHeight());
    while (std::unique_ptr<NvGIFFrame> frame = stream.Next())
        animation.mFrames.push_back(std::move(frame));
    PvColourErrors errors;
    if (stream.GetFlattenErrors())
        errors = *stream.GetFlattenErrors();
    errors.Settle();
    return {Describe(animation), static_cast<int>(errors.GetLargest())};
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
        {"a frame that draws nothing", Movie({WithDisposal(Picture(".."), 3), Picture("0")}), {1, 1}},
        {"part of a background, part of nothing",
         Movie({Picture("00. ...", 1), WithDisposal(Picture("222 2.2", 1), 3), Picture("3", 0, 1)}),
         {1, 2, 1}},
        // nobody sees what the last frame puts back
        {"the first and only frame", Movie({WithDisposal(Picture(".2"), 3)}), {1}},
        {"the last of several", Movie({base, WithDisposal(Picture("2"), 4)}), {0, 1}},
        // frames to be cleared stay where the next one draws over them
        {"all of it", Movie({clearing(".0."), clearing("000"), Picture("1")}), {1, 2, 0}},
        {"not all of it", Movie({clearing("000"), Picture("0.0")}), {2, 0}},
        {"the next one is narrower", Movie({clearing("000"), Solid(2, 1)}), {2, 0}},
        {"the next one is lower", Movie({clearing("00 00"), Solid(2, 1)}), {2, 0}},
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
        EXPECT_EQ(error, 0);
    }
}

TEST(Flatten, FramesThatWouldSprawlOverTheScreenAreLeftToTheSecondPass) {
    TestGIF gif = Movie({Paint(1000, 1000, [](auto, auto) { return 0; })});
    TestFrame dot = WithDisposal(Picture("1"), 3);
    for (std::uint32_t i = 0; i < 120; ++i) {
        dot.mLeft = dot.mTop = i % 2 * 999;
        gif.mFrames.push_back(dot);
    }
    EXPECT_THROW(Stream(gif), PvSprawlingFrames);
}

TEST(Flatten, AFrameOfTooManyColoursIsQuantizedAndTheErrorReported) {
    TestGIF gif;
    gif.mWidth = 20;
    gif.mHeight = 20;
    TestRandom random(1);
    for (std::uint32_t i = 0; i < 2; ++i) {
        TestFrame frame = Paint(20, 10, [](auto x, auto y) { return y * 20 + x; });
        frame.mTop = 10 * i;
        for (std::uint32_t at = 0; at < 200; ++at)
            frame.mLocalTable.push_back(random.Below(0x1000000));
        gif.mFrames.push_back(frame);
    }
    TestFrame over = Paint(20, 20, [](auto, auto) { return 0; });
    over.mLocalTable = {0, 0xFFFFFF};
    over.mDisposal = 3;
    gif.mFrames.push_back(over);
    gif.mFrames.push_back(gif.mFrames[1]); // 200 colours come back, and as many are drawn
    for (TestFrame& frame : gif.mFrames)
        for (std::uint32_t& colour : frame.mLocalTable)
            colour ^= &frame == &gif.mFrames.back() ? 0xFF : 0;
    for (const bool hasHole : {false, true}) {
        if (hasHole)
            gif.mFrames[0].mTransparent = 5;
        const auto [flat, error] = Stream(gif);
        const TestComparison comparison = CompareGIFs(gif, flat);
        EXPECT_EQ(comparison.mDifference, "");
        EXPECT_GT(error, 0);
        EXPECT_EQ(comparison.mWorstChannel, error);
        EXPECT_LE(flat.mFrames[3].mLocalTable.size(), 256u);
    }
}

} // namespace
