#pragma once

#include <cstdint>
#include <vector>

#include "nvcode2/base/nvgeometry.h"
#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/image/nvcolortable.h"

/** What is displayed while an animation plays, in indices of the next frame's table: where all frames share
 *  one table, no colour has to be looked up.
 *
 *  Where tables differ, a colour that a frame's table lacks counts as none from then on. A frame's
 * transparent pixels must be its undrawn ones, and none may restore what it covered: flattening has ended
 * that. */
class PvFillCanvas {
public:
    /** An index, or km_None where nothing is displayed or nothing that is in the table. */
    using Pixel = std::uint16_t;
    static constexpr Pixel km_None = 256;

    /** @param inWidth, inHeight  of the screen */
    PvFillCanvas(std::uint32_t inWidth, std::uint32_t inHeight)
        : mWidth(inWidth), mPixels(std::size_t{inWidth} * inHeight, km_None) {}

    /** Makes the canvas what lies under the next frame. */
    void Prepare(const NvGIFFrame& inFrame);

    /** Draws that frame. */
    void Draw(const NvGIFFrame& inFrame);

    /** The first pixel of a row. */
    const Pixel* Row(std::uint32_t inY) const { return mPixels.data() + std::size_t{inY} * mWidth; }

private:
    void DisposeOfLastFrame();
    void UseTable(const NvColorTable& inTable);
    Pixel* PlaceOf(std::int32_t inX, std::int32_t inY) {
        return mPixels.data() + static_cast<std::size_t>(inY) * mWidth + inX;
    }

    std::uint32_t mWidth;
    std::vector<Pixel> mPixels; // row-major
    NvColorTable mTable;
    NvRect mLastRect{};
    std::uint32_t mLastDisposal = 0;
};
