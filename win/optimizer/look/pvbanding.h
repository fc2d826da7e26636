#pragma once

class NvGIFFrame;
class NvIndexedImage;

/** How much of a frame's soft shading turns into bands with other pixels for it.
 *
 *  Shading is a run of slowly changing colour. It turns into bands where the other pixels have flat runs that
 *  meet in a larger step than the frame's own. Structural similarity hardly sees that, since within a window
 *  both are nearly flat.
 *  @param inOther  of the frame's size
 *  @return         by how many levels steps exceed the frame's own, averaged over all pixels: those of a band
 *                  count with the larger step at its ends, others with 0. Rows or columns, whichever is
 *                  worse */
double PvBanding(const NvGIFFrame& inFrame, const NvIndexedImage& inOther);
