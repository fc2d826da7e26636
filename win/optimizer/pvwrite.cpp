#include "win/optimizer/pvwrite.h"

#include "nvcode2/gif/nvanimation.h"
#include "nvcode2/gif/nvgiffile.h"

namespace {

bool NeedsGraphicControl(const NvGIFFrameInfo& inInfo, bool inIsStill) {
    const bool hasDisposal = inInfo.mDisposal != 0 && !inIsStill;
    return inInfo.mDelay != 0 || hasDisposal || inInfo.mHasTransparency || inInfo.mUserInput;
}

} // namespace

std::uint32_t WriteOptimizedGIF(const char* inPath, NvAnimation& ioAnimation,
                                const PvFrameFinisher& inFinish) {
    NvGIFGlobalInfo& global = ioAnimation.GetGlobalInfo();
    const bool isStill = ioAnimation.GetFrameCount() == 1;
    NvGIFFile file;
    file.Open(NvFileLocator(inPath), NvFile::km_WritePerm);
    file.SetScreenSize(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight());
    file.SetNumberOfFrames(ioAnimation.GetFrameCount());
    file.SetGlobalInfo(ioAnimation.ShareGlobalInfo());
    for (std::uint32_t i = 0; i < ioAnimation.GetFrameCount(); ++i) {
        const PvFinishedFrame finished = inFinish(i);
        const NvGIFFrame& frame = *finished.mFrame;
        NvGIFFrameInfo& info = finished.mFrame->GetInfo();
        info.mHasGraphicControl = NeedsGraphicControl(info, isStill) ? 1 : 0;
        if (info.mHasLocalTable)
            info.mColorTable = frame.GetImage().GetColorTable();
        // The header is written with the first frame; animations are always of the later version.
        if (info.mHasGraphicControl || !isStill || global.mHasLoop || global.mComments.GetFirst())
            global.mVersionFlag = 1;
        if (finished.mStrings)
            file.CutNextFrame(*finished.mStrings);
        file.WriteFrame(frame.GetImage(), info);
    }
    file.Close();
    return file.GetWrittenLength();
}
