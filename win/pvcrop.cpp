#include "win/pvcrop.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvmaskrow.h"

namespace {

/** Which pixels of the screen are covered between two frames. */
class Coverage {
public:
    Coverage(std::uint32_t inWidth, std::uint32_t inHeight)
        : mWidth(inWidth), mCovered(std::size_t{inWidth} * inHeight, 0) {}

    /** The frame is drawn and disposed of. */
    void Pass(const NvGIFFrame& inFrame) {
        const NvGIFFrameInfo& info = inFrame.GetInfo();
        if (info.RestoresPrevious())
            return;
        const bool clears = info.mDisposal == NvGIFFrameInfo::km_DisposeClear;
        const NvConstPixelLock mask(inFrame.GetMask());
        for (std::uint32_t y = 0; y < info.mHeight; ++y) {
            std::uint8_t* row = RowOf(info, y);
            const std::uint8_t* bits = mask.Row(y);
            if (clears) {
                std::fill_n(row, info.mWidth, std::uint8_t{0});
                continue;
            }
            for (std::uint32_t x = 0; x < info.mWidth; ++x)
                row[x] = static_cast<std::uint8_t>(row[x] | ((bits[x / 8] >> (7 - x % 8)) & 1U));
        }
    }

    /** The smallest rectangle, in the frame's pixels, that holds every covered pixel under it; may be empty.
     */
    NvRect BoundsUnder(const NvGIFFrame& inFrame) {
        const NvGIFFrameInfo& info = inFrame.GetInfo();
        NvRect bounds{info.mWidth, info.mHeight, 0, 0};
        for (std::int32_t y = 0; y < info.mHeight; ++y) {
            const std::uint8_t* row = RowOf(info, static_cast<std::uint32_t>(y));
            const std::uint8_t* end = row + info.mWidth;
            const std::uint8_t* first = std::find(row, end, std::uint8_t{1});
            if (first == end)
                continue;
            const std::uint8_t* last = end;
            while (last[-1] == 0)
                --last;
            bounds.left = std::min(bounds.left, static_cast<std::int32_t>(first - row));
            bounds.right = std::max(bounds.right, static_cast<std::int32_t>(last - row));
            bounds.top = std::min(bounds.top, y);
            bounds.bottom = y + 1;
        }
        return bounds.IsEmpty() ? NvRect{} : bounds;
    }

private:
    std::uint8_t* RowOf(const NvGIFFrameInfo& inInfo, std::uint32_t inY) {
        return mCovered.data() + (std::size_t{inInfo.mTop} + inY) * mWidth + inInfo.mLeft;
    }

    std::uint32_t mWidth;
    std::vector<std::uint8_t> mCovered; // 1 or 0 per screen pixel, row-major
};

bool Clears(const NvGIFFrame& inFrame) {
    return inFrame.GetInfo().mDisposal == NvGIFFrameInfo::km_DisposeClear;
}

bool AnyFrameClears(const NvAnimation& inAnimation) {
    for (const NvGIFFrame& frame : inAnimation)
        if (Clears(frame))
            return true;
    return false;
}

NvRect UnionOfTwo(const NvRect& inFirst, const NvRect& inSecond) {
    if (inFirst.IsEmpty())
        return inSecond;
    return inSecond.IsEmpty() ? inFirst : NvUnionRect(inFirst, inSecond);
}

} // namespace

void CropFrames(NvAnimation& ioAnimation) {
    const bool needsCoverage = AnyFrameClears(ioAnimation);
    Coverage coverage(needsCoverage ? ioAnimation.GetScreenWidth() : 0,
                      needsCoverage ? ioAnimation.GetScreenHeight() : 0);
    for (std::uint32_t i = 0; i < ioAnimation.GetFrameCount(); ++i) {
        const NvGIFFrame& frame = ioAnimation.GetFrame(i);
        const NvGIFFrameInfo& info = frame.GetInfo();
        NvRect bounds = frame.FindDrawnBounds();
        if (Clears(frame))
            bounds = UnionOfTwo(bounds, coverage.BoundsUnder(frame));
        if (needsCoverage)
            coverage.Pass(frame);
        if (bounds.IsEmpty())
            bounds = {0, 0, 1, 1};
        if (bounds == NvRect{0, 0, info.mWidth, info.mHeight})
            continue;
        std::unique_ptr<NvGIFFrame> cropped = frame.CropCopy(bounds);
        cropped->UpdateTransparency(ioAnimation.GetSharedTableOf(*cropped), 256);
        ioAnimation.ReplaceFrame(i, std::move(cropped));
    }
}
