#pragma once

#include <cstdint>

#include "win/optimizer/codes/pvlzwestimate.h"
#include "win/optimizer/codes/pvswapbudget.h"
#include "win/optimizer/codes/pvswapsearch.h"

class NvGIFFrame;

/** Exchanges neighbouring pixels of frames where that makes their LZW data shorter and the eye does not
 *  notice.
 *
 *  In a row, A B A becomes B A A. Every exchange is tried, measured over the whole frame and kept only when
 *  the estimate strictly drops. A frame with too many places to try is post-dithered instead. */
class PvPixelSwapper {
public:
    /** @param ioStrings  scratch space while a frame is in hand; borrowed for the swapper's life */
    explicit PvPixelSwapper(NvLZWStringTable& ioStrings) : mSearch(ioStrings), mEstimator(ioStrings) {}

    /** Pixels read for trials so far. */
    std::uint64_t GetPixelSteps() const { return mSearch.GetPixelSteps(); }

    /** What happened to a frame. */
    struct Result {
        std::uint32_t mExchanged = 0; ///< pairs that changed places
        bool mPostDithered = false;   ///< all pairs at once, without measuring
    };

    /** How many pairs qualify in the frame as it is. */
    static std::uint32_t CountSwapCandidates(const NvGIFFrame& inFrame);

    /** Whether a frame has more candidates than the search accepts: each one costs an estimate of the whole
     *  frame, so the product of candidates and pixels is limited to 24,800,000. */
    static bool HasTooManyCandidates(const NvGIFFrame& inFrame);

    /** Works on a frame without transparency. */
    Result SwapPixelPairs(NvGIFFrame& ioFrame);

    /** Works on a frame with transparency; the transparent index is never moved. */
    Result SwapPixelPairs(NvGIFFrame& ioFrame, std::uint8_t inTransparentIndex);

    /** Exchanges pixels of an animation's next frame where that promises something (see PvSwapBudget), and
     *  keeps the result only when its estimate is lower by more than the loss of look is worth (see
     *  PvLookCost): post-dithering makes many pictures larger, and exchanged pixels roughen what was smooth.
     *
     *  @return  pairs that changed places */
    std::uint32_t SwapIfWorthIt(NvGIFFrame& ioFrame);

    /** Bytes that SwapIfWorthIt saved so far, by the estimate. */
    double GetSavedBytes() const { return mSavedBytes; }

private:
    /** A frame's LZW data, in bytes, before and after. */
    struct Sizes {
        double mBefore = 0.0;
        double mAfter = 0.0;
    };

    Result Swap(NvGIFFrame& ioFrame, std::int32_t inSparedIndex);
    std::uint32_t Search(NvGIFFrame& ioFrame, std::int32_t inSparedIndex,
                         std::uint64_t inMostSteps = UINT64_MAX);
    std::uint32_t SwapMeasured(NvGIFFrame& ioFrame, bool inPostDithers, Sizes& outSizes);

    PvSwapSearch mSearch;
    PvLZWEstimator mEstimator;
    PvSwapBudget mBudget;
    double mSavedBytes = 0.0;
};
