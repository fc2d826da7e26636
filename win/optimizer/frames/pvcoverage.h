#pragma once

#include <cstdint>
#include <vector>

#include "nvcode2/base/nvgeometry.h"

class NvGIFFrame;

/** Whether a frame's rectangle is cleared when its time is over. */
bool PvClears(const NvGIFFrame& inFrame);

/** Which pixels of the screen frames have left covered. A frame that is to be undone is not to be drawn. */
class PvCoverage {
public:
    /** An uncovered screen. */
    PvCoverage(std::uint32_t inWidth, std::uint32_t inHeight);

    void Draw(const NvGIFFrame& inFrame);

    /** Does what a frame asks for when its time is over. */
    void Dispose(const NvGIFFrame& inFrame);

    /** The smallest rectangle, in the frame's own pixels, that holds every covered pixel under it; may be
     *  empty. */
    NvRect BoundsUnder(const NvGIFFrame& inFrame) const;

    /** Whether a frame draws over every covered pixel of a rectangle of the screen. */
    bool IsDrawnOver(const NvRect& inRect, const NvGIFFrame& inNext) const;

private:
    std::uint8_t* RowOf(const NvGIFFrame& inFrame, std::uint32_t inY);
    const std::uint8_t* RowOf(const NvGIFFrame& inFrame, std::uint32_t inY) const;

    std::uint32_t mWidth;
    std::vector<std::uint8_t> mCovered; // 1 or 0 per screen pixel, row-major
};
