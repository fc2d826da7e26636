#include "win/optimizer/pvpasses.h"

#include <optional>
#include <utility>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/gif/nvanimation.h"
#include "nvcode2/gif/nvlentstringtable.h"
#include "win/optimizer/base/pvoptsettings.h"
#include "win/optimizer/base/pvprogress.h"
#include "win/optimizer/codes/pvfill.h"
#include "win/optimizer/codes/pvframecutter.h"
#include "win/optimizer/codes/pvswap.h"
#include "win/optimizer/colours/pvpalette.h"
#include "win/optimizer/colours/pvtableplan.h"
#include "win/optimizer/frames/pvcrop.h"
#include "win/optimizer/pvwrite.h"

namespace {

/** Cuts a frame's copy of its colour table behind the highest index in use, the transparent one included. The
 *  LZW code width follows from that. The shared table itself stays whole. */
void NarrowTable(NvGIFFrame& ioFrame) {
    NvIndexedImage& image = ioFrame.GetImage();
    image.GetColorTable().SetSize(image.GetHighestIndex() + 1U);
}

void ShareTable(NvGIFGlobalInfo& ioInfo, const NvColorTable& inTable) {
    if (!(ioInfo.mColorTable == inTable))
        ioInfo.mSortFlag = 0;
    ioInfo.mHasGlobalTable = inTable.GetSize() > 0 ? 1 : 0;
    ioInfo.mColorTable = inTable;
}

bool AnyFrameClears(const NvAnimation& inAnimation) {
    for (std::uint32_t i = 0; i < inAnimation.GetFrameCount(); ++i)
        if (inAnimation.GetPackedFrame(i).GetInfo().mDisposal == NvGIFFrameInfo::km_DisposeClear)
            return true;
    return false;
}

/** Writes an animation whose frames lack only what both passes end with. */
PvWritten Write(const char* inPath, NvAnimation& ioAnimation, const PvFrameFinisher& inPrepare,
                NvLZWStringTable& ioStrings, const PvOptSettings& inSettings, PvProgress& ioProgress) {
    PvPixelSwapper swapper(ioStrings);
    PvWritten written;
    written.mSize = WriteOptimizedGIF(inPath, ioAnimation, [&](std::uint32_t inIndex) {
        ioProgress.ReportFrame(inIndex, ioAnimation.GetFrameCount());
        PvFinishedFrame finished = inPrepare(inIndex);
        NvGIFFrame& frame = *finished.mFrame;
        NarrowTable(frame);
        const std::uint64_t steps = swapper.GetPixelSteps();
        written.mMovedPixels.push_back(inSettings.mIsLossless ? 0 : 2 * swapper.SwapIfWorthIt(frame));
        ioProgress.SpendWork(PvWorkOnFrame(frame) + (swapper.GetPixelSteps() - steps) * km_WorkPerSwapStep);
        return finished;
    });
    written.mSavedByMoving = swapper.GetSavedBytes();
    return written;
}

} // namespace

PvWritten PvWriteFirstPass(const char* inPath, NvAnimation& ioAnimation, PvTablePlan inPlan,
                           const NvColor& inBackground, const PvOptSettings& inSettings,
                           PvProgress& ioProgress) {
    ioProgress.BeginStep(PvProgress::km_FirstPassWritten);
    ShareTable(ioAnimation.GetGlobalInfo(), inPlan.mShared);
    RestoreBackgroundIndex(ioAnimation.GetGlobalInfo(), inBackground);
    NvLentStringTable strings;             // shared by all that need one in turn
    std::optional<PvUndrawnFiller> filler; // below a still picture there is nothing
    std::optional<PvFrameCutter> cutter;
    if (inSettings.mIsLossless)
        cutter.emplace(strings);
    if (ioAnimation.GetFrameCount() > 1 || cutter)
        filler.emplace(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight(), strings);
    const auto prepare = [&](std::uint32_t inIndex) {
        PvFinishedFrame finished{inPlan.MakeFrame(ioAnimation, inIndex)};
        const std::uint64_t codes = inPlan.GetKnownCodes(ioAnimation, inIndex);
        if (cutter)
            finished.mStrings = filler->Cut(*finished.mFrame, codes, *cutter);
        else if (filler)
            filler->FillUndrawnPixels(*finished.mFrame, codes);
        return finished;
    };
    return Write(inPath, ioAnimation, prepare, strings, inSettings, ioProgress);
}

PvWritten PvWriteSecondPass(const char* inPath, NvAnimation& ioAnimation, const PvOptSettings& inSettings,
                            PvProgress& ioProgress) {
    ioProgress.BeginStep(PvProgress::km_SecondPassWritten);
    // Frames could be read one by one here, but reading one may add its transparent index to the shared
    // table, which stands in front of all of them; so they have all been read by now, and packed.
    NvGIFGlobalInfo& info = ioAnimation.GetGlobalInfo();
    RestoreBackgroundIndex(info, info.GetBackgroundColor());
    const bool crops = ioAnimation.GetFrameCount() > 1 || inSettings.mCropsSingleImages;
    PvCropper cropper(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight(),
                      AnyFrameClears(ioAnimation));
    NvLentStringTable strings;
    std::optional<PvFrameCutter> cutter;
    if (inSettings.mIsLossless)
        cutter.emplace(strings);
    const auto crop = [&](std::unique_ptr<NvGIFFrame> inFrame) {
        std::unique_ptr<NvGIFFrame> cropped = crops ? cropper.Crop(*inFrame) : nullptr;
        if (!cropped)
            return inFrame;
        // The shared table is written by now, but cropping leaves every frame its transparent index.
        const std::uint32_t size = info.mColorTable.GetSize();
        cropped->UpdateTransparency(cropped->GetInfo().mHasLocalTable ? nullptr : &info.mColorTable, 256);
        NvAssert(info.mColorTable.GetSize() == size);
        return cropped;
    };
    const auto prepare = [&](std::uint32_t inIndex) {
        PvFinishedFrame finished{crop(ioAnimation.GetFrame(inIndex))};
        if (cutter)
            finished.mStrings = cutter->Cut(*finished.mFrame, 0, nullptr);
        return finished;
    };
    return Write(inPath, ioAnimation, prepare, strings, inSettings, ioProgress);
}
