#include "win/optimizer/frames/pvcoverage.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/image/nvmaskrow.h"

bool PvClears(const NvGIFFrame& inFrame) {
    return inFrame.GetInfo().mDisposal == NvGIFFrameInfo::km_DisposeClear;
}

PvCoverage::PvCoverage(std::uint32_t inWidth, std::uint32_t inHeight)
    : mWidth(inWidth), mCovered(std::size_t{inWidth} * inHeight, 0) {}

void PvCoverage::Draw(const NvGIFFrame& inFrame) {
    const NvConstPixelLock mask(inFrame.GetMask());
    for (std::uint32_t y = 0; y < inFrame.GetHeight(); ++y) {
        std::uint8_t* row = RowOf(inFrame, y);
        NvForEachRun(mask.Row(y), inFrame.GetWidth(), true, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            std::memset(row + inFirst, 1, inEnd - inFirst);
        });
    }
}

void PvCoverage::Dispose(const NvGIFFrame& inFrame) {
    if (PvClears(inFrame))
        for (std::uint32_t y = 0; y < inFrame.GetHeight(); ++y)
            std::fill_n(RowOf(inFrame, y), inFrame.GetWidth(), std::uint8_t{0});
}

NvRect PvCoverage::BoundsUnder(const NvGIFFrame& inFrame) const {
    const auto width = static_cast<std::int32_t>(inFrame.GetWidth());
    const auto height = static_cast<std::int32_t>(inFrame.GetHeight());
    NvRect bounds{width, height, 0, 0};
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* row = RowOf(inFrame, static_cast<std::uint32_t>(y));
        const std::uint8_t* end = row + width;
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

bool PvCoverage::IsDrawnOver(const NvRect& inRect, const NvGIFFrame& inNext) const {
    const NvRect next = inNext.GetScreenRect();
    const std::int32_t left = std::max(inRect.left, next.left);
    const std::int32_t right = std::min(inRect.right, next.right);
    const NvConstPixelLock mask(inNext.GetMask());
    for (std::int32_t y = inRect.top; y < inRect.bottom; ++y) {
        if (left >= right || y < next.top || y >= next.bottom) {
            if (IsAnyCovered(y, inRect.left, inRect.right))
                return false;
            continue;
        }
        bool isAnyLeft = IsAnyCovered(y, inRect.left, left) || IsAnyCovered(y, right, inRect.right);
        NvForEachRun(mask.Row(static_cast<std::uint32_t>(y - next.top)),
                     static_cast<std::uint32_t>(right - next.left), false,
                     [&](std::uint32_t inFirst, std::uint32_t inEnd) {
                         const auto first = next.left + static_cast<std::int32_t>(inFirst);
                         const auto end = next.left + static_cast<std::int32_t>(inEnd);
                         isAnyLeft = isAnyLeft || IsAnyCovered(y, std::max(first, left), end);
                     });
        if (isAnyLeft)
            return false;
    }
    return true;
}

bool PvCoverage::IsAnyCovered(std::int32_t inY, std::int32_t inFirst, std::int32_t inEnd) const {
    const std::uint8_t* row = mCovered.data() + static_cast<std::size_t>(inY) * mWidth;
    return inFirst < inEnd &&
           std::memchr(row + inFirst, 1, static_cast<std::size_t>(inEnd - inFirst)) != nullptr;
}

const std::uint8_t* PvCoverage::RowOf(const NvGIFFrame& inFrame, std::uint32_t inY) const {
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    return mCovered.data() + (std::size_t{info.mTop} + inY) * mWidth + info.mLeft;
}

std::uint8_t* PvCoverage::RowOf(const NvGIFFrame& inFrame, std::uint32_t inY) {
    return const_cast<std::uint8_t*>(std::as_const(*this).RowOf(inFrame, inY));
}
