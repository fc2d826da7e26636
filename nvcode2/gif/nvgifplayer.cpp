#include "nvcode2/gif/nvgifplayer.h"

#include <algorithm>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/image/nvmaskrow.h"

NvGIFPlayer::NvGIFPlayer(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight)
    : mCanvas(inScreenWidth, inScreenHeight), mChanged(inScreenHeight) {}

void NvGIFPlayer::ShowFrame(const NvGIFFrame& inFrame) {
    BeginFrame(inFrame.GetInfo(), inFrame.GetImage().GetColorTable());
    DrawFrame(inFrame);
}

void NvGIFPlayer::BeginFrame(const NvGIFFrameInfo& inInfo, const NvColorTable& inTable) {
    DisposeOfLastFrame();
    mCanvas.UseColours(inTable,
                       inInfo.mHasTransparency ? inInfo.mTransparentIndex : NvGIFCanvas::km_DrawsAll);
    ForEachRow(GetChangedRows(), [this](std::uint32_t inY) { mChanged[inY] = Columns(); });
    mDisposedRows = RowsOf(mDisposedRect);
    const Columns disposed{static_cast<std::uint32_t>(mDisposedRect.left),
                           static_cast<std::uint32_t>(mDisposedRect.right)};
    for (std::int32_t y = mDisposedRect.top; y < mDisposedRect.bottom; ++y)
        mChanged[static_cast<std::uint32_t>(y)] = disposed;
    mDisposedRect = NvRect{};
    mLastRect = {inInfo.mLeft, inInfo.mTop, inInfo.mLeft + inInfo.mWidth, inInfo.mTop + inInfo.mHeight};
    mLastDisposal = inInfo.mDisposal;
    if (inInfo.RestoresPrevious())
        mCanvas.Save(mLastRect);
}

void NvGIFPlayer::DrawRow(std::uint32_t inRow, const std::uint8_t* inIndices, std::uint32_t inCount) {
    Draw(0, inRow, inIndices, inCount);
}

void NvGIFPlayer::DrawFrame(const NvGIFFrame& inFrame) {
    const NvIndexedImage& image = inFrame.GetImage();
    mCanvas.UseColours(image.GetColorTable(), NvGIFCanvas::km_DrawsAll);
    const NvConstPixelLock pixels(image);
    const NvConstPixelLock mask(inFrame.GetMask());
    for (std::uint32_t y = 0; y < image.GetHeight(); ++y)
        NvForEachRun(mask.Row(y), image.GetWidth(), true, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            Draw(inFirst, y, pixels.Row(y) + inFirst, inEnd - inFirst);
        });
}

void NvGIFPlayer::Draw(std::uint32_t inX, std::uint32_t inRow, const std::uint8_t* inIndices,
                       std::uint32_t inCount) {
    const std::uint32_t y = static_cast<std::uint32_t>(mLastRect.top) + inRow;
    mChanged[y].Add(mCanvas.Draw(static_cast<std::uint32_t>(mLastRect.left) + inX, y, inIndices, inCount));
}

void NvGIFPlayer::DisposeOfLastFrame() {
    const bool restores = mLastDisposal == NvGIFFrameInfo::km_DisposeRestore ||
                          mLastDisposal == NvGIFFrameInfo::km_DisposeRestoreOld;
    const bool clears = mLastDisposal == NvGIFFrameInfo::km_DisposeClear;
    mLastDisposal = NvGIFFrameInfo::km_DisposeUnspecified;
    if (!restores && !clears)
        return;
    mDisposedRect = mLastRect;
    if (clears)
        mCanvas.Clear(mLastRect);
    else
        mCanvas.Restore(mLastRect);
}
