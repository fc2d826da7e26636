#include "win/pvcrop.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "nvcode2/nvanimation.h"
#include "win/pvcoverage.h"

namespace {

NvRect UnionOfTwo(const NvRect& inFirst, const NvRect& inSecond) {
    if (inFirst.IsEmpty())
        return inSecond;
    return inSecond.IsEmpty() ? inFirst : NvUnionRect(inFirst, inSecond);
}

} // namespace

void CropFrames(NvAnimation& ioAnimation) {
    const bool needsCoverage = PvAnyFrameClears(ioAnimation);
    PvCoverage coverage(needsCoverage ? ioAnimation.GetScreenWidth() : 0,
                        needsCoverage ? ioAnimation.GetScreenHeight() : 0);
    for (std::uint32_t i = 0; i < ioAnimation.GetFrameCount(); ++i) {
        const NvGIFFrame& frame = ioAnimation.GetFrame(i);
        const NvGIFFrameInfo& info = frame.GetInfo();
        NvRect bounds = frame.FindDrawnBounds();
        if (PvClears(frame))
            bounds = UnionOfTwo(bounds, coverage.BoundsUnder(frame));
        if (needsCoverage && !info.RestoresPrevious()) {
            coverage.Draw(frame);
            coverage.Dispose(frame);
        }
        if (bounds.IsEmpty())
            bounds = {0, 0, 1, 1};
        if (bounds == NvRect{0, 0, info.mWidth, info.mHeight})
            continue;
        std::unique_ptr<NvGIFFrame> cropped = frame.CropCopy(bounds);
        cropped->UpdateTransparency(ioAnimation.GetSharedTableOf(*cropped), 256);
        ioAnimation.ReplaceFrame(i, std::move(cropped));
    }
}
