#include "nvcode2/nvgifplayer.h"

#include <algorithm>
#include <array>

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

void DrawRow(const std::uint8_t* inIndices, std::uint32_t inWidth, const Colours& inColours,
             NvGIFPlayer::Pixel* outRow) {
    for (std::uint32_t x = 0; x < inWidth; ++x)
        outRow[x] = inColours[inIndices[x]];
}

void DrawRowBut(std::uint8_t inTransparent, const std::uint8_t* inIndices, std::uint32_t inWidth,
                const Colours& inColours, NvGIFPlayer::Pixel* outRow) {
    const auto draw = [&](std::uint32_t inX) {
        const NvGIFPlayer::Pixel colour = inColours[inIndices[inX]];
        outRow[inX] = colour != 0 ? colour : outRow[inX];
    };
    std::uint32_t x = 0;
    for (; x + 8 <= inWidth; x += 8)
        if (NvLoadLittleEndian(inIndices + x) != NvEightOf(inTransparent))
            for (std::uint32_t i = 0; i < 8; ++i)
                draw(x + i);
    for (; x < inWidth; ++x)
        draw(x);
}

} // namespace

NvGIFPlayer::NvGIFPlayer(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight)
    : mWidth(inScreenWidth), mHeight(inScreenHeight), mCanvas(std::size_t{inScreenWidth} * inScreenHeight) {}

void NvGIFPlayer::ShowFrame(const NvGIFFrame& inFrame) {
    BeginFrame(inFrame.GetInfo());
    Draw(inFrame, PlaceOf(inFrame.GetInfo(), 0));
}

void NvGIFPlayer::ShowAlone(const NvGIFFrame& inFrame) {
    std::fill(mCanvas.begin(), mCanvas.end(), Pixel{0});
    mLastDisposal = NvGIFFrameInfo::km_DisposeUnspecified;
    mDisposedRect = NvRect{};
    mChangedRect = NvRect{0, 0, static_cast<std::int32_t>(mWidth), static_cast<std::int32_t>(mHeight)};
    Draw(inFrame, mCanvas.data());
}

void NvGIFPlayer::ShowFrame(const NvIndexedImage& inImage, const NvGIFFrameInfo& inInfo) {
    BeginFrame(inInfo);
    Colours colours = ColoursOf(inImage.GetColorTable());
    if (inInfo.mHasTransparency)
        colours[inInfo.mTransparentIndex] = 0;
    const NvConstPixelLock pixels(inImage);
    for (std::uint32_t y = 0; y < inImage.GetHeight(); ++y)
        if (inInfo.mHasTransparency)
            DrawRowBut(inInfo.mTransparentIndex, pixels.Row(y), inImage.GetWidth(), colours,
                       PlaceOf(inInfo, y));
        else
            DrawRow(pixels.Row(y), inImage.GetWidth(), colours, PlaceOf(inInfo, y));
}

void NvGIFPlayer::BeginFrame(const NvGIFFrameInfo& inInfo) {
    DisposeOfLastFrame();
    const NvRect rect{inInfo.mLeft, inInfo.mTop, inInfo.mLeft + inInfo.mWidth, inInfo.mTop + inInfo.mHeight};
    mChangedRect = mDisposedRect.IsEmpty() ? rect : NvUnionRect(mDisposedRect, rect);
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

void NvGIFPlayer::Draw(const NvGIFFrame& inFrame, Pixel* outPlace) const {
    const NvIndexedImage& image = inFrame.GetImage();
    const Colours colors = ColoursOf(image.GetColorTable());
    const NvConstPixelLock pixels(image);
    const NvConstPixelLock mask(inFrame.GetMask());
    const std::uint32_t width = image.GetWidth();
    for (std::uint32_t y = 0; y < image.GetHeight(); ++y) {
        const std::uint8_t* indices = pixels.Row(y);
        const std::uint8_t* bits = mask.Row(y);
        Pixel* row = outPlace + std::size_t{y} * mWidth;
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
