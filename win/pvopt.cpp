#include "win/pvopt.h"

#include <algorithm>
#include <new>
#include <utility>

#include "nvcode2/nvanimation.h"
#include "win/pvload.h"
#include "win/pvlookcost.h"
#include "win/pvlzwestimate.h"
#include "win/pvprogress.h"
#include "win/pvwrite.h"
#include "win/wholefile.h"
#include "wnatom/wnpref.h"
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

/** How long the frames' data is as they are. */
double MeasureLength(const NvAnimation& inAnimation) {
    return static_cast<double>(PvLZWEstimator().EstimateFrames(inAnimation));
}

} // namespace

/** A result, written beside the file it may replace and found fit to do so. */
struct PvOptimizer::Candidate {
    std::unique_ptr<NvAnimation> mAnimation; // what was written; may be given up for lack of room
    double mMovedPixels = 0.0;               // see PvColourAllowance
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

PvOptimizer::PvOptimizer(const WnPref& inPrefs, PvOptHost& inHost, const PvOptSettings& inSettings)
    : mPrefs(inPrefs), mHost(inHost), mSettings(inSettings) {
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
        return ReoptimizeGIFFile(inPath, inOriginalSize, nullptr, false, progress);
    const std::uint32_t size = candidate->mSize;
    if (!Replace(inPath, *candidate, false))
        return inOriginalSize;
    if (candidate->mMovedPixels == 0.0)
        return size; // the second pass only goes on where the first exchanged pixels
    const std::unique_ptr<NvAnimation> written = std::move(candidate->mAnimation);
    candidate.reset();
    try {
        return ReoptimizeGIFFile(inPath, size, written.get(), true, progress);
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
    const std::uint32_t tolerance = IsPreferred("LOSSLESS") ? 0 : mSettings.mTolerance;
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
    double bestLength = 0.0;
    for (std::uint32_t tolerance = inTolerance;
         ioBest && tolerance > 0 && ioBest->mComparison.MayLookBetter();) {
        ioBest->mAnimation.reset(); // there is room for one
        const auto rebuild = [&](double* outStructure) {
            return KeepLoadError([&] { return ioFile.Rebuild(tolerance, ioProgress, outStructure); });
        };
        if (bestLength == 0.0)
            if (const std::unique_ptr<NvAnimation> best = rebuild(nullptr))
                bestLength = MeasureLength(*best);
        tolerance = NextTolerance(tolerance);
        double structure = 1.0;
        std::unique_ptr<NvAnimation> animation = rebuild(&structure);
        if (mOutcome.mLoadError) {
            ioBest.reset(); // it is not what it was when it was read before
            return;
        }
        const double length = MeasureLength(*animation);
        const bool mustChange = ioBest->mComparison.HasLostStructure();
        std::uint32_t sizeToBeat = inOriginalSize;
        if (!mustChange) {
            const double size = ioBest->mSize * length / bestLength;
            if (size > km_DoubtfulSize * ioBest->HopelessSize(1.0))
                break; // a still smaller tolerance leaves still more to draw
            sizeToBeat = std::min(inOriginalSize, ioBest->HopelessSize(structure));
            if (size > km_DoubtfulSize * sizeToBeat)
                continue;
        }
        std::optional<Candidate> nearer =
            FinishFirstPass(inPath, ioFile, tolerance, std::move(animation), sizeToBeat, ioProgress);
        if (!mustChange && (!nearer || nearer->Cost() > ioBest->Cost()))
            continue;
        ioBest = std::move(nearer);
        bestLength = length;
    }
}

/** @return  nothing when the result is not smaller or not fit to replace the file */
std::optional<PvOptimizer::Candidate>
PvOptimizer::FinishFirstPass(const char* inPath, const PvFirstPass& inFile, std::uint32_t inTolerance,
                             std::unique_ptr<NvAnimation> inAnimation, std::uint32_t inSizeToBeat,
                             PvProgress& ioProgress) {
    PvColourAllowance allowance = inFile.GetAllowance(inTolerance);
    allowance.mMovedPixels = static_cast<double>(
        mPasses.RunFirst(*inAnimation, inFile.GetBackground(), PassOptions(), ioProgress));
    std::optional<Candidate> candidate = MakeCandidate(inPath, inSizeToBeat, *inAnimation, allowance);
    if (candidate)
        candidate->mAnimation = std::move(inAnimation);
    return candidate;
}

// What the first pass wrote need not be read again: the frames still in memory are those on the disk. Nor is
// it written again unless the second pass found more pixels to exchange, since all else it does is done.
std::uint32_t PvOptimizer::ReoptimizeGIFFile(const char* inPath, std::uint32_t inSizeSoFar,
                                             NvAnimation* ioWritten, bool inIsBackedUp,
                                             PvProgress& ioProgress) {
    ioProgress.BeginStep(0.85);
    std::unique_ptr<NvAnimation> loaded;
    if (!ioWritten)
        loaded = KeepLoadError([&] { return LoadAnimation(inPath, mSettings.mMemoryLimit, ioProgress); });
    NvAnimation* animation = ioWritten ? ioWritten : loaded.get();
    if (!animation)
        return inSizeSoFar;
    PvColourAllowance allowance; // beside what is on the disk by now
    allowance.mMovedPixels = static_cast<double>(mPasses.RunSecond(*animation, PassOptions(), ioProgress));
    if (inIsBackedUp && allowance.mMovedPixels == 0.0)
        return inSizeSoFar;
    std::optional<Candidate> candidate = MakeCandidate(inPath, inSizeSoFar, *animation, allowance);
    if (!candidate || !Replace(inPath, *candidate, inIsBackedUp))
        return inSizeSoFar;
    return candidate->mSize;
}

PvPassOptions PvOptimizer::PassOptions() const {
    return {IsPreferred("LOSSLESS"), IsPreferred("ALLOWCROP")};
}

/** @return whether a preference is there and not 0 */
bool PvOptimizer::IsPreferred(const char* inName) const {
    std::uint32_t value = 0;
    mPrefs.ReadDWordDefault(inName, value, 0);
    return value != 0;
}

std::optional<PvOptimizer::Candidate> PvOptimizer::MakeCandidate(const char* inPath,
                                                                 std::uint32_t inSizeToBeat,
                                                                 NvAnimation& ioAnimation,
                                                                 const PvColourAllowance& inAllowance) {
    if (!mScratch)
        mScratch.emplace();
    Candidate candidate;
    candidate.mSize = WriteOptimizedGIF(mScratch->GetPath(), ioAnimation);
    if (candidate.mSize >= inSizeToBeat)
        return std::nullopt;
    WnCheckReplaceable(inPath);
    candidate.mFile = std::make_unique<WnSafeFile>(inPath);
    MizerCopyFile(mScratch->GetPath(), candidate.mFile->GetTemporaryPath());
    candidate.mMovedPixels = inAllowance.mMovedPixels;
    candidate.mComparison = PvCompareGIFs(inPath, candidate.mFile->GetTemporaryPath(), inAllowance);
    mOutcome.mGateReason = candidate.mComparison.mReason;
    if (!mOutcome.mGateReason.empty())
        return std::nullopt;
    return candidate;
}

// Somebody may have saved the picture anew while it was worked on: theirs is not to be replaced by what was
// made from the old one. What is left is the moment between the last look and the rename.
bool PvOptimizer::Replace(const char* inPath, Candidate& ioCandidate, bool inIsBackedUp) {
    const auto isChanged = [&] {
        if (WnGetFileState(inPath) == mState)
            return false;
        mOutcome.mGateReason = "another program changed the file meanwhile";
        return true;
    };
    if (isChanged())
        return false;
    if (!inIsBackedUp) {
        mOutcome.mWorstLook = ioCandidate.mComparison.mWorstLook;
        mHost.BackupFile(inPath);
        if (isChanged())
            return false;
    }
    const std::optional<WnFileState> state = WnGetFileState(ioCandidate.mFile->GetTemporaryPath());
    ioCandidate.mFile->Commit();
    mState = state;
    return true;
}
