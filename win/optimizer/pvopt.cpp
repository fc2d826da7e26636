#include "win/optimizer/pvopt.h"

#include <algorithm>
#include <new>
#include <utility>

#include "nvcode2/gif/nvanimation.h"
#include "win/optimizer/base/pvmemory.h"
#include "win/optimizer/base/pvprogress.h"
#include "win/optimizer/frames/pvload.h"
#include "win/optimizer/look/pvlookcost.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

namespace {

/** The tolerance to try after one whose result does not look well enough. */
std::uint32_t NextTolerance(std::uint32_t inTolerance) {
    if (inTolerance > 16)
        return 16;
    return inTolerance > 8 ? 8 : 0;
}

// A size told beforehand may be wrong by this much of it.
constexpr double km_DoubtfulSize = 1.02;

constexpr const char* km_Changed = "another program changed the file meanwhile";

} // namespace

/** A result, written beside the file it may replace and found fit to do so. */
struct PvOptimizer::Candidate {
    double mMovedPixels = 0.0; // see PvColourAllowance
    double mCodes = 0.0;       // of the frames it was made of
    std::unique_ptr<WnSafeFile> mFile;
    std::uint32_t mSize = 0; // bytes
    PvComparison mComparison;

    double Cost() const { return PvLookCost(mSize, mComparison.mMeanStructure); }

    /** A size, in bytes, at which no candidate of a similarity can be better. */
    std::uint32_t HopelessSize(double inSimilarity) const {
        const double size = PvSizeAtLookCost(Cost(), inSimilarity) + 2.0; // rounding must not decide
        return static_cast<std::uint32_t>(std::min<double>(size, UINT32_MAX));
    }
};

PvOptimizer::PvOptimizer(PvOptHost& inHost, const PvOptSettings& inSettings)
    : mHost(inHost), mSettings(inSettings) {
    if (mSettings.mMemoryLimit == 0)
        mSettings.mMemoryLimit = PvUsualMemoryLimit();
}

std::uint32_t PvOptimizer::OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize) {
    mOutcome = PvOutcome();
    try {
        return RunBothPasses(inPath, inOriginalSize);
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

std::uint32_t PvOptimizer::RunBothPasses(const char* inPath, std::uint32_t inOriginalSize) {
    PvProgress progress(mHost);
    mState = WnGetFileState(inPath);
    std::optional<Candidate> candidate = ChooseFirstPass(inPath, inOriginalSize, progress);
    if (mOutcome.mLoadError || !mOutcome.mGateReason.empty())
        return inOriginalSize;
    if (!candidate)
        return ReoptimizeGIFFile(inPath, inOriginalSize, false, progress);
    const std::uint32_t size = candidate->mSize;
    if (!Replace(inPath, *candidate, false))
        return inOriginalSize;
    if (candidate->mMovedPixels == 0.0)
        return size; // the second pass only goes on where the first exchanged pixels
    candidate.reset();
    try {
        return ReoptimizeGIFFile(inPath, size, true, progress);
    } catch (const NvErrorCode&) {
        return size; // the first pass's result is in place and whole
    } catch (const std::bad_alloc&) {
        return size;
    }
}

// A file that is no sound GIF is left alone, with the reason kept; only a lack of memory, which says nothing
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

std::optional<PvOptimizer::Candidate>
PvOptimizer::ChooseFirstPass(const char* inPath, std::uint32_t inOriginalSize, PvProgress& ioProgress) {
    const std::unique_ptr<PvFirstPass> file = KeepLoadError([&] {
        return std::make_unique<PvFirstPass>(inPath, mSettings.mMemoryLimit, PassOptions(), ioProgress);
    });
    if (!file)
        return std::nullopt;
    mOutcome.mFrameCount = file->GetFrameCount();
    const std::uint32_t tolerance = mSettings.mIsLossless ? 0 : mSettings.mTolerance;
    std::unique_ptr<NvAnimation> animation =
        KeepLoadError([&] { return file->Rebuild(tolerance, ioProgress); });
    if (!animation)
        return std::nullopt;
    std::optional<Candidate> candidate =
        FinishFirstPass(inPath, *file, tolerance, std::move(animation), inOriginalSize, ioProgress);
    if (candidate && tolerance > 0 && file->GetFrameCount() > 1)
        ReduceTolerance(inPath, *file, tolerance, inOriginalSize, candidate, ioProgress);
    return candidate;
}

// A tolerance freezes slow, soft motion: stripes that differ by less are left standing and tear. Where that
// is seen the file is done again with smaller ones, as long as that may look better at a fair price. How it
// looks is known once the frames are rebuilt, and about how large it gets, since what is left to do saves
// much the same part of the size with any tolerance.
void PvOptimizer::ReduceTolerance(const char* inPath, PvFirstPass& ioFile, std::uint32_t inTolerance,
                                  std::uint32_t inOriginalSize, std::optional<Candidate>& ioBest,
                                  PvProgress& ioProgress) {
    for (std::uint32_t tolerance = inTolerance;
         ioBest && tolerance > 0 && ioBest->mComparison.MayLookBetter();) {
        tolerance = NextTolerance(tolerance);
        double structure = 1.0;
        std::unique_ptr<NvAnimation> animation =
            KeepLoadError([&] { return ioFile.Rebuild(tolerance, ioProgress, &structure); });
        if (!animation) {
            ioBest.reset(); // it is not what it was when it was read before
            return;
        }
        const bool mustChange = ioBest->mComparison.HasLostStructure();
        std::uint32_t sizeToBeat = inOriginalSize;
        if (!mustChange) {
            const double size = ioBest->mSize * static_cast<double>(animation->CountCodes()) / ioBest->mCodes;
            sizeToBeat = std::min(inOriginalSize, ioBest->HopelessSize(structure));
            if (size > km_DoubtfulSize * sizeToBeat) {
                if (km_DoubtfulSize * size > ioBest->HopelessSize(1.0))
                    break; // a still smaller tolerance leaves still more to draw
                continue;
            }
        }
        std::optional<Candidate> nearer =
            FinishFirstPass(inPath, ioFile, tolerance, std::move(animation), sizeToBeat, ioProgress);
        if (mustChange || (nearer && nearer->Cost() <= ioBest->Cost()))
            ioBest = std::move(nearer);
    }
}

/** @return  nothing when the result is not smaller or not fit to replace the file */
std::optional<PvOptimizer::Candidate>
PvOptimizer::FinishFirstPass(const char* inPath, const PvFirstPass& inFile, std::uint32_t inTolerance,
                             std::unique_ptr<NvAnimation> inAnimation, std::uint32_t inSizeToBeat,
                             PvProgress& ioProgress) {
    const auto codes = static_cast<double>(inAnimation->CountCodes());
    const PvWritten written = PvRunFirstPass(ScratchPath(), *inAnimation, inFile.PlanTables(*inAnimation),
                                             inFile.GetBackground(), PassOptions(), ioProgress);
    inAnimation.reset(); // leaves its room to the check
    std::optional<Candidate> candidate =
        MakeCandidate(inPath, inSizeToBeat, written, inFile.GetAllowance(inTolerance));
    if (candidate)
        candidate->mCodes = codes;
    return candidate;
}

std::uint32_t PvOptimizer::ReoptimizeGIFFile(const char* inPath, std::uint32_t inSizeSoFar, bool inIsBackedUp,
                                             PvProgress& ioProgress) {
    ioProgress.BeginStep(0.85);
    const auto load = [&] { return LoadAnimation(inPath, mSettings.mMemoryLimit, ioProgress); };
    std::unique_ptr<NvAnimation> animation = inIsBackedUp ? load() : KeepLoadError(load);
    if (!animation)
        return inSizeSoFar;
    const PvWritten written = PvRunSecondPass(ScratchPath(), *animation, PassOptions(), ioProgress);
    animation.reset();
    if (inIsBackedUp && written.mMovedPixels == 0)
        return inSizeSoFar; // all else it does is done
    std::optional<Candidate> candidate = MakeCandidate(inPath, inSizeSoFar, written, PvColourAllowance());
    if (!candidate || !Replace(inPath, *candidate, inIsBackedUp))
        return inSizeSoFar;
    return candidate->mSize;
}

PvPassOptions PvOptimizer::PassOptions() const {
    return {mSettings.mIsLossless, mSettings.mCropsSingleImages};
}

/** Where measurements are written. */
const char* PvOptimizer::ScratchPath() {
    if (!mScratch)
        mScratch.emplace();
    return mScratch->GetPath();
}

std::optional<PvOptimizer::Candidate> PvOptimizer::MakeCandidate(const char* inPath,
                                                                 std::uint32_t inSizeToBeat,
                                                                 const PvWritten& inWritten,
                                                                 PvColourAllowance inAllowance) {
    Candidate candidate;
    candidate.mSize = inWritten.mSize;
    if (candidate.mSize >= inSizeToBeat)
        return std::nullopt;
    WnCheckReplaceable(inPath);
    candidate.mFile = std::make_unique<WnSafeFile>(inPath);
    candidate.mFile->CopyFrom(ScratchPath());
    candidate.mFile->Finish(); // what is checked is what is on the disk
    inAllowance.mMovedPixels = static_cast<double>(inWritten.mMovedPixels);
    candidate.mMovedPixels = inAllowance.mMovedPixels;
    candidate.mComparison = PvCompareGIFs(inPath, candidate.mFile->GetTemporaryPath(), inAllowance);
    mOutcome.mGateReason = candidate.mComparison.mReason;
    if (!mOutcome.mGateReason.empty())
        return std::nullopt;
    return candidate;
}

// Somebody may have saved the picture anew while it was worked on: theirs is not to be replaced by what was
// made from the old one. The look before the backup only spares the work; the one that counts comes last.
bool PvOptimizer::Replace(const char* inPath, Candidate& ioCandidate, bool inIsBackedUp) {
    if (!mState || WnGetFileState(inPath) != mState) {
        mOutcome.mGateReason = km_Changed;
        return false;
    }
    if (!inIsBackedUp) {
        mOutcome.mWorstLook = ioCandidate.mComparison.mWorstLook;
        mHost.BackupFile(inPath);
    }
    mState = ioCandidate.mFile->CommitOver(*mState);
    if (!mState)
        mOutcome.mGateReason = km_Changed;
    return mState.has_value();
}
