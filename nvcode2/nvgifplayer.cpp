#include "nvcode2/nvgifplayer.h"

#include <algorithm>
#include <array>

#include "nvcode2/nvgifframe.h"

NvGIFPlayer::NvGIFPlayer(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight)
    : mWidth(inScreenWidth), mHeight(inScreenHeight), mCanvas(std::size_t{inScreenWidth} * inScreenHeight) {}

void NvGIFPlayer::ShowFrame(const NvGIFFrame& inFrame) {
    DisposeOfLastFrame();
    const NvRect rect = inFrame.GetScreenRect();
    mChangedRect = mDisposedRect.IsEmpty() ? rect : NvUnionRect(mDisposedRect, rect);
    mDisposedRect = NvRect{};
    mLastRect = rect;
    mLastDisposal = inFrame.GetInfo().mDisposal;
    if (inFrame.GetInfo().RestoresPrevious()) {
        mCovered.clear();
        for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
            const Pixel* row = Row(static_cast<std::uint32_t>(y));
            mCovered.insert(mCovered.end(), row + rect.left, row + rect.right);
        }
    }
    Draw(inFrame);
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

void NvGIFPlayer::Draw(const NvGIFFrame& inFrame) {
    const NvIndexedImage& image = inFrame.GetImage();
    const NvColorTable& table = image.GetColorTable();
    std::array<Pixel, 256> colors{};
    for (std::uint32_t i = 0; i < std::min<std::uint32_t>(table.GetSize(), 256); ++i)
        colors[i] = NvPackColor(table.GetColor(i)) | km_Covered;

    const NvConstPixelLock pixels(image);
    const NvConstPixelLock mask(inFrame.GetMask());
    const std::uint32_t width = image.GetWidth();
    for (std::uint32_t y = 0; y < image.GetHeight(); ++y) {
        const std::uint8_t* indices = pixels.Row(y);
        const std::uint8_t* bits = mask.Row(y);
        Pixel* row =
            mCanvas.data() + (std::size_t{inFrame.GetInfo().mTop} + y) * mWidth + inFrame.GetInfo().mLeft;
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
