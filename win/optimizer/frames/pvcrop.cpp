#include "win/optimizer/frames/pvcrop.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "nvcode2/gif/nvgifframe.h"

namespace {

NvRect UnionOfTwo(const NvRect& inFirst, const NvRect& inSecond) {
    if (inFirst.IsEmpty())
        return inSecond;
    return inSecond.IsEmpty() ? inFirst : NvUnionRect(inFirst, inSecond);
}

} // namespace

PvCropper::PvCropper(std::uint32_t inWidth, std::uint32_t inHeight, bool inAnyClears) {
    if (inAnyClears)
        mCoverage.emplace(inWidth, inHeight);
}

std::unique_ptr<NvGIFFrame> PvCropper::Crop(const NvGIFFrame& inFrame) {
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    NvRect bounds = inFrame.FindDrawnBounds();
    if (mCoverage && PvClears(inFrame))
        bounds = UnionOfTwo(bounds, mCoverage->BoundsUnder(inFrame));
    if (mCoverage && !info.RestoresPrevious()) {
        mCoverage->Draw(inFrame);
        mCoverage->Dispose(inFrame);
    }
    if (bounds.IsEmpty())
        bounds = {0, 0, 1, 1};
    if (bounds == NvRect{0, 0, info.mWidth, info.mHeight})
        return nullptr;
    return inFrame.CropCopy(bounds);
}
