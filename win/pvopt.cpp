#include "win/pvopt.h"

#include <algorithm>
#include <new>

#include "nvcode2/nvanimation.h"
#include "win/pvcrop.h"
#include "win/pvdifference.h"
#include "win/pvflatten.h"
#include "win/pvgate.h"
#include "win/pvload.h"
#include "win/pvpalette.h"
#include "win/pvprogress.h"
#include "win/pvwrite.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr PvPaletteMode km_Mode = PvPaletteMode::km_Normal;

// Merging nearly equal colours within a frame moves a channel by at most 2.
constexpr double km_SimilarColourError = 2.0;

// A canvas is put together from parts of several frames, so its mean may lie above that of each of them.
constexpr double km_PaletteErrorFactor = 2.0;

std::uint64_t DefaultMemoryLimit() {
    constexpr std::uint64_t km_AtLeast = std::uint64_t{1} << 30;
    return std::max(WnGetPhysicalMemory() / 2, km_AtLeast);
}

} // namespace

PvOptimizer::PvOptimizer(const WnPref& inPrefs, PvOptHost& inHost, const PvOptSettings& inSettings)
    : mPrefs(inPrefs), mHost(inHost), mSettings(inSettings) {
    if (mSettings.mMemoryLimit == 0)
        mSettings.mMemoryLimit = DefaultMemoryLimit();
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
    NvColor background;
    progress.BeginStep(0.2);
    std::unique_ptr<NvAnimation> animation = Load(inPath, progress, background);
    if (!animation)
        return inOriginalSize;
    PvColourAllowance allowance = RebuildColours(*animation, progress);
    FinishPass(*animation, background, allowance, progress);

    const std::uint32_t size = Measure(*animation);
    const bool isSmaller = size < inOriginalSize;
    if (isSmaller && !Replace(inPath, *animation, allowance, false))
        return inOriginalSize;
    animation.reset();
    if (!isSmaller)
        return ReoptimizeGIFFile(inPath, inOriginalSize, false);
    try {
        return ReoptimizeGIFFile(inPath, size, true);
    } catch (const NvErrorCode&) {
        return size; // the first pass's result is in place and whole
    } catch (const std::bad_alloc&) {
        return size;
    }
}

std::uint32_t PvOptimizer::ReoptimizeGIFFile(const char* inPath, std::uint32_t inSizeSoFar,
                                             bool inIsBackedUp) {
    PvProgress progress(mHost);
    progress.Restart(0.75);
    NvColor background;
    progress.BeginStep(0.85);
    const std::unique_ptr<NvAnimation> animation = Load(inPath, progress, background);
    if (!animation)
        return inSizeSoFar;
    PvColourAllowance allowance;
    Crop(*animation);
    FinishPass(*animation, background, allowance, progress);
    const std::uint32_t size = Measure(*animation);
    return size < inSizeSoFar && Replace(inPath, *animation, allowance, inIsBackedUp) ? size : inSizeSoFar;
}

// A file that is no sound GIF is left alone, with the reason kept; only a lack of memory, which says nothing
// about the file, and a wish to stop go further.
std::unique_ptr<NvAnimation> PvOptimizer::Load(const char* inPath, PvProgress& ioProgress,
                                               NvColor& outBackground) {
    try {
        std::unique_ptr<NvAnimation> animation =
            LoadAnimation(inPath, mSettings.mMemoryLimit, ioProgress, outBackground);
        mOutcome.mFrameCount = animation->GetFrameCount();
        return animation;
    } catch (const NvErrorCode& error) {
        if (error.GetCode() == NvErrorCode::km_OutOfMemory || error.GetCode() == NvErrorCode::km_Cancelled)
            throw;
        mOutcome.mLoadError = error;
        return nullptr;
    }
}

// The first pass, up to the point where both passes go on alike.
PvColourAllowance PvOptimizer::RebuildColours(NvAnimation& ioAnimation, PvProgress& ioProgress) {
    ioProgress.BeginStep(0.25);
    const double flattenError = FlattenRestoredFrames(ioAnimation, ioProgress);
    Crop(ioAnimation);
    MergeSimilarFrameColours(ioAnimation);
    ioProgress.BeginStep(0.4);
    const double paletteError = BuildGlobalPalette(ioAnimation, km_Mode, ioProgress);
    MergeDuplicateColours(ioAnimation);
    ioProgress.BeginStep(0.5);
    DifferenceFrames(ioAnimation, km_DifferenceTolerance, PvPaletteLimit(km_Mode), ioProgress);
    Crop(ioAnimation);
    OrderSharedTable(ioAnimation, PvPaletteLimit(km_Mode));

    PvColourAllowance allowance;
    allowance.mMeanError =
        flattenError + km_SimilarColourError + km_PaletteErrorFactor * paletteError + km_DifferenceTolerance;
    return allowance;
}

void PvOptimizer::FinishPass(NvAnimation& ioAnimation, const NvColor& inBackground,
                             PvColourAllowance& ioAllowance, PvProgress& ioProgress) {
    RestoreBackgroundIndex(ioAnimation, inBackground);
    NarrowTables(ioAnimation);
    ioProgress.BeginStep(ioProgress.GetEnd() + 0.15);
    ioAllowance.mMovedPixels += 2.0 * static_cast<double>(mSwapper.SwapAllFrames(ioAnimation, ioProgress));
}

// Animations are always cropped: nobody sees it. A single image changes its place in the screen, so that is
// for the user to decide.
void PvOptimizer::Crop(NvAnimation& ioAnimation) const {
    std::uint32_t allowsCrop = 0;
    mPrefs.ReadDWordDefault("ALLOWCROP", allowsCrop, 0);
    if (ioAnimation.GetFrameCount() > 1 || allowsCrop != 0)
        CropFrames(ioAnimation);
}

std::uint32_t PvOptimizer::Measure(NvAnimation& ioAnimation) {
    if (!mScratch)
        mScratch.emplace();
    return WriteOptimizedGIF(mScratch->GetPath(), ioAnimation);
}

/** @return false when a viewer would notice the replacement; the file is then as it was */
bool PvOptimizer::Replace(const char* inPath, NvAnimation& ioAnimation, const PvColourAllowance& inAllowance,
                          bool inIsBackedUp) {
    WnCheckReplaceable(inPath);
    WnSafeFile candidate(inPath);
    WriteOptimizedGIF(candidate.GetTemporaryPath(), ioAnimation);
    mOutcome.mGateReason = PvCompareGIFs(inPath, candidate.GetTemporaryPath(), inAllowance);
    if (!mOutcome.mGateReason.empty())
        return false;
    if (!inIsBackedUp)
        mHost.BackupFile(inPath);
    candidate.Commit();
    return true;
}
