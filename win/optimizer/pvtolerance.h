#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "win/optimizer/look/pvgate.h"
#include "wnatom/wnsafefile.h"

class NvAnimation;

/** A result, written beside the file it may replace, with what the gate found. */
struct PvCandidate {
    std::unique_ptr<WnSafeFile> mFile; ///< null when the gate refused it
    std::uint32_t mSize = 0;           ///< bytes
    bool mPromisesMore = false;        ///< to a second pass
    std::vector<std::uint64_t> mCodes; ///< LZW codes of the frames it was made of, up to each of them
    PvComparison mComparison;

    bool IsSound() const { return mComparison.mReason.empty(); }
};

/** The search for the tolerance of an animation (see PvDifferencer), as three questions.
 *
 *  A large tolerance freezes slow, soft motion: stripes that differ by less are left standing and tear. Where
 *  that shows, the animation is rebuilt with smaller ones, as long as one of them may look better at a fair
 *  price. */

/** Which tolerance to try after inTolerance, given the best result so far.
 *  @return  nothing when that looks good enough or nothing smaller is left */
std::optional<std::uint32_t> PvNextTolerance(std::uint32_t inTolerance, const PvCandidate& inBest);

/** What frames rebuilt with a smaller tolerance promise before they are written. */
struct PvPromise {
    bool mIsWorthWriting = true;
    bool mEndsSearch = false;      ///< no smaller tolerance can pay either
    std::uint32_t mSizeToBeat = 0; ///< bytes; the result must be smaller
};

/** Judges frames that were rebuilt with a smaller tolerance than the best result's.
 *
 *  How they look is known, and roughly how large they get: the steps that are left save much the same part of
 *  the size whatever the tolerance. Of a few first frames only what is out of the question is judged so.
 *  @param inFrames     the first ones, or all
 *  @param inStructure  how they look, see PvComparison::mMeanStructure */
PvPromise PvJudgeRebuilt(const NvAnimation& inFrames, double inStructure, const PvCandidate& inBest,
                         std::uint32_t inOriginalSize);

/** The LZW codes of an animation's frames up to each of them. */
std::vector<std::uint64_t> PvCountCodes(const NvAnimation& inFrames);

/** Puts the result of a smaller tolerance in the best one's place where it is better. One that the gate
 *  refused changes nothing, and a tie keeps the best.
 *  @param inNew  nothing when it is not smaller than it must be. If the best has lost structure, neither
 * stays
 */
void PvKeepBetter(std::optional<PvCandidate>& ioBest, std::optional<PvCandidate> inNew);
