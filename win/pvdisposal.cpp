#include "win/pvdisposal.h"

#include "nvcode2/nvanimation.h"
#include "win/pvcoverage.h"

void LeaveFramesDrawnOver(NvAnimation& ioAnimation) {
    if (!PvAnyFrameClears(ioAnimation))
        return;
    PvCoverage coverage(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight());
    for (std::uint32_t i = 0; i + 1 < ioAnimation.GetFrameCount(); ++i) {
        NvGIFFrame& frame = ioAnimation.GetFrame(i);
        coverage.Draw(frame);
        if (PvClears(frame) && coverage.IsDrawnOver(frame.GetScreenRect(), ioAnimation.GetFrame(i + 1)))
            frame.GetInfo().mDisposal = NvGIFFrameInfo::km_DisposeLeave;
        coverage.Dispose(frame);
    }
}
