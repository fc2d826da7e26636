#include "nvcode2/nvgifplayer.h"

#include <algorithm>
#include <array>
#include <optional>

#include "nvcode2/nvbytes.h"
#include "nvcode2/nvgifframe.h"

namespace {

using Colours = std::array<NvGIFPlayer::Pixel, 256>; // by index; 0: not drawn

Colours ColoursOf(const NvColorTable& inTable) {
    Colours colours;
    colours.fill(NvGIFPlayer::km_Covered);
    for (std::uint32_t i = 0; i < std::min<std::uint32_t>(inTable.GetSize(), 256); ++i)
        colours[i] = NvPackColor(inTable.GetColor(i)) | NvGIFPlayer::km_Covered;
    return colours;
}

/** Draws pixels side by side but those whose colour is 0. @return whether any looks different now */
bool DrawPixels(const std::uint8_t* inIndices, std::uint32_t inCount, const Colours& inColours,
                NvGIFPlayer::Pixel* ioPixels) {
    NvGIFPlayer::Pixel difference = 0;
    for (std::uint32_t i = 0; i < inCount; ++i) {
        const NvGIFPlayer::Pixel colour = inColours[inIndices[i]];
        const NvGIFPlayer::Pixel pixel = colour != 0 ? colour : ioPixels[i];
        difference |= pixel ^ ioPixels[i];
        ioPixels[i] = pixel;
    }
    return difference != 0;
}

/** Draws a row, eight pixels at a time.
 *  @param inPassOver  eight indices that draw nothing
 *  @return            the columns that look different now, or a few more */
NvGIFPlayer::Columns DrawRow(const std::uint8_t* inIndices, std::uint32_t inWidth, const Colours& inColours,
                             std::optional<std::uint64_t> inPassOver, NvGIFPlayer::Pixel* ioRow) {
    NvGIFPlayer::Columns changed;
    std::uint32_t x = 0;
    for (; x + 8 <= inWidth; x += 8)
        if (NvLoadLittleEndian(inIndices + x) != inPassOver &&
            DrawPixels(inIndices + x, 8, inColours, ioRow + x))
            changed.Add({x, x + 8});
    if (DrawPixels(inIndices + x, inWidth - x, inColours, ioRow + x))
        changed.Add({x, inWidth});
    return changed;
}

} // namespace

void NvGIFPlayer::Columns::Add(const Columns& inColumns) {
    if (inColumns.IsEmpty())
        return;
    const bool wasEmpty = IsEmpty();
    mFirst = wasEmpty ? inColumns.mFirst : std::min(mFirst, inColumns.mFirst);
    mEnd = wasEmpty ? inColumns.mEnd : std::max(mEnd, inColumns.mEnd);
}

NvGIFPlayer::NvGIFPlayer(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight)
    : mWidth(inScreenWidth),
      mHeight(inScreenHeight),
      mCanvas(std::size_t{inScreenWidth} * inScreenHeight),
      mChanged(inScreenHeight) {}

void NvGIFPlayer::ShowFrame(const NvGIFFrame& inFrame) {
    BeginFrame(inFrame.GetInfo());
    MarkChanged(mLastRect);
    const NvIndexedImage& image = inFrame.GetImage();
    const Colours colors = ColoursOf(image.GetColorTable());
    const NvConstPixelLock pixels(image);
    const NvConstPixelLock mask(inFrame.GetMask());
    const std::uint32_t width = image.GetWidth();
    for (std::uint32_t y = 0; y < image.GetHeight(); ++y) {
        const std::uint8_t* indices = pixels.Row(y);
        const std::uint8_t* bits = mask.Row(y);
        Pixel* row = PlaceOf(inFrame.GetInfo(), y);
        for (std::uint32_t x = 0; x < width; x += 8) {
            const unsigned drawn = bits[x / 8];
            const std::uint32_t end = std::min(width - x, 8U);
            if (drawn == 0xFF) {
                for (std::uint32_t i = 0; i < end; ++i)
                    row[x + i] = colors[indices[x + i]];
            } else if (drawn != 0) {
                for (std::uint32_t i = 0; i < end; ++i)
                    if (drawn & (0x80U >> i))
                        row[x + i] = colors[indices[x + i]];
            }
        }
    }
}

void NvGIFPlayer::ShowFrame(const NvIndexedImage& inImage, const NvGIFFrameInfo& inInfo) {
    BeginFrame(inInfo);
    Colours colours = ColoursOf(inImage.GetColorTable());
    std::optional<std::uint64_t> passOver;
    if (inInfo.mHasTransparency) {
        colours[inInfo.mTransparentIndex] = 0;
        passOver = NvEightOf(inInfo.mTransparentIndex);
    }
    const NvConstPixelLock pixels(inImage);
    for (std::uint32_t y = 0; y < inImage.GetHeight(); ++y) {
        const Columns changed =
            DrawRow(pixels.Row(y), inImage.GetWidth(), colours, passOver, PlaceOf(inInfo, y));
        if (!changed.IsEmpty())
            mChanged[inInfo.mTop + y].Add({inInfo.mLeft + changed.mFirst, inInfo.mLeft + changed.mEnd});
    }
}

void NvGIFPlayer::BeginFrame(const NvGIFFrameInfo& inInfo) {
    DisposeOfLastFrame();
    const NvRect rect{inInfo.mLeft, inInfo.mTop, inInfo.mLeft + inInfo.mWidth, inInfo.mTop + inInfo.mHeight};
    std::fill(mChanged.begin(), mChanged.end(), Columns());
    MarkChanged(mDisposedRect);
    mDisposedRect = NvRect{};
    mLastRect = rect;
    mLastDisposal = inInfo.mDisposal;
    if (inInfo.RestoresPrevious()) {
        mCovered.clear();
        for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
            const Pixel* row = Row(static_cast<std::uint32_t>(y));
            mCovered.insert(mCovered.end(), row + rect.left, row + rect.right);
        }
    }
}

void NvGIFPlayer::DisposeOfLastFrame() {
    const bool restores = mLastDisposal == NvGIFFrameInfo::km_DisposeRestore ||
                          mLastDisposal == NvGIFFrameInfo::km_DisposeRestoreOld;
    const bool clears = mLastDisposal == NvGIFFrameInfo::km_DisposeClear;
    mLastDisposal = NvGIFFrameInfo::km_DisposeUnspecified;
    if (!restores && !clears)
        return;
    mDisposedRect = mLastRect;
    const std::int32_t width = mLastRect.Width();
    const Pixel* covered = mCovered.data();
    for (std::int32_t y = mLastRect.top; y < mLastRect.bottom; ++y) {
        Pixel* row = mCanvas.data() + static_cast<std::size_t>(y) * mWidth + mLastRect.left;
        if (clears) {
            std::fill_n(row, width, Pixel{0});
        } else {
            std::copy_n(covered, width, row);
            covered += width;
        }
    }
}

void NvGIFPlayer::MarkChanged(const NvRect& inRect) {
    const Columns columns{static_cast<std::uint32_t>(inRect.left), static_cast<std::uint32_t>(inRect.right)};
    for (std::int32_t y = inRect.top; y < inRect.bottom; ++y)
        mChanged[static_cast<std::uint32_t>(y)].Add(columns);
}
