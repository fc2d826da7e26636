#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "nvcode2/base/nvgeometry.h"
#include "nvcode2/gif/nvgifcanvas.h"
#include "nvcode2/gif/nvgifinfo.h"

class NvGIFFrame;

/** Plays an animation frame by frame onto a canvas, as browsers show it.
 *
 *  The canvas starts transparent. Disposal 2 clears a frame's rectangle to transparent, 3 and 4 put back what
 *  was there before the frame, everything else leaves the frame in place. Frames outside the screen are not
 *  expected. */
class NvGIFPlayer {
public:
    using Pixel = NvGIFCanvas::Pixel;
    static constexpr Pixel km_Covered = NvGIFCanvas::km_Covered;
    using Columns = NvGIFCanvas::Columns;

    /** A transparent canvas of the logical screen's size. */
    NvGIFPlayer(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight);

    /** Disposes of the frame shown last, which leaves on the canvas what will lie under the next one. Showing
     * the next frame does it too, unless it has been done. */
    void DisposeOfLastFrame();

    /** Disposes of the frame shown before and draws the next one. Every drawn index must be in the frame's
     *  table. @throws std::bad_alloc */
    void ShowFrame(const NvGIFFrame& inFrame);

    /** The same for a frame that is read row by row: BeginFrame, then DrawRow for each row that arrives.
     * Every pixel is drawn except those of the transparent index; indices beyond the table are black.
     *  @param inTable  the table that the frame is shown with
     *  @throws std::bad_alloc */
    void BeginFrame(const NvGIFFrameInfo& inInfo, const NvColorTable& inTable);

    /** @param inRow    of the frame
     *  @param inCount  pixels from the row's first on */
    void DrawRow(std::uint32_t inRow, const std::uint8_t* inIndices, std::uint32_t inCount);

    /** Draws the whole frame over the rows of it that have been drawn. */
    void DrawFrame(const NvGIFFrame& inFrame);

    /** What is displayed now. */
    const NvGIFCanvas& GetCanvas() const { return mCanvas; }

    /** Copies part of one of its rows. */
    void Read(std::uint32_t inY, const Columns& inColumns, Pixel* outPixels) const {
        mCanvas.Read(inY, inColumns, mCanvas.GetColours(), std::identity(), outPixels);
    }

    /** A whole row. */
    std::vector<Pixel> ReadRow(std::uint32_t inY) const;

    std::uint32_t GetScreenWidth() const { return mCanvas.GetWidth(); }
    std::uint32_t GetScreenHeight() const { return mCanvas.GetHeight(); }

    /** The columns of a row outside of which the last frame changed nothing, disposal included. */
    const Columns& GetChangedColumns(std::uint32_t inY) const { return mChanged[inY]; }

private:
    void Draw(std::uint32_t inX, std::uint32_t inRow, const std::uint8_t* inIndices, std::uint32_t inCount);

    NvGIFCanvas mCanvas;
    std::uint32_t mLastDisposal = 0;
    NvRect mLastRect{};            // of the frame shown now
    NvRect mDisposedRect{};        // changed by disposal since the last frame
    std::vector<Columns> mChanged; // by row
};
