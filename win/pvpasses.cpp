#include "win/pvpasses.h"

#include "nvcode2/nvanimation.h"
#include "win/pvcrop.h"
#include "win/pvfill.h"
#include "win/pvpalette.h"
#include "win/pvprogress.h"

std::uint64_t PvPasses::RunFirst(NvAnimation& ioAnimation, const NvColor& inBackground,
                                 const PvPassOptions& inOptions, PvProgress& ioProgress) {
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
