#pragma once

#include <cstdint>
#include <vector>

#include "win/optimizer/codes/pvfillcanvas.h"

class NvGIFFrame;

/** A frame's pixels in the order in which the file stores them, each with the index it may have instead. */
struct PvPixelChoices {
    std::vector<std::uint8_t> mPresent;
    std::vector<std::uint8_t> mOther; ///< as many; equal to mPresent where there is no choice
    std::uint32_t mPixelBits = 2;     ///< of the frame's codes
};

/** Takes what a frame draws. Its table must be final except for its length, since the code width follows from
 *  it. */
void PvCollectPresent(const NvGIFFrame& inFrame, PvPixelChoices& outChoices);

/** Which pixels have a choice. */
enum class PvChoice {
    km_Undrawn, ///< undrawn ones, over a colour that the frame may draw
    km_Shown,   ///< those that draw what the canvas shows already, too
};

/** Takes what it may draw instead, in colours that codes of as many bits hold; PvCollectPresent comes first.
 *  @return  whether any pixel has a choice */
bool PvCollectOthers(const NvGIFFrame& inFrame, const PvFillCanvas& inCanvas, PvChoice inChoice,
                     PvPixelChoices& ioChoices);

/** Stores settled pixels in a frame. Those that no longer have the transparent index are drawn from now on.
 */
void PvStorePixels(NvGIFFrame& ioFrame, const std::vector<std::uint8_t>& inPixels);
