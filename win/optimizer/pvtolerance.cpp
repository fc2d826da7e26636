#include "win/optimizer/pvtolerance.h"

#include <algorithm>
#include <utility>

#include "win/optimizer/look/pvlookcost.h"

namespace {

// The size foreseen of a result may be off by this factor.
constexpr double km_DoubtfulSize = 1.02;

double CostOf(const PvCandidate& inCandidate) {
    return PvLookCost(inCandidate.mSize, inCandidate.mComparison.mMeanStructure);
}

/** A size, in bytes, from which on no result that looks so close can beat the best one. */
std::uint32_t HopelessSize(const PvCandidate& inBest, double inStructure) {
    const double size = PvSizeAtLookCost(CostOf(inBest), inStructure) + 2.0; // rounding must not decide
    return static_cast<std::uint32_t>(std::min<double>(size, UINT32_MAX));
}

} // namespace

std::optional<std::uint32_t> PvNextTolerance(std::uint32_t inTolerance, const PvCandidate& inBest) {
    if (inTolerance == 0 || !inBest.mComparison.MayLookBetter())
        return std::nullopt;
    if (inTolerance > 16)
        return 16;
    return inTolerance > 8 ? 8 : 0;
}

PvPromise PvJudgeRebuilt(std::uint64_t inCodes, double inStructure, const PvCandidate& inBest,
                         std::uint32_t inOriginalSize) {
    PvPromise promise;
    promise.mSizeToBeat = inOriginalSize;
    if (inBest.mComparison.HasLostStructure())
        return promise; // whatever it costs
    promise.mSizeToBeat = std::min(inOriginalSize, HopelessSize(inBest, inStructure));
    const double size = inBest.mSize * static_cast<double>(inCodes) / static_cast<double>(inBest.mCodes);
    promise.mIsWorthWriting = size <= km_DoubtfulSize * promise.mSizeToBeat;
    // A still smaller tolerance leaves more to draw, and looks like the original at best.
    promise.mEndsSearch = !promise.mIsWorthWriting && km_DoubtfulSize * size > HopelessSize(inBest, 1.0);
    return promise;
}

void PvKeepBetter(std::optional<PvCandidate>& ioBest, std::optional<PvCandidate> inNew) {
    const bool mustChange = ioBest->mComparison.HasLostStructure();
    if (inNew ? inNew->IsSound() && (mustChange || CostOf(*inNew) < CostOf(*ioBest)) : mustChange)
        ioBest = std::move(inNew);
}
