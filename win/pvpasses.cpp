#include "win/pvpasses.h"

#include "nvcode2/nvanimation.h"
#include "win/pvcrop.h"
#include "win/pvdifference.h"
#include "win/pvdisposal.h"
#include "win/pvfill.h"
#include "win/pvflatten.h"
#include "win/pvlossless.h"
#include "win/pvlzwestimate.h"
#include "win/pvpalette.h"
#include "win/pvprogress.h"
#include "win/pvsimilar.h"

namespace {

constexpr PvPaletteMode km_Mode = PvPaletteMode::km_Normal;
constexpr std::uint32_t km_MaxColours = 256;

// A canvas is put together from parts of several frames, so its mean may lie above that of each of them by
// this much of it.
constexpr double km_CanvasErrorShare = 1.0;

// Animations are always cropped: nobody sees it. A single image changes its place in the screen, so that is
// for the user to decide.
void Crop(NvAnimation& ioAnimation, const PvPassOptions& inOptions) {
    if (ioAnimation.GetFrameCount() > 1 || inOptions.mCropsSingleImages)
        CropFrames(ioAnimation);
}

PvColourAllowance RebuildColours(NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                                 PvProgress& ioProgress) {
    ioProgress.BeginStep(0.25);
    const double flattenError = FlattenRestoredFrames(ioAnimation, ioProgress);
    LeaveFramesDrawnOver(ioAnimation);
    Crop(ioAnimation, inOptions);
    const double mergeError = MergeSimilarFrameColours(ioAnimation);
    ioProgress.BeginStep(0.35);
    const double paletteError = BuildGlobalPalette(ioAnimation, km_Mode, ioProgress);
    MergeDuplicateColours(ioAnimation);
    ioProgress.BeginStep(0.45);
    DifferenceFrames(ioAnimation, inOptions.mTolerance, PvPaletteLimit(km_Mode), ioProgress);
    Crop(ioAnimation, inOptions);
    OrderSharedTable(ioAnimation, PvPaletteLimit(km_Mode));

    PvColourAllowance allowance;
    allowance.mMeanError = flattenError + mergeError + paletteError;
    if (ioAnimation.GetFrameCount() > 1)
        allowance.mMeanError += km_CanvasErrorShare * (mergeError + paletteError) + inOptions.mTolerance;
    return allowance;
}

// The allowance is none at all: what cannot be done exactly, the gate refuses.
PvColourAllowance RebuildTables(NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                                PvProgress& ioProgress) {
    ioProgress.BeginStep(0.25);
    FlattenRestoredFrames(ioAnimation, ioProgress);
    LeaveFramesDrawnOver(ioAnimation);
    Crop(ioAnimation, inOptions);
    ioProgress.BeginStep(0.35);
    DifferenceFrames(ioAnimation, 0, km_MaxColours, ioProgress);
    Crop(ioAnimation, inOptions);
    ioProgress.BeginStep(0.45);
    if (ShareExactColours(ioAnimation, ioProgress))
        OrderSharedTable(ioAnimation, km_MaxColours);
    return PvColourAllowance();
}

// What is left to do, drawing undrawn pixels and exchanging others, saves some 5 % as a rule. A fifth is far
// more than that.
bool IsHopeless(const NvAnimation& inAnimation, std::uint32_t inSizeToBeat) {
    const std::uint64_t enough = std::uint64_t{inSizeToBeat} * 8 * 5 / 4;
    return PvLZWEstimator().EstimateFrames(inAnimation, enough) >= enough;
}

} // namespace

std::optional<PvColourAllowance> PvPasses::RunFirst(NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                                                    PvProgress& ioProgress) {
    const NvColor background = ioAnimation.GetGlobalInfo().GetBackgroundColor();
    PvColourAllowance allowance = inOptions.mIsLossless ? RebuildTables(ioAnimation, inOptions, ioProgress)
                                                        : RebuildColours(ioAnimation, inOptions, ioProgress);
    if (inOptions.mSizeToBeat > 0 && IsHopeless(ioAnimation, inOptions.mSizeToBeat))
        return std::nullopt;
    ioProgress.BeginStep(0.65);
    FillUndrawnPixels(ioAnimation, ioProgress);
    ioProgress.BeginStep(0.75);
    Finish(ioAnimation, background, inOptions, allowance, ioProgress);
    return allowance;
}

PvColourAllowance PvPasses::RunSecond(NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                                      PvProgress& ioProgress) {
    const NvColor background = ioAnimation.GetGlobalInfo().GetBackgroundColor();
    PvColourAllowance allowance;
    Crop(ioAnimation, inOptions);
    ioProgress.BeginStep(0.95);
    Finish(ioAnimation, background, inOptions, allowance, ioProgress);
    return allowance;
}

void PvPasses::Finish(NvAnimation& ioAnimation, const NvColor& inBackground, const PvPassOptions& inOptions,
                      PvColourAllowance& ioAllowance, PvProgress& ioProgress) {
    RestoreBackgroundIndex(ioAnimation, inBackground);
    NarrowTables(ioAnimation);
    if (!inOptions.mIsLossless)
        ioAllowance.mMovedPixels = 2.0 * static_cast<double>(mSwapper.SwapAllFrames(ioAnimation, ioProgress));
}
