#include "win/optimizer/codes/pvfillcanvas.h"

#include <algorithm>
#include <array>

#include "nvcode2/base/nvassert.h"

void PvFillCanvas::Prepare(const NvGIFFrame& inFrame) {
    DisposeOfLastFrame();
    const NvColorTable& table = inFrame.GetImage().GetColorTable();
    if (!(table == mTable))
        UseTable(table);
}

void PvFillCanvas::Draw(const NvGIFFrame& inFrame) {
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    mLastRect = {info.mLeft, info.mTop, info.mLeft + info.mWidth, info.mTop + info.mHeight};
    mLastDisposal = info.mDisposal;
    NvAssert(!info.RestoresPrevious());
    const NvConstPixelLock pixels(inFrame.GetImage());
    const Pixel transparent = inFrame.HasTransparency() ? inFrame.GetTransparentIndex() : km_None;
    const std::uint32_t width = info.mWidth;
    for (std::uint32_t y = 0; y < info.mHeight; ++y) {
        const std::uint8_t* indices = pixels.Row(y);
        Pixel* row = PlaceOf(info.mLeft, static_cast<std::int32_t>(info.mTop + y));
        for (std::uint32_t x = 0; x < width; ++x)
            row[x] = indices[x] == transparent ? row[x] : indices[x];
    }
}

void PvFillCanvas::DisposeOfLastFrame() {
    if (mLastDisposal == NvGIFFrameInfo::km_DisposeClear)
        for (std::int32_t y = mLastRect.top; y < mLastRect.bottom; ++y)
            std::fill(PlaceOf(mLastRect.left, y), PlaceOf(mLastRect.right, y), km_None);
    mLastDisposal = NvGIFFrameInfo::km_DisposeUnspecified;
}

// Frames that share a table may still see more or less of it, so entries keep their places where they can.
void PvFillCanvas::UseTable(const NvColorTable& inTable) {
    constexpr std::uint32_t km_Indices = 256;
    const std::uint32_t size = std::min(inTable.GetSize(), km_Indices);
    std::array<Pixel, km_Indices + 1> map;
    map.fill(km_None);
    bool hasMoved = false;
    for (std::uint32_t from = 0; from < std::min(mTable.GetSize(), km_Indices); ++from) {
        const NvColor colour = mTable.GetColor(from);
        const NvColor* const colours = inTable.GetColors();
        const bool stays = from < size && colours[from] == colour;
        const auto to =
            stays ? from : static_cast<std::uint32_t>(std::find(colours, colours + size, colour) - colours);
        if (to < size)
            map[from] = static_cast<Pixel>(to);
        hasMoved = hasMoved || !stays;
    }
    if (hasMoved)
        for (Pixel& pixel : mPixels)
            pixel = map[pixel];
    mTable = inTable;
}
