#include "win/optimizer/pvpasses.h"

#include <optional>
#include <utility>

#include "nvcode2/gif/nvanimation.h"
#include "win/optimizer/base/pvprogress.h"
#include "win/optimizer/codes/pvfill.h"
#include "win/optimizer/codes/pvswap.h"
#include "win/optimizer/colours/pvpalette.h"
#include "win/optimizer/colours/pvtableplan.h"
#include "win/optimizer/frames/pvcrop.h"
#include "win/optimizer/pvwrite.h"

namespace {

/** Cuts a frame's own colour table behind the highest index in use, the transparent one included, which is
 *  what the LZW code width follows from. The shared table stays whole. */
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

/** Writes an animation whose frames are done but for what both passes end with. */
PvWritten Write(const char* inPath, NvAnimation& ioAnimation, const PvFrameFinisher& inPrepare,
                NvLZWStringTable& ioStrings, const PvPassOptions& inOptions, PvProgress& ioProgress) {
    PvPixelSwapper swapper(ioStrings);
    PvWritten written;
    written.mSize = WriteOptimizedGIF(inPath, ioAnimation, [&](std::uint32_t inIndex) {
        ioProgress.ReportFrame(inIndex, ioAnimation.GetFrameCount());
        std::unique_ptr<NvGIFFrame> frame = inPrepare(inIndex);
        NarrowTable(*frame);
        if (!inOptions.mIsLossless)
            written.mMovedPixels += 2 * swapper.SwapIfWorthIt(*frame);
        return frame;
    });
    return written;
}

} // namespace

PvWritten PvRunFirstPass(const char* inPath, NvAnimation& ioAnimation, PvTablePlan inPlan,
                         const NvColor& inBackground, const PvPassOptions& inOptions,
                         PvProgress& ioProgress) {
    ioProgress.BeginStep(0.75);
    ShareTable(ioAnimation.GetGlobalInfo(), inPlan.mShared);
    RestoreBackgroundIndex(ioAnimation.GetGlobalInfo(), inBackground);
    NvLZWStringTable strings;              // one for all that needs one by turns
    std::optional<PvUndrawnFiller> filler; // below a still picture there is nothing
    if (ioAnimation.GetFrameCount() > 1)
        filler.emplace(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight(), strings);
    const auto prepare = [&](std::uint32_t inIndex) {
        std::unique_ptr<NvGIFFrame> frame = inPlan.MakeFrame(ioAnimation, inIndex);
        if (filler)
            filler->FillUndrawnPixels(*frame);
        return frame;
    };
    return Write(inPath, ioAnimation, prepare, strings, inOptions, ioProgress);
}

PvWritten PvRunSecondPass(const char* inPath, NvAnimation& ioAnimation, const PvPassOptions& inOptions,
                          PvProgress& ioProgress) {
    ioProgress.BeginStep(0.95);
    NvGIFGlobalInfo& info = ioAnimation.GetGlobalInfo();
    RestoreBackgroundIndex(info, info.GetBackgroundColor());
    const bool crops = ioAnimation.GetFrameCount() > 1 || inOptions.mCropsSingleImages;
    PvCropper cropper(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight(),
                      AnyFrameClears(ioAnimation));
    const auto prepare = [&](std::uint32_t inIndex) {
        std::unique_ptr<NvGIFFrame> frame = ioAnimation.GetFrame(inIndex);
        std::unique_ptr<NvGIFFrame> cropped = crops ? cropper.Crop(*frame) : nullptr;
        if (!cropped)
            return frame;
        cropped->UpdateTransparency(cropped->GetInfo().mHasLocalTable ? nullptr : &info.mColorTable, 256);
        return cropped;
    };
    NvLZWStringTable strings;
    return Write(inPath, ioAnimation, prepare, strings, inOptions, ioProgress);
}
