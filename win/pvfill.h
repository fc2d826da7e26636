#pragma once

class NvAnimation;
class PvProgress;

/** Draws undrawn pixels in the colour that the canvas shows there already, where that makes a frame's LZW
 * data shorter.
 *
 *  Nothing displayed changes. Leaving a pixel transparent and drawing it over with what is there look the
 * same, so for each such pixel the encoder may have whichever of the two indices continues a string it knows.
 * Only colours that the frame's code width holds are used. Each frame takes the best of a few choices,
 * measured; one that gains nothing stays as it was.
 *
 *  Tables must be final but for cutting (see NarrowTables), since the code width follows from them.
 *
 *  @throws NvErrorCode  3 when the progress was told to stop */
void FillUndrawnPixels(NvAnimation& ioAnimation, PvProgress& ioProgress);
