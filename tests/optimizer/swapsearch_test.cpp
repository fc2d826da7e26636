// The search's shortcuts change no answer: each is what two estimates of the whole frame say.

#include "tests/support/randomgif.h"
#include "tests/support/swapreference.h"
#include "win/optimizer/codes/pvlzwestimate.h"
#include "win/optimizer/codes/pvswapsearch.h"

namespace {

using Frame = SwapReference;

std::uint32_t CountColors(const Frame& inFrame) {
    return static_cast<std::uint32_t>(inFrame.mColors.size());
}

Frame RandomFrame(TestRandom& ioRandom, std::uint32_t inMaxWidth, std::uint32_t inMaxHeight) {
    Frame frame;
    frame.mWidth = 2 + ioRandom.Below(inMaxWidth - 1);
    frame.mHeight = 2 + ioRandom.Below(inMaxHeight - 1);
    const std::uint32_t bits = 1 + ioRandom.Below(8);
    frame.mColors.resize((1U << (bits - 1)) + 1 + ioRandom.Below(1U << (bits - 1)));
    frame.mInterlaced = ioRandom.Chance(50);
    frame.mPixels = RandomPixels(ioRandom, static_cast<TestTexture>(ioRandom.Below(km_TextureCount)),
                                 frame.mWidth, frame.mHeight, CountColors(frame));
    return frame;
}

/** The search beside whole estimates, on one frame after the other. */
class BothSearches {
public:
    void Begin(const Frame& inFrame) {
        mPlain = inFrame;
        mPixels = inFrame.mPixels;
        mBest = Estimate();
        mSearch.Begin(mPixels.data(), inFrame.mWidth, inFrame.mHeight, CountColors(inFrame),
                      inFrame.mInterlaced);
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

    std::uint64_t Estimate() {
        return mEstimator.EstimateLZWSize(mPlain.mPixels.data(), mPlain.mWidth, mPlain.mHeight, mPlain.mWidth,
                                          CountColors(mPlain), mPlain.mInterlaced);
    }

    const Frame& GetFrame() const { return mPlain; }

    std::uint32_t mExchanged = 0;

private:
    NvLZWStringTable mStrings;
    PvSwapSearch mSearch{mStrings};
    NvLZWStringTable mEstimatorStrings;
    PvLZWEstimator mEstimator{mEstimatorStrings};
    Frame mPlain;
    std::vector<std::uint8_t> mPixels;
    std::uint64_t mBest = 0;
};

// Any two neighbours, row by row as the search goes, and some of them out of order.
void TryPairs(BothSearches& ioSearches, const Frame& inFrame, TestRandom& ioRandom, std::uint32_t inPairs) {
    const std::uint32_t places = (inFrame.mWidth - 1) * (inFrame.mHeight - 1);
    const std::uint32_t step = std::max(1U, 2 * places / inPairs);
    for (std::uint32_t place = ioRandom.Below(step); place < places; place += 1 + ioRandom.Below(step)) {
        const std::uint32_t tried = ioRandom.Chance(5) ? ioRandom.Below(places) : place;
        ioSearches.Try(tried % (inFrame.mWidth - 1), 1 + tried / (inFrame.mWidth - 1));
        if (testing::Test::HasFatalFailure())
            return;
    }
}

TEST(SwapSearch, AnswersAsWholeEstimatesDoOnSmallFrames) {
    BothSearches searches; // one for all, as the program uses it
    for (std::uint32_t seed = 0; seed < 6000; ++seed) {
        SCOPED_TRACE(seed);
        TestRandom random(seed);
        const Frame frame = RandomFrame(random, 50, 30);
        searches.Begin(frame);
        TryPairs(searches, frame, random, 40);
        ASSERT_FALSE(HasFatalFailure());
    }
    EXPECT_GT(searches.mExchanged, 4000U);
}

/** A frame in which tables fill up every few rows. */
Frame BusyFrame(TestRandom& ioRandom) {
    Frame frame;
    frame.mWidth = 60 + ioRandom.Below(100);
    frame.mHeight = 60 + ioRandom.Below(60);
    frame.mColors.resize(100 + ioRandom.Below(157));
    frame.mInterlaced = ioRandom.Chance(50);
    frame.mPixels =
        RandomPixels(ioRandom, TestTexture::km_Noise, frame.mWidth, frame.mHeight, CountColors(frame));
    for (std::size_t i = 1; i < frame.mPixels.size(); ++i) // so that some exchanges pay
        if (ioRandom.Chance(60))
            frame.mPixels[i] =
                frame.mPixels[i - 1 -
                              ioRandom.Below(std::min<std::uint32_t>(static_cast<std::uint32_t>(i), 3))];
    return frame;
}

using Resets = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

/** Where the tables of a frame are full: row and column. */
Resets FindResets(const Frame& inFrame) {
    std::vector<std::uint8_t> stream;
    const std::vector<std::uint32_t> rows = FileOrder(inFrame.mHeight, inFrame.mInterlaced);
    for (const std::uint32_t y : rows) {
        const auto row = inFrame.mPixels.begin() + static_cast<std::ptrdiff_t>(y * inFrame.mWidth);
        stream.insert(stream.end(), row, row + inFrame.mWidth);
    }
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

// Pairs in the rows above a pixel that empties a table, until their segment is worth recording; then every
// other one on and beside that pixel. Exchanges that are kept move it, and those behind it.
TEST(SwapSearch, AnswersAsWholeEstimatesDoWhereTablesFillUp) {
    BothSearches searches;
    std::uint32_t besideResets = 0;
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(seed);
        TestRandom random(seed);
        const Frame frame = BusyFrame(random);
        searches.Begin(frame);
        for (std::uint32_t i = 0, chosen = 0; i < 150; ++i) {
            const Resets resets = FindResets(searches.GetFrame());
            if (i % 50 == 0)
                chosen = random.Below(100);
            std::uint32_t x = random.Below(frame.mWidth - 1);
            std::uint32_t y = 1 + random.Below(frame.mHeight - 1);
            if (!resets.empty()) {
                const auto [row, column] = resets[chosen % resets.size()];
                if (i % 50 > 14 && i % 2 == 0 && row > 0 && column >= 3 && column + 3 < frame.mWidth) {
                    y = row;
                    x = column - 3 + random.Below(6);
                    ++besideResets;
                } else if (row > 1) {
                    y = row - random.Below(std::min(row, 4U));
                }
            }
            searches.Try(x, y);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
    EXPECT_GT(searches.mExchanged, 700U);
    EXPECT_GT(besideResets, 3000U);
}

} // namespace
