// The swap search gives exactly the result of trying every pair with a whole encode; its shortcuts change no
// answer.

#include "nvcode2/quant/nvpostdither.h"
#include "tests/optimizer/optimizertest.h"
#include "tests/support/randomgif.h"
#include "tests/support/swapreference.h"
#include "win/optimizer/codes/pvlzwestimate.h"
#include "win/optimizer/codes/pvswap.h"
#include "win/optimizer/codes/pvswapsearch.h"

namespace {

std::unique_ptr<TestAnimation> MakeStill(const SwapReference& inFrame) {
    TestFrame frame;
    frame.mWidth = inFrame.mWidth;
    frame.mHeight = inFrame.mHeight;
    frame.mPixels = inFrame.mPixels;
    frame.mTransparent = inFrame.mTransparent;
    frame.mInterlaced = inFrame.mInterlaced;
    TestGIF gif = Movie({frame});
    gif.mTable = inFrame.mColors;
    return MakeAnimation(gif);
}

PvPixelSwapper::Result Swap(PvPixelSwapper& ioSwapper, NvGIFFrame& ioFrame) {
    return ioFrame.HasTransparency() ? ioSwapper.SwapPixelPairs(ioFrame, ioFrame.GetTransparentIndex())
                                     : ioSwapper.SwapPixelPairs(ioFrame);
}

std::vector<std::uint8_t> PixelsOf(const NvGIFFrame& inFrame) {
    const NvConstPixelLock pixels(inFrame.GetImage());
    return {pixels.Row(0), pixels.Row(0) + std::size_t{inFrame.GetWidth()} * inFrame.GetHeight()};
}

/** The pixels of a frame after the pass that exchanges every pair that qualifies. */
std::vector<std::uint8_t> PostDithered(const NvGIFFrame& inFrame) {
    const auto copy = inFrame.Clone();
    auto& frame = static_cast<NvGIFFrame&>(*copy);
    if (frame.HasTransparency())
        PostDitherTransparent(&frame.GetImage(), frame.GetTransparentIndex());
    else
        PostDither(&frame.GetImage());
    return PixelsOf(frame);
}

SwapReference RandomFrame(std::uint32_t inSeed, std::uint32_t inMaxWidth, std::uint32_t inMaxHeight) {
    TestRandom random(inSeed);
    SwapReference frame;
    frame.mWidth = 1 + random.Below(inMaxWidth);
    frame.mHeight = 1 + random.Below(inMaxHeight);
    const std::uint32_t colors = 2 + random.Below(random.Chance(80) ? 4 : 255);
    const std::uint32_t step = random.Below(12);
    for (std::uint32_t i = 0; i < colors; ++i) // mostly near enough to each other to be exchanged
        frame.mColors.push_back(0x404040 + 0x010101 * (i * step % 64) + (random.Chance(10) ? 0x900000 : 0));
    frame.mPixels = RandomPixels(random, static_cast<TestTexture>(random.Below(km_TextureCount)),
                                 frame.mWidth, frame.mHeight, colors);
    frame.mInterlaced = random.Chance(50);
    frame.mTransparent = random.Chance(50) ? static_cast<int>(random.Below(colors)) : -1;
    return frame;
}

TEST(Swap, SearchEqualsTheLiteralOneOnHundredsOfFrames) {
    NvLZWStringTable strings;
    PvPixelSwapper swapper(strings); // one for all, as the program uses it
    std::uint32_t tried = 0;
    std::uint32_t exchanged = 0;
    for (std::uint32_t seed = 0; seed < 600; ++seed) {
        SCOPED_TRACE(seed);
        SwapReference reference = RandomFrame(seed, 60, 40);
        const auto animation = MakeStill(reference);
        NvGIFFrame& frame = animation->GetFrame(0);
        SwapReference dithered = reference;
        dithered.PostDither();
        EXPECT_EQ(PostDithered(frame), dithered.mPixels);
        const std::uint32_t candidates = PvPixelSwapper::CountSwapCandidates(frame);
        EXPECT_EQ(candidates, reference.CountCandidates());
        const PvPixelSwapper::Result result = Swap(swapper, frame);
        EXPECT_EQ(result.mExchanged, reference.Search());
        EXPECT_FALSE(result.mPostDithered);
        ASSERT_EQ(PixelsOf(frame), reference.mPixels);
        tried += candidates;
        exchanged += result.mExchanged;
    }
    EXPECT_GT(tried, 10000u) << "frames that try nothing would show nothing";
    EXPECT_GT(exchanged, 200u);
}

// Luma is what the eye sees structure in: the same pixels change places unseen between equally bright colours
// and roughen the picture between greys.
TEST(Swap, ExchangedPixelsAreKeptOnlyWhenTheyMakeTheFrameShorterAndDoNotShow) {
    NvLZWStringTable strings;
    int kept = 0;
    int putBack = 0;
    for (std::uint32_t seed = 0; seed < 12; ++seed) {
        SCOPED_TRACE(seed);
        TestRandom random(seed);
        const bool shows = seed % 3 == 2;
        SwapReference reference;
        reference.mWidth = reference.mHeight = 300;
        reference.mColors = shows ? TestTable{0x202020, 0x2A2A2A, 0x343434, 0x3E3E3E} : EquallyBright(4);
        reference.mPixels = RandomPixels(random, seed % 2 ? TestTexture::km_Noise : TestTexture::km_Dither,
                                         300, 300, 2 + seed / 4);
        reference.mTransparent = seed < 8 ? -1 : 1;
        const auto animation = MakeStill(reference);
        ASSERT_TRUE(PvPixelSwapper::HasTooManyCandidates(animation->GetFrame(0)));
        SwapReference dithered = reference;
        dithered.PostDither();
        const bool isBetter = !shows && dithered.Estimate() < reference.Estimate();
        PvPixelSwapper swapper(strings);
        const std::uint32_t exchanged = swapper.SwapIfWorthIt(animation->GetFrame(0));
        EXPECT_EQ(PixelsOf(animation->GetFrame(0)), isBetter ? dithered.mPixels : reference.mPixels);
        EXPECT_EQ(exchanged > 0, isBetter);
        ++(isBetter ? kept : putBack);
    }
    EXPECT_GT(kept, 0);
    EXPECT_GT(putBack, 4);
}

TEST(Swap, FramesAreSearchedWhileThatPaysAndSomeOfThemAfterwards) {
    PvSwapBudget budget;
    const auto countTried = [&](double inSaved) {
        int tried = 0;
        for (int i = 0; i < 40; ++i) {
            budget.AddFrame(1000);
            if (!budget.IsToBeTried())
                continue;
            ++tried;
            budget.Learn(1000, inSaved);
        }
        return tried;
    };
    EXPECT_EQ(countTried(1.0), 40);
    EXPECT_EQ(countTried(0.0), 6) << "after 0, 1, 2, 4, 8 and 15 others";
    budget.Learn(budget.GetStepsLeft(), 100.0);
    EXPECT_FALSE(budget.IsToBeTried()) << "no pixels are left to be read";
    EXPECT_EQ(countTried(1.0), 40);
}

std::uint64_t Estimate(PvLZWEstimator& ioEstimator, const SwapReference& inFrame) {
    return ioEstimator.EstimateLZWSize(inFrame.mPixels.data(), inFrame.mWidth, inFrame.mHeight,
                                       inFrame.mWidth, static_cast<std::uint32_t>(inFrame.mColors.size()),
                                       inFrame.mInterlaced);
}

TEST(LZWEstimate, CountsTheBitsOfEveryKindOfFrame) {
    NvLZWStringTable strings;
    PvLZWEstimator estimator(strings); // one for all, as the program uses it
    TestRandom random(1);
    for (std::uint32_t bits = 1; bits <= 8; ++bits)
        for (std::uint32_t texture = 0; texture < km_TextureCount; ++texture)
            for (const std::uint32_t limit : {8u, 60u, 150u}) {
                SwapReference frame;
                frame.mWidth = 1 + random.Below(limit);
                frame.mHeight = 1 + random.Below(limit);
                frame.mInterlaced = random.Chance(50);
                frame.mColors.resize(bits == 1 ? 1 + random.Below(2)
                                               : (1U << (bits - 1)) + 1 + random.Below(1U << (bits - 1)));
                const auto colors = static_cast<std::uint32_t>(frame.mColors.size());
                frame.mPixels = RandomPixels(random, static_cast<TestTexture>(texture), frame.mWidth,
                                             frame.mHeight, colors);
                EXPECT_EQ(Estimate(estimator, frame), frame.Estimate())
                    << colors << " colours, texture " << texture << ", " << frame.mWidth << " x "
                    << frame.mHeight;
            }
}

// Noise of 256 colours fills the table every 3,838 strings, a few more pixels, where one pixel decides on a
// clear.
TEST(LZWEstimate, CountsTheBitsAroundAFullTable) {
    NvLZWStringTable strings;
    PvLZWEstimator estimator(strings);
    TestRandom random(2);
    const auto pixels = RandomPixels(random, TestTexture::km_Noise, 8200, 1, 256);
    SwapReference frame;
    frame.mHeight = 1;
    frame.mColors.resize(256);
    for (const std::uint32_t start : {3850u, 7750u})
        for (frame.mWidth = start; frame.mWidth < start + 250; ++frame.mWidth) {
            frame.mPixels.assign(pixels.begin(), pixels.begin() + frame.mWidth);
            ASSERT_EQ(Estimate(estimator, frame), frame.Estimate()) << frame.mWidth;
        }
}

/** The search beside whole estimates, on one frame after the other. */
class BothSearches {
public:
    void Begin(const SwapReference& inFrame) {
        mPlain = inFrame;
        mPixels = inFrame.mPixels;
        mBest = Estimate();
        mSearch.Begin(mPixels.data(), inFrame.mWidth, inFrame.mHeight,
                      static_cast<std::uint32_t>(inFrame.mColors.size()), inFrame.mInterlaced);
    }

    void Try(std::uint32_t inX, std::uint32_t inY) {
        std::uint8_t* pair = &mPlain.mPixels[inY * mPlain.mWidth + inX];
        std::swap(pair[0], pair[1]);
        const std::uint64_t size = Estimate();
        const bool isShorter = size < mBest;
        if (isShorter)
            mBest = size;
        else
            std::swap(pair[0], pair[1]);
        ASSERT_EQ(mSearch.ExchangeIfShorter(inX, inY), isShorter) << "at " << inX << ", " << inY;
        ASSERT_TRUE(mPixels == mPlain.mPixels);
        mExchanged += isShorter ? 1 : 0;
    }

    std::uint64_t Estimate() { return ::Estimate(mEstimator, mPlain); }

    const SwapReference& GetFrame() const { return mPlain; }

    std::uint32_t mExchanged = 0;

private:
    NvLZWStringTable mStrings;
    PvSwapSearch mSearch{mStrings};
    NvLZWStringTable mEstimatorStrings;
    PvLZWEstimator mEstimator{mEstimatorStrings};
    SwapReference mPlain;
    std::vector<std::uint8_t> mPixels;
    std::uint64_t mBest = 0;
};

// Any two neighbours, row by row as the search goes, and some of them out of order.
TEST(SwapSearch, AnswersAsWholeEstimatesDoOnSmallFrames) {
    BothSearches searches; // one for all, as the program uses it
    for (std::uint32_t seed = 0; seed < 6000; ++seed) {
        SCOPED_TRACE(seed);
        TestRandom random(seed);
        const SwapReference frame = RandomFrame(seed, 50, 30);
        const std::uint32_t columns = frame.mWidth - 1;
        const std::uint32_t places = columns * (frame.mHeight - 1);
        const std::uint32_t step = std::max(1U, places / 20);
        searches.Begin(frame);
        for (std::uint32_t place = random.Below(step); place < places; place += 1 + random.Below(step)) {
            const std::uint32_t tried = random.Chance(5) ? random.Below(places) : place;
            searches.Try(tried % columns, 1 + tried / columns);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
    EXPECT_GT(searches.mExchanged, 4000U);
}

/** A frame in which tables fill up every few rows. */
SwapReference BusyFrame(TestRandom& ioRandom) {
    SwapReference frame;
    frame.mWidth = 60 + ioRandom.Below(100);
    frame.mHeight = 60 + ioRandom.Below(60);
    frame.mColors.resize(100 + ioRandom.Below(157));
    frame.mInterlaced = ioRandom.Chance(50);
    frame.mPixels = RandomPixels(ioRandom, TestTexture::km_Noise, frame.mWidth, frame.mHeight,
                                 static_cast<std::uint32_t>(frame.mColors.size()));
    for (std::size_t i = 1; i < frame.mPixels.size(); ++i) // so that some exchanges pay
        if (ioRandom.Chance(60))
            frame.mPixels[i] =
                frame.mPixels[i - 1 -
                              ioRandom.Below(std::min<std::uint32_t>(static_cast<std::uint32_t>(i), 3))];
    return frame;
}

using Resets = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

/** Where the tables of a frame are full: row and column. */
Resets FindResets(const SwapReference& inFrame) {
    const std::vector<std::uint32_t> rows = FileOrder(inFrame.mHeight, inFrame.mInterlaced);
    const std::vector<std::uint8_t> stream = inFrame.Stream();
    NvLZWStringTable strings;
    PvLZWParser parser(strings);
    parser.Begin(inFrame.mColors.size() > 128 ? 8 : 7);
    Resets resets;
    std::uint32_t next = 1;
    parser.Start(stream[0]);
    while (parser.Read(stream.data(), static_cast<std::uint32_t>(stream.size()), next)) {
        resets.emplace_back(rows[next / inFrame.mWidth], next % inFrame.mWidth);
        parser.Start(stream[next++]);
    }
    return resets;
}

// Every other pair on or beside a pixel that empties a table. Exchanges that are kept move it, and those
// behind.
TEST(SwapSearch, AnswersAsWholeEstimatesDoWhereTablesFillUp) {
    BothSearches searches;
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(seed);
        TestRandom random(seed);
        const SwapReference frame = BusyFrame(random);
        searches.Begin(frame);
        for (std::uint32_t i = 0; i < 150; ++i) {
            const Resets resets = FindResets(searches.GetFrame());
            std::uint32_t x = random.Below(frame.mWidth - 1);
            std::uint32_t y = 1 + random.Below(frame.mHeight - 1);
            if (i % 2 == 0 && !resets.empty()) {
                const auto [row, column] = resets[random.Below(static_cast<std::uint32_t>(resets.size()))];
                x = std::clamp(column + random.Below(6), 3U, frame.mWidth + 1) - 3;
                y = std::max(row, 1U);
            }
            searches.Try(x, y);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
    EXPECT_GT(searches.mExchanged, 700U);
}

} // namespace
