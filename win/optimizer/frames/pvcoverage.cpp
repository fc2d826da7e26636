#include "win/optimizer/frames/pvcoverage.h"

#include <algorithm>
#include <utility>

#include "nvcode2/gif/nvgifframe.h"

bool PvClears(const NvGIFFrame& inFrame) {
    return inFrame.GetInfo().mDisposal == NvGIFFrameInfo::km_DisposeClear;
}

PvCoverage::PvCoverage(std::uint32_t inWidth, std::uint32_t inHeight)
    : mWidth(inWidth), mCovered(std::size_t{inWidth} * inHeight, 0) {}

void PvCoverage::Draw(const NvGIFFrame& inFrame) {
    const NvConstPixelLock mask(inFrame.GetMask());
    for (std::uint32_t y = 0; y < inFrame.GetHeight(); ++y) {
        std::uint8_t* row = RowOf(inFrame, y);
        const std::uint8_t* bits = mask.Row(y);
        for (std::uint32_t x = 0; x < inFrame.GetWidth(); ++x)
            row[x] = static_cast<std::uint8_t>(row[x] | ((bits[x / 8] >> (7 - x % 8)) & 1U));
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
    const NvConstPixelLock mask(inNext.GetMask());
    for (std::int32_t y = inRect.top; y < inRect.bottom; ++y) {
        const std::uint8_t* row = mCovered.data() + static_cast<std::size_t>(y) * mWidth;
        const bool isInside = next.top <= y && y < next.bottom;
        const std::uint8_t* bits = isInside ? mask.Row(static_cast<std::uint32_t>(y - next.top)) : nullptr;
        for (std::int32_t x = inRect.left; x < inRect.right; ++x) {
            if (row[x] == 0)
                continue;
            const auto column = static_cast<std::uint32_t>(x - next.left); // wraps round left of the frame
            if (!bits || column >= inNext.GetWidth() || (bits[column / 8] >> (7 - column % 8) & 1U) == 0)
                return false;
        }
    }
    return true;
}

const std::uint8_t* PvCoverage::RowOf(const NvGIFFrame& inFrame, std::uint32_t inY) const {
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    return mCovered.data() + (std::size_t{info.mTop} + inY) * mWidth + info.mLeft;
}

std::uint8_t* PvCoverage::RowOf(const NvGIFFrame& inFrame, std::uint32_t inY) {
    return const_cast<std::uint8_t*>(std::as_const(*this).RowOf(inFrame, inY));
}
