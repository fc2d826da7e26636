#include "win/optimizer/pvopt.h"

#include <new>
#include <string>
#include <utility>

#include "nvcode2/gif/nvanimation.h"
#include "win/optimizer/base/pvprogress.h"
#include "win/optimizer/frames/pvframestream.h"
#include "win/optimizer/frames/pvload.h"
#include "win/optimizer/pvpasses.h"
#include "win/optimizer/pvrebuilder.h"
#include "win/optimizer/pvtolerance.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

namespace {

// Pixels exchanged in the first pass make room for exchanges that save about a thirtieth as much again. The
// second pass takes a third of the time, so it takes place where the first saved this part of the file.
constexpr double km_LargeShare = 50.0;

} // namespace

PvOptimizer::PvOptimizer(PvOptHost& inHost, const PvOptSettings& inSettings)
    : mHost(inHost), mSettings(inSettings) {
    if (mSettings.mMemoryLimit == 0)
        mSettings.mMemoryLimit = WnGetUsualMemoryLimit();
    if (mSettings.mIsLossless)
        mSettings.mTolerance = 0;
}

std::uint32_t PvOptimizer::OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize) {
    mOutcome = PvOutcome();
    try {
        return RunBothPasses(inPath, inOriginalSize);
    } catch (const PvTooMuchWork&) {
        mOutcome.mIsTooMuchWork = true;
        return inOriginalSize;
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

/* The steps in order, each with the files that do it. Those in brackets change colours or exchange pixels and
 * are left out when nothing may be lost.
 *
 * First pass:
 *  1. Read and decode the frames, one at a time                             nvcode2/gif/nvgifframereader
 *  2. End restore-to-previous, clearing that shows nothing, borders         frames/pvframestream, pvflatten,
 * pvcrop
 *  3. [Merge each frame's near colours]                                     colours/pvsimilar
 *  4. [Choose the shared palette, merge its duplicates]                     colours/pvpalette
 *  5. Read again; leave out what the screen shows, crop, map, pack          pvrebuilder, frames/pvdifference
 *  6. Plan the tables: order, spare entry for transparency, own tables      colours/pvtableplan,
 * pvexacttables
 *  7. Find the background colour's index again                              colours/pvpalette
 *  8. Draw undrawn pixels where that makes longer strings                   codes/pvfill
 *  9. Cut the tables to narrow codes [and exchange pairs of pixels]         pvpasses, codes/pvswap
 * 10. Write to the scratch file; if smaller, copy it beside the original    pvwrite, this file
 * 11. Play both and compare; 5 to 11 again where the tolerance shows        look/pvgate, pvtolerance
 * 12. Back up, replace                                                      the host, wnatom/wnsafefile
 *
 * The second pass reads what then stands on the disk (frames/pvload), crops once more and does steps 7 and 9
 * to 12: pixels that were exchanged make room for further exchanges. It takes place where those saved much,
 * and where the first pass was of no use. */
std::uint32_t PvOptimizer::RunBothPasses(const char* inPath, std::uint32_t inOriginalSize) {
    const std::uint64_t seconds = mSettings.mSecondsOfWork;
    PvProgress progress(mHost, seconds == 0 ? UINT64_MAX : seconds * km_WorkPerSecond);
    mState = WnGetFileState(inPath);
    std::optional<PvCandidate> result = MakeFirstResult(inPath, inOriginalSize, progress);
    if (mOutcome.mLoadError || IsTooDamaged())
        return inOriginalSize;
    if (!result || !result->IsSound()) {
        if (result)
            KeepReason(*result);
        return ReoptimizeGIFFile(inPath, inOriginalSize, false, progress);
    }
    const std::uint32_t size = result->mSize;
    if (!Replace(inPath, *result, false))
        return inOriginalSize;
    if (!result->mPromisesMore)
        return size;
    result.reset();
    mOutcome.mIsHalfDone = true;
    try {
        const std::uint32_t smallest = ReoptimizeGIFFile(inPath, size, true, progress);
        mOutcome.mIsHalfDone = false;
        return smallest;
    } catch (const NvErrorCode&) {
        return size; // the first pass's result is in place and whole
    } catch (const PvTooMuchWork&) {
        return size;
    } catch (const std::bad_alloc&) {
        return size;
    }
}

// A file that is no sound GIF is left alone, and the reason kept. Only a lack of memory, which says nothing
// about the file, and a wish to stop go further.
template <typename Work>
auto PvOptimizer::KeepLoadError(const Work& inRead) -> decltype(inRead()) {
    try {
        return inRead();
    } catch (const NvErrorCode& error) {
        if (error.GetCode() == NvErrorCode::km_OutOfMemory || error.GetCode() == NvErrorCode::km_Cancelled)
            throw;
        mOutcome.mLoadError = error;
        return {};
    }
}

/** @return  what the first pass makes of the file, which the gate may have refused; nothing when that is not
 *  smaller or the file could not be loaded */
std::optional<PvCandidate> PvOptimizer::MakeFirstResult(const char* inPath, std::uint32_t inOriginalSize,
                                                        PvProgress& ioProgress) {
    const std::unique_ptr<PvRebuilder> file =
        KeepLoadError([&] { return std::make_unique<PvRebuilder>(inPath, mSettings); });
    if (!file)
        return std::nullopt;
    mOutcome.mFrameCount = file->GetFrameCount();
    ioProgress.DemandWork(file->GetLeastWork());
    std::unique_ptr<NvAnimation> animation;
    try {
        animation = KeepLoadError([&] { return file->Rebuild(mSettings.mTolerance, ioProgress); });
    } catch (const PvSprawlingFrames&) {
        return std::nullopt; // the second pass takes frames as they are
    }
    mOutcome.mDamage = file->GetDamage();
    if (!animation || IsTooDamaged())
        return std::nullopt;
    std::optional<PvCandidate> best =
        WriteRebuilt(inPath, *file, mSettings.mTolerance, std::move(animation), inOriginalSize, ioProgress);
    if (file->GetFrameCount() > 1)
        SearchTolerance(inPath, *file, inOriginalSize, best, ioProgress);
    return best;
}

/** Puts the result of a smaller tolerance in the first one's place where that is better. */
void PvOptimizer::SearchTolerance(const char* inPath, PvRebuilder& ioFile, std::uint32_t inOriginalSize,
                                  std::optional<PvCandidate>& ioBest, PvProgress& ioProgress) {
    std::uint32_t tolerance = mSettings.mTolerance;
    while (ioBest && ioBest->IsSound()) {
        const std::optional<std::uint32_t> next = PvNextTolerance(tolerance, *ioBest);
        if (!next)
            return;
        tolerance = *next;
        PvPromise promise;
        const auto judge = [&](const NvAnimation& inFrames, double inStructure) {
            promise = PvJudgeRebuilt(inFrames, inStructure, *ioBest, inOriginalSize);
            return promise.mIsWorthWriting;
        };
        std::unique_ptr<NvAnimation> animation =
            KeepLoadError([&] { return ioFile.Rebuild(tolerance, ioProgress, judge); });
        if (!animation) {
            ioBest.reset(); // another program changed the file since it was read before
            return;
        }
        if (promise.mEndsSearch)
            return;
        if (!promise.mIsWorthWriting)
            continue;
        PvKeepBetter(ioBest, WriteRebuilt(inPath, ioFile, tolerance, std::move(animation),
                                          promise.mSizeToBeat, ioProgress));
    }
}

/** @return  nothing when the result is not smaller; otherwise it may be one that the gate refused */
std::optional<PvCandidate> PvOptimizer::WriteRebuilt(const char* inPath, const PvRebuilder& inFile,
                                                     std::uint32_t inTolerance,
                                                     std::unique_ptr<NvAnimation> inAnimation,
                                                     std::uint32_t inSizeToBeat, PvProgress& ioProgress) {
    std::vector<std::uint64_t> codes = PvCountCodes(*inAnimation);
    const PvWritten written = PvWriteFirstPass(ScratchPath(), *inAnimation, inFile.PlanTables(*inAnimation),
                                               inFile.GetBackground(), mSettings, ioProgress);
    inAnimation.reset(); // leaves its room to the check
    ioProgress.BeginStep(PvProgress::km_FirstPassChecked);
    std::optional<PvCandidate> candidate =
        MakeCandidate(inPath, inSizeToBeat, written, inFile.GetAllowance(inTolerance), ioProgress);
    if (candidate)
        candidate->mCodes = std::move(codes);
    return candidate;
}

std::uint32_t PvOptimizer::ReoptimizeGIFFile(const char* inPath, std::uint32_t inSizeSoFar, bool inIsBackedUp,
                                             PvProgress& ioProgress) {
    ioProgress.BeginStep(PvProgress::km_ReadAgain);
    const auto load = [&] { return LoadAnimation(inPath, mSettings.mMemoryLimit, ioProgress); };
    std::unique_ptr<NvAnimation> animation = inIsBackedUp ? load() : KeepLoadError(load);
    if (!animation)
        return inSizeSoFar;
    const PvWritten written = PvWriteSecondPass(ScratchPath(), *animation, mSettings, ioProgress);
    animation.reset();
    if (inIsBackedUp && !written.HasMovedPixels())
        return inSizeSoFar; // the first pass did everything else
    ioProgress.BeginStep(PvProgress::km_SecondPassChecked);
    std::optional<PvCandidate> candidate =
        MakeCandidate(inPath, inSizeSoFar, written, PvColourAllowance(), ioProgress);
    if (!candidate)
        return inSizeSoFar;
    if (!candidate->IsSound()) {
        KeepReason(*candidate);
        return inSizeSoFar;
    }
    return Replace(inPath, *candidate, inIsBackedUp) ? candidate->mSize : inSizeSoFar;
}

// A repair of the original may bring back more than can be read today.
bool PvOptimizer::IsTooDamaged() const {
    return mOutcome.mDamage.mFrame != 0 && !mSettings.mKeepsOriginal;
}

/** Where measurements are written. */
const char* PvOptimizer::ScratchPath() {
    if (!mScratch)
        mScratch.emplace();
    return mScratch->GetPath();
}

// Only a result that is smaller is copied beside the original. Measuring it there at once would save the
// copy, but touch the folder of every picture that stays as it is: its time would change, its watchers would
// wake, and a killed run would leave something in it.
std::optional<PvCandidate> PvOptimizer::MakeCandidate(const char* inPath, std::uint32_t inSizeToBeat,
                                                      const PvWritten& inWritten,
                                                      PvColourAllowance inAllowance, PvProgress& ioProgress) {
    PvCandidate candidate;
    candidate.mSize = inWritten.mSize;
    if (candidate.mSize >= inSizeToBeat)
        return std::nullopt;
    WnCheckReplaceable(inPath);
    candidate.mFile = std::make_unique<WnSafeFile>(inPath);
    candidate.mFile->CopyFrom(ScratchPath());
    if (mSettings.mKeepsTimes)
        candidate.mFile->KeepTimesOf(inPath);
    candidate.mFile->Finish(); // what is checked is what is on the disk
    candidate.mPromisesMore = inWritten.mSavedByMoving * km_LargeShare >= inWritten.mSize;
    inAllowance.mMovedPixels = inWritten.mMovedPixels;
    candidate.mComparison =
        PvCompareGIFs(inPath, candidate.mFile->GetTemporaryPath(), inAllowance, ioProgress);
    if (!candidate.IsSound())
        candidate.mFile.reset();
    return candidate;
}

/** Keeps why a result was refused, unless an earlier one was already. */
void PvOptimizer::KeepReason(const PvCandidate& inCandidate) {
    if (mOutcome.mGateReason.empty())
        mOutcome.mGateReason = inCandidate.mComparison.mReason;
}

// The picture may have been saved anew while we worked on it, and must not be replaced by what was made from
// the old one. The check before the backup only saves work; the one that counts comes last.
bool PvOptimizer::Replace(const char* inPath, PvCandidate& ioCandidate, bool inIsBackedUp) {
    mOutcome.mIsChangedMeanwhile = !mState || WnGetFileState(inPath) != mState;
    if (mOutcome.mIsChangedMeanwhile)
        return false;
    if (!inIsBackedUp) {
        mOutcome.mWorstLook = ioCandidate.mComparison.mWorstLook;
        mHost.BackupFile(inPath);
    }
    mHost.WillReplace(inPath, ioCandidate.mFile->GetTemporaryPath());
    mState = ioCandidate.mFile->CommitOver(*mState);
    mOutcome.mIsChangedMeanwhile = !mState;
    mOutcome.mGateReason.clear(); // it was that of a result refused before this one
    return mState.has_value();
}
