#include "win/pvpasses.h"

#include "nvcode2/nvanimation.h"
#include "win/pvcrop.h"
#include "win/pvfill.h"
#include "win/pvlzwestimate.h"
#include "win/pvpalette.h"
#include "win/pvprogress.h"

namespace {

// What is left to do, drawing undrawn pixels and exchanging others, saves some 5 % as a rule. A fifth is far
// more than that.
bool IsHopeless(const NvAnimation& inAnimation, std::uint32_t inSizeToBeat) {
    const std::uint64_t enough = std::uint64_t{inSizeToBeat} * 8 * 5 / 4;
    return PvLZWEstimator().EstimateFrames(inAnimation, enough) >= enough;
}

} // namespace

std::optional<std::uint64_t> PvPasses::RunFirst(NvAnimation& ioAnimation, const NvColor& inBackground,
                                                const PvPassOptions& inOptions, std::uint32_t inSizeToBeat,
                                                PvProgress& ioProgress) {
    if (inSizeToBeat > 0 && IsHopeless(ioAnimation, inSizeToBeat))
        return std::nullopt;
    ioProgress.BeginStep(0.65);
    FillUndrawnPixels(ioAnimation, ioProgress);
    ioProgress.BeginStep(0.75);
    return Finish(ioAnimation, inBackground, inOptions, ioProgress);
}

std::uint64_t PvPasses::RunSecond(NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                                  PvProgress& ioProgress) {
    const NvColor background = ioAnimation.GetGlobalInfo().GetBackgroundColor();
    if (ioAnimation.GetFrameCount() > 1 || inOptions.mCropsSingleImages)
        CropFrames(ioAnimation);
    ioProgress.BeginStep(0.95);
    return Finish(ioAnimation, background, inOptions, ioProgress);
}

std::uint64_t PvPasses::Finish(NvAnimation& ioAnimation, const NvColor& inBackground,
                               const PvPassOptions& inOptions, PvProgress& ioProgress) {
    RestoreBackgroundIndex(ioAnimation, inBackground);
    NarrowTables(ioAnimation);
    return inOptions.mIsLossless ? 0 : 2 * mSwapper.SwapAllFrames(ioAnimation, ioProgress);
}
