#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
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

    std::uint32_t GetScreenWidth() const { return mCanvas.GetWidth(); }
    std::uint32_t GetScreenHeight() const { return mCanvas.GetHeight(); }

    /** The columns of a row outside of which the last frame changed nothing, disposal included. */
    const Columns& GetChangedColumns(std::uint32_t inY) const { return mChanged[inY]; }

    /** A range of rows or columns, the last one excluded. */
    using Range = Columns;

    /** The rows outside of which the last frame changed nothing: those that disposal touched and those that
     *  the frame lies in, which may overlap. */
    std::array<Range, 2> GetChangedRows() const { return {mDisposedRows, RowsOf(mLastRect)}; }

    /** Calls inVisit(y) once for each row in any of some ranges, in rising order. */
    template <std::size_t Count, typename Visitor>
    static void ForEachRow(std::array<Range, Count> inRanges, Visitor inVisit);

private:
    static Range RowsOf(const NvRect& inRect) {
        return {static_cast<std::uint32_t>(inRect.top), static_cast<std::uint32_t>(inRect.bottom)};
    }

    void Draw(std::uint32_t inX, std::uint32_t inRow, const std::uint8_t* inIndices, std::uint32_t inCount);

    NvGIFCanvas mCanvas;
    std::uint32_t mLastDisposal = 0;
    NvRect mLastRect{};            // of the frame shown now
    NvRect mDisposedRect{};        // changed by disposal since the last frame
    Range mDisposedRows;           // changed by disposal before the frame in hand
    std::vector<Columns> mChanged; // by row; empty outside of GetChangedRows
};

template <std::size_t Count, typename Visitor>
void NvGIFPlayer::ForEachRow(std::array<Range, Count> inRanges, Visitor inVisit) {
    std::sort(inRanges.begin(), inRanges.end(),
              [](const Range& inLeft, const Range& inRight) { return inLeft.mFirst < inRight.mFirst; });
    std::uint32_t next = 0;
    for (const Range& range : inRanges) {
        for (std::uint32_t y = std::max(next, range.mFirst); y < range.mEnd; ++y)
            inVisit(y);
        next = std::max(next, range.mEnd);
    }
}
