#pragma once

#include <cstdint>
#include <vector>

#include "nvcode2/base/nvgeometry.h"

class NvGIFFrame;

/** Whether a frame's rectangle is cleared before the next frame. */
bool PvClears(const NvGIFFrame& inFrame);

/** Which pixels of the screen are covered. Frames that restore what they covered must not be drawn on it. */
class PvCoverage {
public:
    /** An uncovered screen. */
    PvCoverage(std::uint32_t inWidth, std::uint32_t inHeight);

    void Draw(const NvGIFFrame& inFrame);

    /** Disposes of a frame that was drawn. */
    void Dispose(const NvGIFFrame& inFrame);

    /** The smallest rectangle, in the frame's own pixels, that holds every covered pixel under it; empty when
     *  there is none. */
    NvRect BoundsUnder(const NvGIFFrame& inFrame) const;

    /** Whether a frame draws over every covered pixel of a rectangle of the screen. */
    bool IsDrawnOver(const NvRect& inRect, const NvGIFFrame& inNext) const;

private:
    bool IsAnyCovered(std::int32_t inY, std::int32_t inFirst, std::int32_t inEnd) const;
    std::uint8_t* RowOf(const NvGIFFrame& inFrame, std::uint32_t inY);
    const std::uint8_t* RowOf(const NvGIFFrame& inFrame, std::uint32_t inY) const;

    std::uint32_t mWidth;
    std::vector<std::uint8_t> mCovered; // 1 or 0 per screen pixel, row-major
};
