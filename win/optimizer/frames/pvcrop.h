#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "win/optimizer/frames/pvcoverage.h"

class NvGIFFrame;

/** Cuts transparent borders off an animation's frames, one after the other.
 *
 *  A frame that clears its rectangle is only cut down to what earlier frames left covered there, or else the
 *  cleared area would shrink and leave ghosts. A frame that draws nothing becomes one transparent pixel. */
class PvCropper {
public:
    /** @param inWidth      of the logical screen, pixels
     *  @param inHeight     of the logical screen, pixels
     *  @param inAnyClears  whether a frame may clear its rectangle */
    PvCropper(std::uint32_t inWidth, std::uint32_t inHeight, bool inAnyClears);

    /** Takes the next frame.
     *  @return  a copy without borders, its transparency fields still to be brought up to date; null when the
     *  frame has no borders */
    std::unique_ptr<NvGIFFrame> Crop(const NvGIFFrame& inFrame);

private:
    std::optional<PvCoverage> mCoverage; // where frames clear
};
