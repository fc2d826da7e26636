#pragma once

#include <cstdint>

#include "win/optimizer/codes/pvfillcanvas.h"
#include "win/optimizer/codes/pvfillchooser.h"
#include "win/optimizer/codes/pvframecutter.h"
#include "win/optimizer/codes/pvpixelchoices.h"

class NvGIFFrame;

/** Draws undrawn pixels of an animation's frames, one after the other, in the colour that the canvas shows
 *  there already, where that makes a frame's LZW data shorter.
 *
 *  Nothing displayed changes. Leaving a pixel transparent and drawing it over with what is there look the
 *  same, so for each such pixel the encoder may take whichever of the two indices continues a string it
 *  knows. Only colours that the frame's code width holds are used. Each frame takes the best of a few
 *  choices, measured; one that gains nothing stays as it was. */
class PvUndrawnFiller {
public:
    /** @param inWidth, inHeight  of the screen
     *  @param ioStrings          scratch space while a frame is filled; borrowed for the filler's life */
    PvUndrawnFiller(std::uint32_t inWidth, std::uint32_t inHeight, NvLZWStringTable& ioStrings)
        : mCanvas(inWidth, inHeight), mChooser(ioStrings) {}

    /** Takes the next frame. Its table must be final except for its length, since the code width follows from
     * it.
     *  @param inKnownCodes  LZW codes that it takes; 0: unknown */
    void FillUndrawnPixels(NvGIFFrame& ioFrame, std::uint64_t inKnownCodes = 0);

    /** Takes the next frame as FillUndrawnPixels does, but has a cutter settle its pixels.
     *  @return  see PvFrameCutter::Cut */
    const NvLZWStrings* Cut(NvGIFFrame& ioFrame, std::uint64_t inKnownCodes, PvFrameCutter& ioCutter);

private:
    PvFillCanvas mCanvas;
    PvFillChooser mChooser;
    PvPixelChoices mChoices;
};
