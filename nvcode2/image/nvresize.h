#pragma once

#include <cstdint>

#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvpixelblock.h"

class NvProgressIndicator;

/** Resamples pixels to another size, smaller or larger. For thumbnails and what the window shows of a file,
 *  which NewResizedImage enlarges; the optimizer never changes a picture's size.
 *
 *  An output pixel is the average of the area of the input it covers, each input pixel counting by the
 *  part of it that is covered, divided by the covered area and rounded to nearest, halves up. The weights
 *  are whole numbers: along an axis an input pixel is out-size units long and an output pixel in-size
 *  units (both divided by what they have in common), so every pixel boundary falls on a unit. Positions in
 *  1/1024 of a pixel would drift by a tenth of a pixel over 300 columns and could not express large
 *  enlargements; whole weights round once, keep a flat image flat and reproduce an image at its own size.
 *
 *  When either size has a zero, nothing is written. Preconditions: pointers non-null, channel counts not
 *  zero, row bytes not zero unless there are no pixels. Rows are resampled in strips; nothing is allocated.
 *  inIndicator, which may be null, receives every row of a strip and may stop the work with code 3, which
 *  leaves the output half written. */

/** Resamples the first calcChannels channels, leaving an output pixel's others alone. Precondition: both
 *  pixels have that many. */
void NvResizeChannels(const NvConstPixelBlock& inPixels, const NvPixelBlock& outPixels,
                      std::uint32_t calcChannels, NvProgressIndicator* inIndicator = nullptr);

/** The same for the first three channels. */
void NvResizeRGB(const NvConstPixelBlock& inPixels, const NvPixelBlock& outPixels,
                 NvProgressIndicator* inIndicator = nullptr);

/** Resamples indices: the colours they stand for are averaged and mapped back to the nearest entry.
 *  @param inTablePtr  what the indices mean; those beyond it count as black
 *  @param inInvMap    of the same table (see MakeInverseColorMap) */
void NvResizeIndexed(const NvConstPixelBlock& inPixels, const NvPixelBlock& outPixels,
                     const NvColorTable* inTablePtr, const std::uint8_t* inInvMap,
                     NvProgressIndicator* inIndicator = nullptr);
