#include "win/optimizer/pvtolerance.h"

#include <algorithm>
#include <utility>

#include "nvcode2/gif/nvanimation.h"
#include "win/optimizer/look/pvlookcost.h"

namespace {

// The size foreseen of a result may be off by this factor.
constexpr double km_DoubtfulSize = 1.02;

// And by this one when only some of the frames are known.
constexpr double km_DoubtfulPart = 1.1;

double CostOf(const PvCandidate& inCandidate) {
    return PvLookCost(inCandidate.mSize, inCandidate.mComparison.mMeanStructure);
}

/** A size, in bytes, from which on no result that looks so close can beat the best one. */
std::uint32_t HopelessSize(const PvCandidate& inBest, double inStructure) {
    const double size = PvSizeAtLookCost(CostOf(inBest), inStructure) + 2.0; // rounding must not decide
    return static_cast<std::uint32_t>(std::min<double>(size, UINT32_MAX));
}

/** The size in bytes that frames promise. The first one is drawn whole, whatever the tolerance; if not all
 *  are there, the others are foreseen to grow like those that are. */
double ForeseeSize(const std::vector<std::uint64_t>& inCodes, const PvCandidate& inBest) {
    const auto all = static_cast<double>(inBest.mCodes.back());
    const auto codes = static_cast<double>(inCodes.back());
    if (inCodes.size() == inBest.mCodes.size())
        return inBest.mSize * codes / all;
    const auto best = static_cast<double>(inBest.mCodes[inCodes.size() - 1]);
    const double growth = (codes - static_cast<double>(inCodes.front())) /
                          std::max(best - static_cast<double>(inBest.mCodes.front()), 1.0);
    return inBest.mSize * (codes + (all - best) * growth) / all / km_DoubtfulPart;
}

} // namespace

std::optional<std::uint32_t> PvNextTolerance(std::uint32_t inTolerance, const PvCandidate& inBest) {
    if (inTolerance == 0 || !inBest.mComparison.MayLookBetter())
        return std::nullopt;
    if (inTolerance > 16)
        return 16;
    return inTolerance > 8 ? 8 : 0;
}

std::vector<std::uint64_t> PvCountCodes(const NvAnimation& inFrames) {
    std::vector<std::uint64_t> codes(inFrames.GetFrameCount());
    std::uint64_t sum = 0;
    for (std::uint32_t i = 0; i < codes.size(); ++i)
        codes[i] = sum += inFrames.GetPackedFrame(i).GetCodeCount();
    return codes;
}

PvPromise PvJudgeRebuilt(const NvAnimation& inFrames, double inStructure, const PvCandidate& inBest,
                         std::uint32_t inOriginalSize) {
    PvPromise promise;
    promise.mSizeToBeat = inOriginalSize;
    if (inBest.mComparison.HasLostStructure())
        return promise; // whatever it costs
    promise.mSizeToBeat = std::min(inOriginalSize, HopelessSize(inBest, inStructure));
    const double size = ForeseeSize(PvCountCodes(inFrames), inBest);
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
