#pragma once

#include <cstdint>
#include <vector>

#include "nvcode2/nvgeometry.h"
#include "nvcode2/nvgifinfo.h"

class NvGIFFrame;
class NvIndexedImage;

/** Plays an animation frame by frame onto a canvas, as browsers show it.
 *
 *  The canvas starts transparent. Disposal 2 clears a frame's rectangle to transparent, 3 and 4 put back what
 * was there before the frame, everything else leaves the frame in place. Frames outside the screen are not
 * expected. */
class NvGIFPlayer {
public:
    /** A canvas pixel: NvPackColor with the top byte 255 when covered; 0 when transparent. */
    using Pixel = std::uint32_t;
    static constexpr Pixel km_Covered = 0xFF000000U;

    /** Columns of a row, the last one excluded. */
    struct Columns {
        std::uint32_t mFirst = 0;
        std::uint32_t mEnd = 0;

        bool IsEmpty() const { return mFirst >= mEnd; }
        void Add(const Columns& inColumns);
    };

    /** A transparent canvas of the logical screen's size. @throws std::bad_alloc */
    NvGIFPlayer(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight);

    /** Does to the canvas what the frame shown last asks for when its time is over. What is on the canvas
     * then lies under the next frame. ShowFrame does it too, unless it has been done. */
    void DisposeOfLastFrame();

    /** Disposes of the frame shown before and draws the next one. Every drawn index must be in the frame's
     * table. */
    void ShowFrame(const NvGIFFrame& inFrame);

    /** The same for a frame as it was read, whole: every pixel is drawn but those of the transparent index;
     * indices beyond the table are black. Spares whoever only looks at a frame making its mask.
     *  @param inImage  with the table that the frame is shown with */
    void ShowFrame(const NvIndexedImage& inImage, const NvGIFFrameInfo& inInfo);

    /** The first pixel of a row of what is displayed now; GetScreenWidth() pixels. */
    const Pixel* Row(std::uint32_t inY) const { return mCanvas.data() + std::size_t{inY} * mWidth; }

    std::uint32_t GetScreenWidth() const { return mWidth; }
    std::uint32_t GetScreenHeight() const { return mHeight; }

    /** The columns of a row outside of which the last ShowFrame changed nothing, disposal included. */
    const Columns& GetChangedColumns(std::uint32_t inY) const { return mChanged[inY]; }

private:
    void BeginFrame(const NvGIFFrameInfo& inInfo);
    void MarkChanged(const NvRect& inRect);
    Pixel* PlaceOf(const NvGIFFrameInfo& inInfo, std::uint32_t inRow) {
        return mCanvas.data() + (std::size_t{inInfo.mTop} + inRow) * mWidth + inInfo.mLeft;
    }

    std::uint32_t mWidth;
    std::uint32_t mHeight;
    std::vector<Pixel> mCanvas;  // row-major
    std::vector<Pixel> mCovered; // what the last frame covered, row-major, when it is to be restored
    std::uint32_t mLastDisposal = 0;
    NvRect mLastRect{};
    NvRect mDisposedRect{};        // changed by disposal since the last ShowFrame
    std::vector<Columns> mChanged; // by row
};
