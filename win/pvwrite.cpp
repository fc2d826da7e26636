#include "win/pvwrite.h"

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvgiffile.h"

namespace {

bool NeedsGraphicControl(const NvGIFFrameInfo& inInfo, bool inIsStill) {
    const bool hasDisposal = inInfo.mDisposal != 0 && !inIsStill;
    return inInfo.mDelay != 0 || hasDisposal || inInfo.mHasTransparency || inInfo.mUserInput;
}

} // namespace

std::uint32_t WriteOptimizedGIF(const char* inPath, NvAnimation& ioAnimation) {
    NvGIFGlobalInfo& global = ioAnimation.GetGlobalInfo();
    const bool isStill = ioAnimation.GetFrameCount() == 1;
    bool needs89a = global.mHasLoop || global.mComments.GetFirst();
    for (NvGIFFrame& frame : ioAnimation) {
        NvGIFFrameInfo& info = frame.GetInfo();
        info.mHasGraphicControl = NeedsGraphicControl(info, isStill) ? 1 : 0;
        needs89a = needs89a || info.mHasGraphicControl;
        if (info.mHasLocalTable)
            info.mColorTable = frame.GetImage().GetColorTable();
    }
    if (needs89a)
        global.mVersionFlag = 1;

    NvGIFFile file;
    file.Open(NvFileLocator(inPath), NvFile::km_WritePerm);
    file.SetScreenSize(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight());
    file.SetNumberOfFrames(ioAnimation.GetFrameCount());
    file.SetGlobalInfo(ioAnimation.ShareGlobalInfo());
    for (const NvGIFFrame& frame : ioAnimation)
        file.WriteFrame(frame.GetImage(), frame.GetInfo());
    file.Close();
    return file.GetWrittenLength();
}
